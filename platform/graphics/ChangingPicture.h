// One canvas that is drawn again and again while little of it changes, as a preview is.
#pragma once

#include "platform/graphics/Bitmap.h"
#include "platform/graphics/Cropping.h"
#include "platform/graphics/Recording.h"

#include <memory>

namespace quillomat {

/// Has, after each `draw`, the same bits that `rasterize` gives. What is drawn as the time before keeps its pictures,
/// decoded and brought to the canvas's pixels, and only the box round everything else is drawn. For one thread at a
/// time.
class ChangingPicture {
public:
    /// `threads` 0 means one per core.
    explicit ChangingPicture(int threads = 0);
    ~ChangingPicture();
    ChangingPicture(const ChangingPicture&) = delete;
    ChangingPicture& operator=(const ChangingPicture&) = delete;

    /// The box of the pixels that may differ from those before: the whole canvas after a change of its size, without an
    /// extent when nothing changed.
    PixelRect draw(const Recording& recording);
    [[nodiscard]] const Bitmap& bitmap() const { return bitmap_; }

private:
    struct Drawn;

    int threads_;
    std::unique_ptr<Drawn> drawn_;
    Bitmap bitmap_;
};

} // namespace quillomat
