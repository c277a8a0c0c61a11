// A picture: an immutable shared source of pixels and a scale (pixels per point), cheap to copy, safe to share.
#pragma once

#include "platform/foundation/FileManager.h"
#include "platform/foundation/Geometry.h"
#include "platform/graphics/Bitmap.h"

#include <cstdint>
#include <memory>
#include <string>

namespace quillomat {

class PlanarPicture;
class PlaneReader;
class Recording;
class RowReader;
class SparsePicture;

/// An encoded picture: a PNG, a JPEG ...
using SharedDocument = std::shared_ptr<const Bytes>;

/// Tells one document from another by its length and a checksum of all its bytes; empty for none.
struct DocumentKey {
    std::uint64_t length = 0;
    std::uint64_t checksum = 0;

    [[nodiscard]] bool isEmpty() const { return length == 0; }
    friend bool operator==(const DocumentKey&, const DocumentKey&) = default;
};

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
    /// The pixels of a part, which lies inside; or a reduction of that very part with `minimum` on both sides.
    [[nodiscard]] virtual SharedBitmap partOfAtLeast(const PixelRect& part, PixelSize minimum) const;
    /// The pixels in runs, for drawing them unscaled, where the format can be decoded so and they are not there as a
    /// bitmap already; null otherwise.
    [[nodiscard]] virtual std::shared_ptr<const SparsePicture> sparsePixels() const { return nullptr; }
    /// The rows of what `partOfAtLeast` would give, decoded as they are read, where the format can be decoded so and
    /// the pixels are not there already; null otherwise. What goes wrong is for `partOfAtLeast` to report.
    [[nodiscard]] virtual std::unique_ptr<RowReader> rowsOfAtLeast(const PixelRect& part, PixelSize minimum) const;
    /// Whether the format stores planes that can be had.
    [[nodiscard]] virtual bool mayBeInPlanes() const { return false; }
    /// The planes of what `partOfAtLeast` would give, decoded as they are read, where they can be had; null otherwise.
    /// They do not depend on what is there already. What goes wrong is for `partOfAtLeast` to report.
    [[nodiscard]] virtual std::unique_ptr<PlaneReader> planesOfAtLeast(const PixelRect& part, PixelSize minimum) const;
    /// The same decoded, and kept while somebody holds them.
    [[nodiscard]] virtual std::shared_ptr<const PlanarPicture> planarPartOfAtLeast(const PixelRect& part,
                                                                                   PixelSize minimum) const;
    /// The planes, for sources whose pixels are there as such.
    [[nodiscard]] virtual std::shared_ptr<const PlanarPicture> planes() const { return nullptr; }
    /// Why `bitmap()` gave null; empty when it has not failed so far.
    [[nodiscard]] virtual std::string failure() const { return {}; }
    /// Which encoded document is behind it, known without reading it; empty for sources that are none.
    [[nodiscard]] virtual DocumentKey documentKey() const { return {}; }
    /// How long the document is that has to be decoded for pixels; 0 where none has to be.
    [[nodiscard]] virtual std::uint64_t encodedLength() const { return documentKey().length; }
    /// That document, read again where it lies in a file; null where there is none, or none any more.
    [[nodiscard]] virtual SharedDocument document() const { return nullptr; }
    /// The picture that this one is cut out of, and the part of it, for sources that are one.
    [[nodiscard]] virtual std::shared_ptr<const ImageSource> whole() const { return nullptr; }
    [[nodiscard]] virtual PixelRect part() const { return {}; }
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
