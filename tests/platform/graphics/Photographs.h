// Photographs as they come from files, and canvases that they are stretched over.
#pragma once

#include "DrawnPictures.h"
#include "JpegDocuments.h"
#include "codecs/TestPictures.h"
#include "platform/graphics/BitmapContext.h"
#include "platform/graphics/ImageFile.h"

#include <filesystem>
#include <string>
#include <vector>

namespace quillomat::testing {

inline Image photograph(PixelSize size, const JpegKind& kind = {}) {
    return imageFromBytes(jpegOf(photographLike(size), kind)).value();
}

/// One photograph stored in each of the eight orientations, the upright one first; none without the corpus.
inline std::vector<Image> photographInEachOrientation() {
    const std::filesystem::path folder = corpora() / "exif-orientation";
    std::vector<Image> images;
    for (int orientation = 1; std::filesystem::exists(folder) && orientation <= 8; ++orientation) {
        images.push_back(
            imageFromBytes(readWhole(folder / ("Landscape_" + std::to_string(orientation) + ".jpg"))).value());
    }
    return images;
}

inline Recording backgroundOf(const Image& picture, PixelSize canvas, const Rect& rect) {
    BitmapContext context({static_cast<double>(canvas.width), static_cast<double>(canvas.height)});
    context.drawImage(picture, rect);
    return context.recording();
}

inline Recording backgroundOf(const Image& picture, PixelSize canvas) {
    return backgroundOf(picture, canvas, makeRect(0, 0, canvas.width, canvas.height));
}

} // namespace quillomat::testing
