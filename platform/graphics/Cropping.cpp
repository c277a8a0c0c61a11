#include "platform/graphics/Cropping.h"

#include "platform/graphics/BitmapContext.h"
#include "platform/graphics/PlanarPicture.h"
#include "platform/graphics/RowReader.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <mutex>

namespace quillomat {

namespace {

/// A part of a picture that is still encoded: no more of it is decoded into memory.
class CroppedSource final : public ImageSource {
public:
    CroppedSource(std::shared_ptr<const ImageSource> whole, const PixelRect& part)
        : whole_(std::move(whole)), part_(part) {}

    [[nodiscard]] PixelSize pixelSize() const override { return {part_.width, part_.height}; }
    [[nodiscard]] bool isKnownOpaque() const override { return whole_->isKnownOpaque(); }
    [[nodiscard]] std::string failure() const override { return whole_->failure(); }
    [[nodiscard]] std::uint64_t encodedLength() const override { return whole_->encodedLength(); }
    [[nodiscard]] SharedBitmap bitmap() const override { return bitmapOfAtLeast(pixelSize()); }
    [[nodiscard]] std::shared_ptr<const ImageSource> whole() const override { return whole_; }
    [[nodiscard]] PixelRect part() const override { return part_; }

    [[nodiscard]] SharedBitmap bitmapOfAtLeast(PixelSize minimum) const override {
        const std::scoped_lock lock(mutex_);
        SharedBitmap pixels = pixels_.lock();
        if (!pixels || pixels->width() < minimum.width || pixels->height() < minimum.height) {
            pixels = whole_->partOfAtLeast(part_, minimum);
            pixels_ = pixels;
        }
        return pixels;
    }

    [[nodiscard]] std::unique_ptr<RowReader> rowsOfAtLeast(const PixelRect& part, PixelSize minimum) const override {
        const std::scoped_lock lock(mutex_);
        return pixels_.expired() ? whole_->rowsOfAtLeast(inWhole(part), minimum) : nullptr;
    }

    [[nodiscard]] bool mayBeInPlanes() const override { return whole_->mayBeInPlanes(); }
    [[nodiscard]] std::unique_ptr<PlaneReader> planesOfAtLeast(const PixelRect& part,
                                                               PixelSize minimum) const override {
        return whole_->planesOfAtLeast(inWhole(part), minimum);
    }
    [[nodiscard]] std::shared_ptr<const PlanarPicture> planarPartOfAtLeast(const PixelRect& part,
                                                                           PixelSize minimum) const override {
        return whole_->planarPartOfAtLeast(inWhole(part), minimum);
    }

private:
    [[nodiscard]] PixelRect inWhole(const PixelRect& part) const {
        return {part_.x + part.x, part_.y + part.y, part.width, part.height};
    }

    std::shared_ptr<const ImageSource> whole_;
    PixelRect part_;
    mutable std::mutex mutex_;
    mutable std::weak_ptr<const Bitmap> pixels_;
};

} // namespace

PixelRect centredCrop(PixelSize picture, PixelSize shape) {
    const PixelRect whole{0, 0, picture.width, picture.height};
    if (picture.isEmpty() || shape.isEmpty()) {
        return whole;
    }
    const double aspect = static_cast<double>(shape.width) / shape.height;
    const double width = std::min<double>(picture.width, std::round(picture.height * aspect));
    const double height = std::min<double>(picture.height, std::round(picture.width / aspect));
    PixelRect cut = whole;
    cut.width = std::max(1, static_cast<int>(width));
    cut.height = std::max(1, static_cast<int>(height));
    cut.x = (picture.width - cut.width) / 2;
    cut.y = (picture.height - cut.height) / 2;
    return cut;
}

bool liesInside(const PixelRect& rect, PixelSize picture) {
    return rect.x >= 0 && rect.y >= 0 && rect.width > 0 && rect.height > 0 &&
           std::int64_t{rect.x} + rect.width <= picture.width && std::int64_t{rect.y} + rect.height <= picture.height;
}

Image croppedImage(const Image& image, const PixelRect& rect) {
    const PixelSize size = image.pixelSize();
    if (rect == PixelRect{0, 0, size.width, size.height}) {
        return image;
    }
    if (!liesInside(rect, size)) {
        return {};
    }
    if (image.source()->encodedLength() > 0) {
        return Image(std::make_shared<const CroppedSource>(image.source(), rect));
    }
    BitmapContext canvas(Size{static_cast<double>(rect.width), static_cast<double>(rect.height)});
    canvas.drawImage(image, makeRect(-rect.x, -rect.y, size.width, size.height));
    return canvas.makeImage();
}

} // namespace quillomat
