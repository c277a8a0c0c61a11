// Nothing in the file is believed before it is checked: lengths against what is there, references against what came
// before, and the work that drawing it would be against the limits. A short file can ask for much: pictures of
// recordings of recordings double with every level.
#include "platform/foundation/Value.h"
#include "platform/graphics/Cropping.h"
#include "platform/graphics/RecordingFile.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>
#include <vector>

namespace quillomat {

namespace {

constexpr std::size_t preambleBytes = 16;
constexpr std::string_view signature = "QMRECORD";
constexpr std::uint32_t version = 1;
constexpr std::size_t mostHeaderBytes = std::size_t{16} << 20;
constexpr std::size_t mostPictures = 4096;
constexpr std::size_t mostClips = 64;
constexpr std::uint64_t mostDraws = 100'000; // all recordings' inside each other counted as often as they are drawn
constexpr int deepestNesting = 16;
constexpr std::uint64_t pixelsTogether = 4; // times the limit of one picture

/// What went wrong stops the reading, wherever it is.
struct Complaint {
    std::string reason;
};

[[noreturn]] void complain(const std::string& reason) {
    throw Complaint{reason};
}

double numberIn(const Value& value) {
    if (value.kind() == Value::Kind::integer || value.kind() == Value::Kind::real) {
        return value.realValue();
    }
    const std::string& text = value.stringValue();
    if (text == "nan") {
        return std::numeric_limits<double>::quiet_NaN();
    }
    if (text == "inf" || text == "-inf") {
        return text == "inf" ? std::numeric_limits<double>::infinity() : -std::numeric_limits<double>::infinity();
    }
    complain("a number is missing");
}

template <std::size_t Count> std::array<double, Count> numbersIn(const Value& value, const char* what) {
    if (!value.isArray() || value.count() != Count) {
        complain(std::string(what) + " is not " + std::to_string(Count) + " numbers");
    }
    std::array<double, Count> numbers;
    for (std::size_t i = 0; i < Count; ++i) {
        numbers[i] = numberIn(value.at(i));
    }
    return numbers;
}

int pixelsIn(const Value& value) {
    const std::int64_t number = value.integerValue();
    if (value.kind() != Value::Kind::integer || number < 0 || number > std::numeric_limits<int>::max()) {
        complain("a size or place in pixels is no whole number");
    }
    return static_cast<int>(number);
}

Homography mapIn(const Value& value) {
    return {numbersIn<9>(value, "a map")};
}

Rect rectIn(const Value& value) {
    const auto n = numbersIn<4>(value, "a rectangle");
    return makeRect(n[0], n[1], n[2], n[3]);
}

Color colorIn(const Value& value) {
    const auto n = numbersIn<4>(value, "a colour");
    return {n[0], n[1], n[2], n[3]};
}

double numberOr(const Value& value, double fallback) {
    return value.isPresent() ? numberIn(value) : fallback;
}

RoundedRect shapeIn(const Value& value) {
    return {rectIn(value["rect"]), numberOr(value["radius"], 0)};
}

class Reader {
public:
    Reader(std::span<const std::byte> documents, const ImageLimits& limits) : documents_(documents), limits_(limits) {}

    Recording read(const Value& header) {
        const Value pictures = header["pictures"];
        if (!pictures.isArray() || pictures.count() > mostPictures) {
            complain("the list of pictures is missing or too long");
        }
        for (const Value& picture : pictures.elements()) {
            pictures_.push_back(pictureIn(picture));
        }
        if (!documents_.empty()) {
            complain("there is more behind the last picture");
        }
        Cost cost;
        return recordingIn(header, cost);
    }

private:
    /// What drawing something once comes to.
    struct Cost {
        std::uint64_t draws = 0;
        std::uint64_t pixels = 0;
        int depth = 0;
    };
    struct Known {
        Image image;
        Cost cost;
    };

    Known pictureIn(const Value& value) {
        Known known;
        if (value.contains("draws")) {
            Recording recording = recordingIn(value, known.cost);
            known.image = imageOfRecording(std::move(recording));
            ++known.cost.depth;
        } else if (value.contains("whole")) {
            const Known& whole = knownIn(value["whole"]);
            const Value part = value["part"];
            const PixelRect rect{pixelsIn(part.at(0)), pixelsIn(part.at(1)), pixelsIn(part.at(2)),
                                 pixelsIn(part.at(3))};
            if (!liesInside(rect, whole.image.pixelSize())) {
                complain("a part does not lie inside its picture");
            }
            known.image = croppedImage(whole.image, rect);
            known.cost = whole.cost;
        } else {
            known.image = documentOf(value["document"]);
            known.cost.pixels = known.image.pixelSize().area();
        }
        if (!known.image) {
            complain("a picture is empty");
        }
        check(known.cost);
        return known;
    }

