#include "platform/graphics/Image.h"

#include "platform/graphics/PlanarPicture.h"
#include "platform/graphics/RowReader.h"

#include <atomic>

namespace quillomat {

namespace {

/// Decoded pixels. Whether they are opaque is looked up at the first question and remembered.
class BitmapSource final : public ImageSource {
public:
    explicit BitmapSource(SharedBitmap bitmap) : bitmap_(std::move(bitmap)) {}

    [[nodiscard]] PixelSize pixelSize() const override { return bitmap_->size(); }
    [[nodiscard]] SharedBitmap bitmap() const override { return bitmap_; }

    [[nodiscard]] bool isKnownOpaque() const override {
        int known = opacity_.load(std::memory_order_relaxed);
        if (known == unknown) {
            known = bitmap_->isOpaque() ? opaque : translucent;
            opacity_.store(known, std::memory_order_relaxed);
        }
        return known == opaque;
    }

private:
    static constexpr int unknown = 0;
    static constexpr int opaque = 1;
    static constexpr int translucent = 2;

    SharedBitmap bitmap_;
    mutable std::atomic<int> opacity_{unknown};
};

} // namespace

SharedBitmap ImageSource::partOfAtLeast(const PixelRect& part, PixelSize /*minimum*/) const {
    const SharedBitmap whole = bitmap();
    return whole ? std::make_shared<const Bitmap>(partOf(*whole, part)) : nullptr;
}

std::unique_ptr<RowReader> ImageSource::rowsOfAtLeast(const PixelRect& /*part*/, PixelSize /*minimum*/) const {
    return nullptr;
}

std::unique_ptr<PlaneReader> ImageSource::planesOfAtLeast(const PixelRect& /*part*/, PixelSize /*minimum*/) const {
    return nullptr;
}

std::shared_ptr<const PlanarPicture> ImageSource::planarPartOfAtLeast(const PixelRect& /*part*/,
                                                                      PixelSize /*minimum*/) const {
    return nullptr;
}

Image Image::fromBitmap(Bitmap bitmap, double scale) {
    return fromBitmap(std::make_shared<const Bitmap>(std::move(bitmap)), scale);
}

Image Image::fromBitmap(SharedBitmap bitmap, double scale) {
    if (!bitmap || bitmap->size().isEmpty()) {
        return {};
    }
    return Image(std::make_shared<const BitmapSource>(std::move(bitmap)), scale);
}

Size Image::size() const {
    const PixelSize pixels = pixelSize();
    return {pixels.width / scale_, pixels.height / scale_};
}

} // namespace quillomat
