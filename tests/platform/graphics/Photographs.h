// Photographs as they come from files, and canvases that they are stretched over.
#pragma once

#include "DrawnPictures.h"
#include "JpegDocuments.h"
#include "platform/graphics/BitmapContext.h"
#include "platform/graphics/ImageFile.h"

namespace quillomat::testing {

inline Image photograph(PixelSize size, const JpegKind& kind = {}) {
    return imageFromBytes(jpegOf(photographLike(size), kind)).value();
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