    Image documentOf(const Value& length) {
        if (length.kind() != Value::Kind::integer || length.integerValue() < 0 ||
            static_cast<std::uint64_t>(length.integerValue()) > documents_.size()) {
            complain("a picture is longer than the file");
        }
        const auto count = static_cast<std::size_t>(length.integerValue());
        const auto bytes = documents_.first(count);
        documents_ = documents_.subspan(count);
        Result<Image> image = imageFromBytes(Bytes(bytes.begin(), bytes.end()), limits_);
        if (!image) {
            complain("a picture: " + image.reason());
        }
        return std::move(image).value();
    }

    const Known& knownIn(const Value& number) {
        const std::int64_t index = number.integerValue();
        if (number.kind() != Value::Kind::integer || index < 0 ||
            static_cast<std::uint64_t>(index) >= pictures_.size()) {
            complain("a picture is drawn that does not come before");
        }
        return pictures_[static_cast<std::size_t>(index)];
    }

    PixelSize canvasIn(const Value& value) const {
        const PixelSize size{pixelsIn(value.at(0)), pixelsIn(value.at(1))};
        if (value.count() != 2 || size.isEmpty() || size.width > limits_.side || size.height > limits_.side ||
            size.area() > limits_.pixels) {
            complain("a canvas is empty or over the limit");
        }
        return size;
    }

    Recording recordingIn(const Value& value, Cost& cost) {
        Recording recording(canvasIn(value["canvas"]));
        cost.pixels = recording.size().area();
        if (!value["draws"].isArray()) {
            complain("the list of draws is missing");
        }
        for (const Value& draw : value["draws"].elements()) {
            recording.add(drawIn(draw, cost));
            check(cost);
        }
        return recording;
    }

    LayerDraw drawIn(const Value& value, Cost& cost) {
        LayerDraw draw;
        draw.map = mapIn(value["map"]);
        draw.shape = shapeIn(value);
        if (value.contains("fill")) {
            draw.fill = colorIn(value["fill"]);
        }
        if (value.contains("picture")) {
            const Known& picture = knownIn(value["picture"]);
            draw.picture = picture.image;
            draw.pictureRect = rectIn(value["pictureRect"]);
            cost.draws += picture.cost.draws;
            cost.pixels += picture.cost.pixels;
            cost.depth = std::max(cost.depth, picture.cost.depth);
        }
        draw.filter = value["filter"].stringValue() == "smooth" ? PictureFilter::smooth : PictureFilter::area;
        draw.borderWidth = numberOr(value["borderWidth"], 0);
        if (value.contains("borderColor")) {
            draw.borderColor = colorIn(value["borderColor"]);
        }
        draw.opacity = numberOr(value["opacity"], 1);
        const Value clips = value["clips"];
        if (clips.count() > mostClips) {
            complain("a draw has too many clips");
        }
        for (const Value& clip : clips.elements()) {
            draw.clips.push_back({mapIn(clip["map"]), shapeIn(clip)});
        }
        ++cost.draws;
        return draw;
    }

    void check(const Cost& cost) const {
        if (cost.draws > mostDraws || cost.depth > deepestNesting) {
            complain("more would be drawn than is allowed");
        }
        if (cost.pixels > limits_.pixels * pixelsTogether) {
            complain("more pixels would be needed than are allowed");
        }
    }

    std::span<const std::byte> documents_;
    ImageLimits limits_;
    std::vector<Known> pictures_;
};

std::uint32_t numberAt(std::span<const std::byte> bytes, std::size_t at) {
    std::uint32_t number = 0;
    for (std::size_t i = 4; i-- > 0;) {
        number = number << 8 | std::to_integer<std::uint32_t>(bytes[at + i]);
    }
    return number;
}

} // namespace

bool isRecordingFile(std::span<const std::byte> bytes) {
    return bytes.size() >= signature.size() &&
           std::equal(signature.begin(), signature.end(), bytes.begin(),
                      [](char a, std::byte b) { return std::byte(static_cast<unsigned char>(a)) == b; });
}

Result<Recording> readRecordingFile(std::span<const std::byte> bytes, const ImageLimits& limits) {
    if (!isRecordingFile(bytes)) {
        return Failure{bytes.empty() ? "empty file" : "not a recording"};
    }
    if (bytes.size() < preambleBytes) {
        return Failure{"cut short"};
    }
    if (const std::uint32_t found = numberAt(bytes, 8); found != version) {
        return Failure{"a recording of version " + std::to_string(found) + "; this program reads version " +
                       std::to_string(version)};
    }
    const std::size_t headerBytes = numberAt(bytes, 12);
    const auto rest = bytes.subspan(preambleBytes);
    if (headerBytes > mostHeaderBytes || headerBytes > rest.size()) {
        return Failure{headerBytes > rest.size() ? "cut short" : "the header is over the limit"};
    }
    const auto header = parseJson(rest.first(headerBytes));
    if (!header) {
        return Failure{"the header: " + header.reason()};
    }
    try {
        return Reader(rest.subspan(headerBytes), limits).read(*header);
    } catch (const Complaint& complaint) {
        return Failure{complaint.reason};
    } catch (const std::bad_alloc&) {
        return Failure{"not enough memory for the recording"};
    }
}

} // namespace quillomat
