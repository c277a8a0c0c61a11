// Turns the recordings of a changing preview into pictures for the toolkit.
#pragma once

#include "platform/graphics/ChangingPicture.h"

#include <QImage>
#include <QRect>
#include <QSize>

#include <vector>

namespace quillomat {

class EditorScreen;

/// The editor's viewport, stretched over so many pixels.
[[nodiscard]] Recording recordViewport(const EditorScreen& screen, QSize pixels);

/// A picture in strips from the top, as wide as it is, in the form that the toolkit uploads without converting it.
/// Strips that did not change are the very images of the picture before (`QImage::cacheKey`).
struct PaintedPicture {
    QSize size;
    std::vector<QImage> strips;

    [[nodiscard]] bool isNull() const { return strips.empty(); }
    /// The place of a strip, in pixels.
    [[nodiscard]] QRect place(std::size_t strip) const;
};

/// For one thread at a time.
class PreviewPainter {
public:
    static constexpr int stripRows = 128;

    /// `threads` 0 means one per core.
    explicit PreviewPainter(int threads = 0) : picture_(threads) {}
    [[nodiscard]] PaintedPicture paint(const Recording& recording);

private:
    ChangingPicture picture_;
    PaintedPicture painted_;
};

} // namespace quillomat
