#include "platform/graphics/raster/Pyramid.h"

#include <algorithm>

namespace quillomat::raster {

namespace {

std::uint8_t average(std::uint8_t a, std::uint8_t b) {
    return static_cast<std::uint8_t>((a + b + 1) / 2);
}

Bitmap halvedAcross(const Bitmap& source) {
    Bitmap half({(source.width() + 1) / 2, source.height()});
    for (int y = 0; y < half.height(); ++y) {
        const std::uint8_t* from = source.row(y);
        std::uint8_t* to = half.row(y);
        for (int x = 0; x < half.width(); ++x, to += 4) {
            const std::uint8_t* a = from + static_cast<std::ptrdiff_t>(x) * 8;
            const std::uint8_t* b = 2 * x + 1 < source.width() ? a + 4 : a;
            for (int channel = 0; channel < 4; ++channel) {
                to[channel] = average(a[channel], b[channel]);
            }
        }
    }
    return half;
}

Bitmap halvedDown(const Bitmap& source) {
    Bitmap half({source.width(), (source.height() + 1) / 2});
    for (int y = 0; y < half.height(); ++y) {
        const std::uint8_t* a = source.row(2 * y);
        const std::uint8_t* b = source.row(std::min(2 * y + 1, source.height() - 1));
        std::transform(a, a + source.stride(), b, half.row(y), average);
    }
    return half;
}

} // namespace

const Bitmap& Pyramid::made(int x, int y) const {
    if (x == 0 && y == 0) {
        return *picture_;
    }
    const auto known = levels_.find({x, y});
    if (known != levels_.end()) {
        return known->second;
    }
    Bitmap level = x > 0 ? halvedAcross(made(x - 1, y)) : halvedDown(made(0, y - 1));
    return levels_.emplace(std::pair{x, y}, std::move(level)).first->second;
}

PixelView Pyramid::level(int x, int y) const {
    const auto view = [](const Bitmap& bitmap) {
        return PixelView{bitmap.bytes().data(), bitmap.width(), bitmap.height(), bitmap.stride()};
    };
    if (x == 0 && y == 0) {
        return view(*picture_);
    }
    const std::scoped_lock lock(mutex_);
    return view(made(x, y));
}

std::shared_ptr<const Pyramid> Pyramids::of(const SharedBitmap& picture) {
    std::erase_if(known_, [](const auto& entry) { return entry.second.expired(); });
    std::weak_ptr<const Pyramid>& place = known_[picture.get()];
    std::shared_ptr<const Pyramid> pyramid = place.lock();
    if (!pyramid) {
        pyramid = std::make_shared<const Pyramid>(picture);
        place = pyramid;
    }
    return pyramid;
}

} // namespace quillomat::raster
