#include "platform/graphics/ImageFile.h"

#include "platform/graphics/codecs/Codec.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <new>

namespace quillomat {
namespace codecs {
namespace {

constexpr std::array<const Codec*, 4> codecs{&pngCodec, &jpegCodec, &webpCodec, &heifCodec};

const Codec* codecFor(ByteSpan bytes) {
    for (const Codec* codec : codecs) {
        if (codec->sniff(bytes)) {
            return codec;
        }
    }
    return nullptr;
}

Failure unknownFormat(ByteSpan bytes) {
    return {bytes.empty() ? "empty file" : "not a picture of a known format"};
}

/// What a reason for a shortage of memory reads like: the limits allow more than a small machine may have.
Failure outOfMemory() {
    return {"not enough memory for the picture"};
}

Result<Bitmap> decode(ByteSpan bytes, PixelSize minimum, const ImageLimits& limits) {
    const Codec* codec = codecFor(bytes);
    if (codec == nullptr) {
        return unknownFormat(bytes);
    }
    try {
        return codec->decode(bytes, minimum, limits);
    } catch (const std::bad_alloc&) {
        return outOfMemory();
    }
}

/// Holds the document, and its pixels once they have been asked for.
class EncodedSource final : public ImageSource {
public:
    EncodedSource(Bytes bytes, const ImageHeader& header, const ImageLimits& limits)
        : header_(header), limits_(limits), bytes_(std::move(bytes)) {}

    [[nodiscard]] PixelSize pixelSize() const override { return header_.size; }
    [[nodiscard]] bool isKnownOpaque() const override { return header_.isKnownOpaque; }

    [[nodiscard]] SharedBitmap bitmap() const override {
        const std::lock_guard lock(mutex_);
        if (!isDecoded_) {
            decodeOnce();
        }
        return bitmap_;
    }

    [[nodiscard]] SharedBitmap bitmapOfAtLeast(PixelSize minimum) const override {
        const std::lock_guard lock(mutex_);
        if (!isDecoded_) {
            if (reduced_ && reduced_->width() >= minimum.width && reduced_->height() >= minimum.height) {
                return reduced_;
            }
            decodeReduced(minimum);
        }
        return isDecoded_ ? bitmap_ : reduced_;
    }

    [[nodiscard]] std::string failure() const override {
        const std::lock_guard lock(mutex_);
        return failure_;
    }

    [[nodiscard]] std::span<const std::byte> encodedBytes() const override { return bytes_; }

private:
    void decodeOnce() const {
        isDecoded_ = true;
        Result<Bitmap> decoded = decode(bytes_, {}, limits_);
        if (!decoded) {
            failure_ = decoded.reason();
        } else if (decoded->size() != header_.size) {
            failure_ = "picture of another size than its header says";
        } else {
            bitmap_ = std::make_shared<const Bitmap>(std::move(decoded).value());
        }
        reduced_.reset();
    }

    /// Formats that cannot reduce while decoding give the whole picture, which is then kept as such.
    void decodeReduced(PixelSize minimum) const {
        Result<Bitmap> decoded = decode(bytes_, {std::max(minimum.width, 1), std::max(minimum.height, 1)}, limits_);
        isDecoded_ = !decoded || decoded->size() == header_.size;
        if (!decoded) {
            failure_ = decoded.reason();
            return;
        }
        (isDecoded_ ? bitmap_ : reduced_) = std::make_shared<const Bitmap>(std::move(decoded).value());
        if (isDecoded_) {
            reduced_.reset();
        }
    }

    ImageHeader header_;
    ImageLimits limits_;
    Bytes bytes_;
    mutable std::mutex mutex_;
    mutable bool isDecoded_ = false;
    mutable SharedBitmap bitmap_;
    mutable SharedBitmap reduced_; // until the whole picture is asked for
    mutable std::string failure_;
};

} // namespace

Status checkSize(std::uint64_t width, std::uint64_t height, const ImageLimits& limits) {
    const std::string size = "picture of " + std::to_string(width) + " x " + std::to_string(height) + " pixels";
    if (width == 0 || height == 0) {
        return Failure{size + " is empty"};
    }
    const auto side = static_cast<std::uint64_t>(limits.side);
    if (width > side || height > side) {
        return Failure{size + " is over the limit of " + std::to_string(limits.side) + " a side"};
    }
    if (width > limits.pixels / height) {
        return Failure{size + " is over the limit of " + std::to_string(limits.pixels) + " pixels"};
    }
    return {};
}

} // namespace codecs

Result<ImageHeader> readImageHeader(std::span<const std::byte> bytes, const ImageLimits& limits) {
    const codecs::Codec* codec = codecs::codecFor(bytes);
    if (codec == nullptr) {
        return codecs::unknownFormat(bytes);
    }
    try {
        return codec->readHeader(bytes, limits);
    } catch (const std::bad_alloc&) {
        return codecs::outOfMemory();
    }
}

Result<Bitmap> decodeImage(std::span<const std::byte> bytes, const ImageLimits& limits) {
    return codecs::decode(bytes, {}, limits);
}

Result<Bitmap> decodeImageReduced(std::span<const std::byte> bytes, PixelSize minimum, const ImageLimits& limits) {
    return codecs::decode(bytes, {std::max(minimum.width, 1), std::max(minimum.height, 1)}, limits);
}

Result<Image> imageFromBytes(Bytes bytes, const ImageLimits& limits) {
    const Result<ImageHeader> header = readImageHeader(bytes, limits);
    if (!header) {
        return Failure{header.reason()};
    }
    return Image(std::make_shared<codecs::EncodedSource>(std::move(bytes), *header, limits));
}

Result<Image> imageFromFile(const FileManager& files, const std::string& path, const ImageLimits& limits) {
    Result<Bytes> bytes = files.read(path, limits.fileBytes);
    if (!bytes) {
        return Failure{bytes.reason()};
    }
    return imageFromBytes(std::move(bytes).value(), limits);
}

std::string describeFormat(ImageFormat format) {
    for (const codecs::Codec* codec : codecs::codecs) {
        if (codec->format == format) {
            return std::string(codec->name);
        }
    }
    return {};
}

} // namespace quillomat
