#include "hosts/qt/PreviewPainter.h"

#include "editor/EditingViewController.h"
#include "hosts/qt/EditorScreen.h"
#include "platform/graphics/BitmapContext.h"
#include "platform/views/Drawing.h"

#include <bit>
#include <cstdint>
#include <cstring>

namespace quillomat {

namespace {

/// R, G, B, A in memory becomes one number 0xAARRGGBB.
std::uint32_t turned(std::uint32_t pixel) {
    if constexpr (std::endian::native == std::endian::big) {
        return pixel >> 8 | pixel << 24;
    }
    return (pixel & 0xFF00FF00U) | (pixel & 0xFFU) << 16 | (pixel >> 16 & 0xFFU);
}

QImage strip(const Bitmap& bitmap, const QRect& place) {
    QImage image(place.size(), QImage::Format_ARGB32_Premultiplied);
    const auto width = static_cast<std::size_t>(place.width());
    for (int y = 0; y < place.height(); ++y) {
        const std::uint8_t* const from = bitmap.row(place.y() + y);
        std::uint8_t* const to = image.scanLine(y);
        for (std::size_t x = 0; x < width; ++x) {
            std::uint32_t pixel = 0;
            std::memcpy(&pixel, from + x * 4, 4);
            pixel = turned(pixel);
            std::memcpy(to + x * 4, &pixel, 4);
        }
    }
    return image;
}

} // namespace

QRect PaintedPicture::place(std::size_t strip) const {
    const int top = static_cast<int>(strip) * PreviewPainter::stripRows;
    return {0, top, size.width(), std::min(PreviewPainter::stripRows, size.height() - top)};
}

Recording recordViewport(const EditorScreen& screen, QSize pixels) {
    const QRectF viewport = screen.viewport();
    const double scaleX = pixels.width() / viewport.width();
    const double scaleY = pixels.height() / viewport.height();
    BitmapContext context(Size{static_cast<double>(pixels.width()), static_cast<double>(pixels.height())});
    const auto& root = screen.editor()->view();
    const Size whole = root->bounds().size;
    drawViewHierarchy(
        *root, makeRect(-viewport.x() * scaleX, -viewport.y() * scaleY, whole.width * scaleX, whole.height * scaleY),
        context);
    return context.recording();
}

PaintedPicture PreviewPainter::paint(const Recording& recording) {
    const PixelRect changed = picture_.draw(recording);
    const Bitmap& bitmap = picture_.bitmap();
    painted_.size = {bitmap.width(), bitmap.height()};
    painted_.strips.resize(static_cast<std::size_t>((bitmap.height() + stripRows - 1) / stripRows));
    const QRect box(changed.x, changed.y, changed.width, changed.height);
    for (std::size_t i = 0; i < painted_.strips.size(); ++i) {
        if (const QRect place = painted_.place(i); place.intersects(box)) {
            painted_.strips[i] = strip(bitmap, place);
        }
    }
    return painted_;
}

} // namespace quillomat
