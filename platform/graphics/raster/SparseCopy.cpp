// Pictures in runs that lie on the canvas's pixels. Beyond its edges a picture goes on as it ends, as any other does.
#include "platform/graphics/raster/Sampler.h"

#include <algorithm>
#include <cmath>

namespace quillomat::raster {

namespace {

class SparseSampler final : public Sampler, public SparseRows {
public:
    SparseSampler(std::shared_ptr<const SparsePicture> picture, int shiftX, int shiftY)
        : picture_(std::move(picture)), shiftX_(shiftX), shiftY_(shiftY) {}

    void row(int y, int left, int right, std::uint8_t* out, SamplerScratch&) const override {
        const int from = std::clamp(shiftX_, left, right);
        const int to = std::clamp(shiftX_ + width(), from, right);
        for (int x = left; x < from; ++x, out += 4) {
            picture_->copy(rowOf(y), 0, 1, out);
        }
        picture_->copy(rowOf(y), from - shiftX_, to - shiftX_, out);
        out += static_cast<std::ptrdiff_t>(to - from) * 4;
        for (int x = to; x < right; ++x, out += 4) {
            picture_->copy(rowOf(y), width() - 1, width(), out);
        }
    }

    [[nodiscard]] const SparseRows* sparse() const override { return this; }

    [[nodiscard]] SparsePicture::Stretch stretchAt(int y, int x, int right) const override {
        if (x < shiftX_ || x >= shiftX_ + width()) {
            return {x < shiftX_ ? std::min(right, shiftX_) : right, SparsePicture::Content::mixed, nullptr};
        }
        const int end = std::min(right, shiftX_ + width());
        SparsePicture::Stretch stretch = picture_->stretchAt(rowOf(y), x - shiftX_, end - shiftX_);
        stretch.right += shiftX_;
        return stretch;
    }

    [[nodiscard]] Span widestOpaque(int y) const override {
        const Columns columns = picture_->widestOpaque(rowOf(y));
        return {columns.left + shiftX_, columns.right + shiftX_};
    }

    [[nodiscard]] bool isOpaque() const override { return picture_->isOpaque(); }

private:
    [[nodiscard]] int width() const { return picture_->size().width; }
    [[nodiscard]] int rowOf(int y) const { return std::clamp(y - shiftY_, 0, picture_->size().height - 1); }

    std::shared_ptr<const SparsePicture> picture_;
    int shiftX_;
    int shiftY_;
};

} // namespace

bool liesOnPixels(const LayerDraw& draw, PixelSize picture) {
    if (picture.isEmpty()) {
        return false;
    }
    const auto along = axisMap(pictureToCanvas(draw, picture));
    return along && along->isWholePixelShift(picture);
}

std::unique_ptr<Sampler> makeSparseSampler(std::shared_ptr<const SparsePicture> picture, const LayerDraw& draw) {
    const auto along = axisMap(pictureToCanvas(draw, picture->size()));
    return std::make_unique<SparseSampler>(std::move(picture), static_cast<int>(std::lround(along->originX)),
                                           static_cast<int>(std::lround(along->originY)));
}

} // namespace quillomat::raster
