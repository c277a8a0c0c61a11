// Pictures that lie on the canvas's pixels: copied, or read where they are.
#include "platform/graphics/raster/Sampler.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace quillomat::raster {

namespace {

class CopySampler final : public Sampler {
public:
    CopySampler(SharedBitmap picture, int shiftX, int shiftY)
        : picture_(std::move(picture)), shiftX_(shiftX), shiftY_(shiftY) {}

    void row(int y, int left, int right, std::uint8_t* out, SamplerScratch&) const override {
        const std::uint8_t* from = picture_->row(std::clamp(y - shiftY_, 0, picture_->height() - 1));
        for (int x = left; x < right; ++x, out += 4) {
            const int column = std::clamp(x - shiftX_, 0, picture_->width() - 1);
            std::memcpy(out, from + static_cast<std::ptrdiff_t>(column) * 4, 4);
        }
    }

    [[nodiscard]] const std::uint8_t* direct(int y, int left, int right) const override {
        if (y < shiftY_ || y - shiftY_ >= picture_->height() || left < shiftX_ || right - shiftX_ > picture_->width()) {
            return nullptr;
        }
        return picture_->row(y - shiftY_) + static_cast<std::ptrdiff_t>(left - shiftX_) * 4;
    }

private:
    SharedBitmap picture_;
    int shiftX_;
    int shiftY_;
};

} // namespace

std::unique_ptr<Sampler> makeCopySampler(SharedBitmap picture, const AxisMap& map) {
    return std::make_unique<CopySampler>(std::move(picture), static_cast<int>(std::lround(map.originX)),
                                         static_cast<int>(std::lround(map.originY)));
}

} // namespace quillomat::raster
