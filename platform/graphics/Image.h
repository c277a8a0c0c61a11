// A picture: an immutable shared source of pixels and a scale (pixels per point), cheap to copy, safe to share.
#pragma once

#include "platform/foundation/Geometry.h"
#include "platform/graphics/Bitmap.h"

#include <cstddef>
#include <memory>
#include <span>
#include <string>

namespace quillomat {

class Recording;

/// Where pixels come from: decoded pixels, an encoded file, or a recording of draws. Thread-safe.
class ImageSource {
public:
    virtual ~ImageSource() = default;
    /// Upright size, known without decoding.
    [[nodiscard]] virtual PixelSize pixelSize() const = 0;
    /// Whether every pixel is known to be opaque, without decoding.
    [[nodiscard]] virtual bool isKnownOpaque() const = 0;
    /// The pixels, decoded or rasterised at the first call and kept while somebody holds them; null when that failed.
    [[nodiscard]] virtual SharedBitmap bitmap() const = 0;
    /// The pixels, or a reduction that still has `minimum` on both sides, where that is cheaper to decode.
    [[nodiscard]] virtual SharedBitmap bitmapOfAtLeast(PixelSize /*minimum*/) const { return bitmap(); }
    /// Why `bitmap()` gave null; empty when it has not failed so far.
    [[nodiscard]] virtual std::string failure() const { return {}; }
    /// The encoded document behind it (a PNG, a JPEG ...), for sources that are one; empty for the others.
    [[nodiscard]] virtual std::span<const std::byte> encodedBytes() const { return {}; }
    /// The recording behind it, for sources that are one.
    [[nodiscard]] virtual const Recording* recording() const { return nullptr; }
};

class Image {
public:
    /// No picture.
    Image() = default;
    explicit Image(std::shared_ptr<const ImageSource> source, double scale = 1)
        : source_(std::move(source)), scale_(scale) {}
    [[nodiscard]] static Image fromBitmap(Bitmap bitmap, double scale = 1);
    [[nodiscard]] static Image fromBitmap(SharedBitmap bitmap, double scale = 1);

    [[nodiscard]] explicit operator bool() const { return source_ != nullptr; }
    [[nodiscard]] double scale() const { return scale_; }
    /// In points; zero without a picture.
    [[nodiscard]] Size size() const;
    [[nodiscard]] PixelSize pixelSize() const { return source_ ? source_->pixelSize() : PixelSize{}; }
    [[nodiscard]] SharedBitmap bitmap() const { return source_ ? source_->bitmap() : nullptr; }
    [[nodiscard]] const std::shared_ptr<const ImageSource>& source() const { return source_; }

    /// The same source at the same scale.
    friend bool operator==(const Image&, const Image&) = default;

private:
    std::shared_ptr<const ImageSource> source_;
    double scale_ = 1;
};

} // namespace quillomat
