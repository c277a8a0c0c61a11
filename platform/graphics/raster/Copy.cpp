// Pictures that lie on the canvas's pixels: copied, or read where they are; and pixels that were brought there before.
#include "platform/graphics/raster/Sampler.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace quillomat::raster {

namespace {

class CopySampler final : public Sampler {
public:
    CopySampler(PictureRows picture, int shiftX, int shiftY)
        : picture_(std::move(picture)), shiftX_(shiftX), shiftY_(shiftY) {}

    void row(int y, int left, int right, std::uint8_t* out, SamplerScratch&) const override {
        const std::uint8_t* from = picture_.row(std::clamp(y - shiftY_, 0, picture_.size.height - 1));
        for (int x = left; x < right; ++x, out += 4) {
            const int column = std::clamp(x - shiftX_, 0, picture_.size.width - 1);
            std::memcpy(out, from + static_cast<std::ptrdiff_t>(column) * 4, 4);
        }
    }

    [[nodiscard]] const std::uint8_t* direct(int y, int left, int right) const override {
        if (y < shiftY_ || y - shiftY_ >= picture_.size.height || left < shiftX_ ||
            right - shiftX_ > picture_.size.width) {
            return nullptr;
        }
        return picture_.row(y - shiftY_) + static_cast<std::ptrdiff_t>(left - shiftX_) * 4;
    }

private:
    PictureRows picture_;
    int shiftX_;
    int shiftY_;
};

class KeepingSampler final : public Sampler {
public:
    KeepingSampler(std::unique_ptr<Sampler> sampler, const SampledArea& area)
        : sampler_(std::move(sampler))
        , area_(area)
        , pixels_({area.right - area.left, area.bottom - area.top})
        , known_(static_cast<std::size_t>(pixels_.height())) {}

    void row(int y, int left, int right, std::uint8_t* out, SamplerScratch& scratch) const override {
        if (!isInside(y, left, right)) {
            sampler_->row(y, left, right, out, scratch);
            return;
        }
        Known& known = knownAt(y);
        if (left < known.left || right > known.right) {
            const bool isFirst = known.left >= known.right;
            known = isFirst ? Known{left, right} : Known{std::min(left, known.left), std::max(right, known.right)};
            sampler_->row(y, known.left, known.right, pixelAt(known.left, y), scratch);
        }
        std::memcpy(out, pixelAt(left, y), static_cast<std::size_t>(right - left) * 4);
    }

    [[nodiscard]] const std::uint8_t* direct(int y, int left, int right) const override {
        const bool isKnown = isInside(y, left, right) && left >= knownAt(y).left && right <= knownAt(y).right;
        return isKnown ? pixelAt(left, y) : nullptr;
    }

private:
    /// Columns of a row.
    struct Known {
        int left = 0;
        int right = 0;
    };

    [[nodiscard]] bool isInside(int y, int left, int right) const {
        return left < right && y >= area_.top && y < area_.bottom && left >= area_.left && right <= area_.right;
    }
    [[nodiscard]] Known& knownAt(int y) const { return known_[static_cast<std::size_t>(y - area_.top)]; }
    [[nodiscard]] std::uint8_t* pixelAt(int x, int y) const {
        return pixels_.row(y - area_.top) + static_cast<std::ptrdiff_t>(x - area_.left) * 4;
    }

    std::unique_ptr<Sampler> sampler_;
    SampledArea area_;
    mutable Bitmap pixels_;
    mutable std::vector<Known> known_;
};

} // namespace

std::unique_ptr<Sampler> makeKeepingSampler(std::unique_ptr<Sampler> sampler, const SampledArea& area) {
    return std::make_unique<KeepingSampler>(std::move(sampler), area);
}

std::unique_ptr<Sampler> makeCopySampler(PictureRows picture, const AxisMap& map) {
    return std::make_unique<CopySampler>(std::move(picture), static_cast<int>(std::lround(map.originX)),
                                         static_cast<int>(std::lround(map.originY)));
}

} // namespace quillomat::raster
