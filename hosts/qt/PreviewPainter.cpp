#include "hosts/qt/PreviewPainter.h"

#include "editor/EditingViewController.h"
#include "hosts/qt/EditorScreen.h"
#include "hosts/qt/Pictures.h"
#include "platform/graphics/BitmapContext.h"
#include "platform/views/Drawing.h"

#include <algorithm>

namespace quillomat {

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
            painted_.strips[i] = toQImage(bitmap, place.top(), place.height());
        }
    }
    return painted_;
}

} // namespace quillomat
