// The writing side; the reading side, which trusts nothing, is RecordingFileReader.cpp.
#include "platform/graphics/RecordingFile.h"

#include "platform/foundation/Value.h"
#include "platform/graphics/PngWriter.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <map>
#include <vector>

namespace quillomat {

namespace {

Value valueOf(double number) {
    if (std::isfinite(number)) {
        return Value::real(number);
    }
    return Value::string(std::isnan(number) ? "nan" : number > 0 ? "inf" : "-inf");
}

Value valueOf(const Homography& map) {
    Value::Array numbers;
    for (const double number : map.m) {
        numbers.push_back(valueOf(number));
    }
    return Value::array(std::move(numbers));
}

Value valueOf(const Rect& rect) {
    return Value::array(
        {valueOf(rect.origin.x), valueOf(rect.origin.y), valueOf(rect.size.width), valueOf(rect.size.height)});
}

Value valueOf(const Color& color) {
    return Value::array({valueOf(color.red), valueOf(color.green), valueOf(color.blue), valueOf(color.alpha)});
}

Value valueOf(PixelSize size) {
    return Value::array({Value::integer(size.width), Value::integer(size.height)});
}

Value::Object shapeMembers(const Homography& map, const RoundedRect& shape) {
    Value::Object members{{"map", valueOf(map)}, {"rect", valueOf(shape.rect)}};
    if (shape.radius != 0) {
        members.emplace_back("radius", valueOf(shape.radius));
    }
    return members;
}

class Writer {
public:
    [[nodiscard]] Result<Bytes> write(const Recording& recording) {
        Value::Object header = membersOf(recording);
        if (!failure_.empty()) {
            return Failure{failure_};
        }
        header.emplace_back("pictures", Value::array(std::move(pictures_)));
        const std::string text = writeJson(Value::object(std::move(header)), JsonStyle::compact);
        if (text.size() > std::numeric_limits<std::uint32_t>::max()) {
            return Failure{"more draws than a file holds"};
        }
        Bytes out;
        append(out, "QMRECORD");
        appendNumber(out, 1);
        appendNumber(out, static_cast<std::uint32_t>(text.size()));
        append(out, text);
        out.insert(out.end(), documents_.begin(), documents_.end());
        return out;
    }

private:
    static void append(Bytes& out, std::string_view text) {
        const auto bytes = std::as_bytes(std::span(text));
        out.insert(out.end(), bytes.begin(), bytes.end());
    }

    static void appendNumber(Bytes& out, std::uint32_t number) {
        for (const int shift : {0, 8, 16, 24}) {
            out.push_back(static_cast<std::byte>(number >> shift));
        }
    }

    Value::Object membersOf(const Recording& recording) {
        Value::Array draws;
        for (const LayerDraw& draw : recording.draws()) {
            draws.push_back(valueOf(draw));
        }
        return {{"canvas", quillomat::valueOf(recording.size())}, {"draws", Value::array(std::move(draws))}};
    }

    Value valueOf(const LayerDraw& draw) {
        const LayerDraw plain;
        Value::Object members = shapeMembers(draw.map, draw.shape);
        if (draw.fill) {
            members.emplace_back("fill", quillomat::valueOf(*draw.fill));
        }
        if (draw.picture) {
            members.emplace_back("picture", Value::integer(numberOf(*draw.picture.source())));
            members.emplace_back("pictureRect", quillomat::valueOf(draw.pictureRect));
        }
        if (draw.filter == PictureFilter::smooth) {
            members.emplace_back("filter", Value::string("smooth"));
        }
        if (draw.borderWidth != plain.borderWidth) {
            members.emplace_back("borderWidth", quillomat::valueOf(draw.borderWidth));
            members.emplace_back("borderColor", quillomat::valueOf(draw.borderColor));
        }
        if (draw.opacity != plain.opacity) {
            members.emplace_back("opacity", quillomat::valueOf(draw.opacity));
        }
        if (!draw.clips.empty()) {
            Value::Array clips;
            for (const ClipShape& clip : draw.clips) {
                clips.push_back(Value::object(shapeMembers(clip.map, clip.shape)));
            }
            members.emplace_back("clips", Value::array(std::move(clips)));
        }
        return Value::object(std::move(members));
    }

    /// The picture's place in the list; it is stored the first time it is asked for.
    std::int64_t numberOf(const ImageSource& source) {
        if (const auto known = numbers_.find(&source); known != numbers_.end()) {
            return known->second;
        }
        Value picture = stored(source); // what it refers to comes before it
        const auto number = static_cast<std::int64_t>(pictures_.size());
        pictures_.push_back(std::move(picture));
        numbers_.emplace(&source, number);
        return number;
    }

    Value stored(const ImageSource& source) {
        if (const Recording* recording = source.recording()) {
            return Value::object(membersOf(*recording));
        }
        if (const auto whole = source.whole()) {
            const PixelRect part = source.part();
            return Value::object({{"whole", Value::integer(numberOf(*whole))},
                                  {"part", Value::array({Value::integer(part.x), Value::integer(part.y),
                                                         Value::integer(part.width), Value::integer(part.height)})}});
        }
        if (const SharedDocument document = source.document()) {
            return storedDocument(*document);
        }
        const SharedBitmap bitmap = source.bitmap();
        const Result<Bytes> png = bitmap ? encodePng(*bitmap) : Result<Bytes>(Failure{source.failure()});
        if (!png) {
            failure_ = png.reason().empty() ? "a picture without pixels" : png.reason();
            return {};
        }
        return storedDocument(*png);
    }

    Value storedDocument(const Bytes& document) {
        documents_.insert(documents_.end(), document.begin(), document.end());
        return Value::object({{"document", Value::integer(static_cast<std::int64_t>(document.size()))}});
    }

    Value::Array pictures_;
    std::map<const ImageSource*, std::int64_t> numbers_;
    Bytes documents_;
    std::string failure_;
};

} // namespace

Result<Bytes> writeRecordingFile(const Recording& recording) {
    return Writer().write(recording);
}

} // namespace quillomat
