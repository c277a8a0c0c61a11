#include "platform/graphics/RecordingFile.h"

#include <cmath>
#include <cstdio>
#include <map>

namespace quillomat {

namespace {

std::string numberText(double number) {
    char text[64];
    // Zero has one spelling.
    std::snprintf(text, sizeof text, "%.3f", std::abs(number) < 0.0005 ? 0.0 : number);
    std::string shortened(text);
    if (shortened.find('.') != std::string::npos) {
        shortened.erase(shortened.find_last_not_of('0') + 1);
        shortened.erase(shortened.find_last_not_of('.') + 1);
    }
    return shortened;
}

std::string pointText(const Homography& map, Point point) {
    const auto projected = map.project(point);
    return projected ? "(" + numberText(projected->x) + ", " + numberText(projected->y) + ")" : "(nowhere)";
}

/// A shape by where its corners come to lie on the canvas: what the map's nine numbers say, readably and stably.
std::string shapeText(const Homography& map, const RoundedRect& shape) {
    const Rect& rect = shape.rect;
    std::string text = pointText(map, {rect.minX(), rect.minY()}) + " " + pointText(map, {rect.maxX(), rect.minY()}) +
                       " " + pointText(map, {rect.minX(), rect.maxY()}) + " " +
                       pointText(map, {rect.maxX(), rect.maxY()});
    if (shape.radius != 0) {
        text += " radius " + numberText(shape.radius) + " of " + numberText(rect.size.width) + " x " +
                numberText(rect.size.height);
    }
    return text;
}

std::string colorText(const Color& color) {
    return numberText(color.red) + " " + numberText(color.green) + " " + numberText(color.blue) + " " +
           numberText(color.alpha);
}

std::string sizeText(PixelSize size) {
    return std::to_string(size.width) + " x " + std::to_string(size.height);
}

class Describer {
public:
    void describe(const Recording& recording, const std::string& indent) {
        text += "canvas " + sizeText(recording.size()) + "\n";
        for (const LayerDraw& draw : recording.draws()) {
            describe(draw, indent);
        }
    }

    std::string text;

private:
    void describe(const LayerDraw& draw, const std::string& indent) {
        text += indent + "draw " + shapeText(draw.map, draw.shape) + "\n";
        if (draw.fill) {
            text += indent + "  fill " + colorText(*draw.fill) + "\n";
        }
        if (draw.borderWidth > 0) {
            text += indent + "  border " + numberText(draw.borderWidth) + " of " + colorText(draw.borderColor) + "\n";
        }
        if (draw.opacity != 1) {
            text += indent + "  opacity " + numberText(draw.opacity) + "\n";
        }
        for (const ClipShape& clip : draw.clips) {
            text += indent + "  clip " + shapeText(clip.map, clip.shape) + "\n";
        }
        if (draw.picture) {
            text += indent + "  picture over " + shapeText(draw.map, {draw.pictureRect, 0}) +
                    (draw.filter == PictureFilter::smooth ? " smooth" : "") + ": ";
            describe(*draw.picture.source(), indent + "    ");
        }
    }

    void describe(const ImageSource& source, const std::string& indent) {
        const auto [known, isNew] = numbers_.try_emplace(&source, numbers_.size() + 1);
        text += "number " + std::to_string(known->second) + ", ";
        if (!isNew) {
            text += "as before\n";
        } else if (const Recording* recording = source.recording()) {
            describe(*recording, indent);
        } else if (const auto whole = source.whole()) {
            const PixelRect part = source.part();
            text += "part " + sizeText({part.width, part.height}) + " at " + std::to_string(part.x) + ", " +
                    std::to_string(part.y) + " of ";
            describe(*whole, indent);
        } else {
            text += sizeText(source.pixelSize()) + (source.isKnownOpaque() ? ", opaque\n" : "\n");
        }
    }

    std::map<const ImageSource*, std::size_t> numbers_;
};

} // namespace

std::string describeRecording(const Recording& recording) {
    Describer describer;
    describer.describe(recording, "");
    return describer.text;
}

} // namespace quillomat
