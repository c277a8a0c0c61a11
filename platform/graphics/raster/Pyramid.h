// A picture halved again and again, each axis on its own, each level made when it is first needed.
#pragma once

#include "platform/graphics/Bitmap.h"
#include "platform/graphics/raster/Kernels.h"

#include <map>
#include <memory>
#include <mutex>
#include <utility>

namespace quillomat::raster {

class Pyramid {
public:
    explicit Pyramid(SharedBitmap picture) : picture_(std::move(picture)) {}

    [[nodiscard]] const SharedBitmap& picture() const { return picture_; }
    /// The picture with its columns halved `x` times and its rows `y` times; an odd last column or row counts double.
    [[nodiscard]] PixelView level(int x, int y) const;

private:
    [[nodiscard]] const Bitmap& made(int x, int y) const;

    SharedBitmap picture_;
    mutable std::mutex mutex_;
    mutable std::map<std::pair<int, int>, Bitmap> levels_;
};

/// The pyramids in use, so that two layers with one picture halve it once.
class Pyramids {
public:
    [[nodiscard]] std::shared_ptr<const Pyramid> of(const SharedBitmap& picture);

private:
    std::map<const Bitmap*, std::weak_ptr<const Pyramid>> known_; // a living pyramid keeps its picture
};

} // namespace quillomat::raster
