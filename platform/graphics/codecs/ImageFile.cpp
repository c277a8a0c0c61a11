#include "platform/graphics/ImageFile.h"

#include "platform/foundation/Trace.h"
#include "platform/graphics/Cropping.h"
#include "platform/graphics/PngWriter.h"
#include "platform/graphics/codecs/Codec.h"
#include "platform/graphics/codecs/Deflate.h"
#include "platform/graphics/codecs/DraftDocument.h"

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

DocumentKey documentKeyOf(ByteSpan bytes) {
    return {bytes.size(), checksum64(bytes)};
}

Failure unknownFormat(ByteSpan bytes) {
    return {bytes.empty() ? "empty file" : "not a picture of a known format"};
}

/// What a reason for a shortage of memory reads like: the limits allow more than a small machine may have.
Failure outOfMemory() {
    return {"not enough memory for the picture"};
}

Failure otherSize() {
    return {"picture of another size than its header says"};
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

Result<Bitmap> decodePart(ByteSpan bytes, const PixelRect& part, PixelSize minimum, const ImageLimits& limits) {
    const Codec* codec = codecFor(bytes);
    if (codec == nullptr || codec->decodePart == nullptr) {
        const Result<Bitmap> whole = decode(bytes, {}, limits);
        if (!whole) {
            return whole;
        }
        return liesInside(part, whole->size()) ? Result<Bitmap>(partOf(*whole, part)) : otherSize();
    }
    try {
        return codec->decodePart(bytes, part, minimum, limits);
    } catch (const std::bad_alloc&) {
        return outOfMemory();
    }
}

std::shared_ptr<const SparsePicture> decodeSparse(ByteSpan bytes, const ImageLimits& limits) {
    const Codec* codec = codecFor(bytes);
    if (codec == nullptr || codec->decodeSparse == nullptr) {
        return nullptr;
    }
    try {
        return codec->decodeSparse(bytes, limits);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

std::unique_ptr<RowReader> readRows(SharedDocument document, const PixelRect& part, PixelSize minimum,
                                    const ImageLimits& limits) {
    const Codec* codec = codecFor(*document);
    if (codec == nullptr || codec->readRows == nullptr) {
        return nullptr;
    }
    try {
        return codec->readRows(std::move(document), part, minimum, limits);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

std::unique_ptr<PlaneReader> readPlanes(SharedDocument document, const PixelRect& part, PixelSize minimum,
                                        const ImageLimits& limits) {
    const Codec* codec = codecFor(*document);
    if (codec == nullptr || codec->readPlanes == nullptr) {
        return nullptr;
    }
    try {
        return codec->readPlanes(std::move(document), part, minimum, limits);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

/// Where a document is to be had.
class Shelf {
public:
    virtual ~Shelf() = default;
    [[nodiscard]] virtual Result<SharedDocument> take() const = 0;
    [[nodiscard]] virtual bool isMemory() const = 0;
    [[nodiscard]] virtual std::shared_ptr<FileDraft> draft() const { return nullptr; }
};

class MemoryShelf final : public Shelf {
public:
    explicit MemoryShelf(SharedDocument document) : document_(std::move(document)) {}
    [[nodiscard]] Result<SharedDocument> take() const override { return document_; }
    [[nodiscard]] bool isMemory() const override { return true; }

private:
    SharedDocument document_;
};

/// Knows a document by its bytes and not by its file's number or times: a file that was written again with the same
/// bytes is the same picture, and one that was changed within a tick of the clock is not.
class FileShelf final : public Shelf {
public:
    FileShelf(const FileManager& files, std::string path, const DocumentKey& key)
        : files_(files), path_(std::move(path)), key_(key) {}

    [[nodiscard]] Result<SharedDocument> take() const override {
        Result<Bytes> bytes = files_.read(path_, key_.length);
        if (!bytes) {
            return Failure{files_.fileExists(path_) ? bytes.reason() : "the file is gone"};
        }
        if (documentKeyOf(*bytes) != key_) {
            return Failure{"the file holds another picture now"};
        }
        return std::make_shared<const Bytes>(std::move(bytes).value());
    }
    [[nodiscard]] bool isMemory() const override { return false; }

private:
    const FileManager& files_;
    std::string path_;
    DocumentKey key_;
};

/// What nobody else has put under the draft's name since.
class DraftShelf final : public Shelf {
public:
    DraftShelf(std::shared_ptr<FileDraft> draft, const DocumentKey& key) : draft_(std::move(draft)), key_(key) {}

    [[nodiscard]] Result<SharedDocument> take() const override {
        Result<Bytes> bytes = draft_->read();
        if (!bytes) {
            return Failure{bytes.reason()};
        }
        if (documentKeyOf(*bytes) != key_) {
            return Failure{"the file holds another picture now"};
        }
        return std::make_shared<const Bytes>(std::move(bytes).value());
    }
    [[nodiscard]] bool isMemory() const override { return false; }
    [[nodiscard]] std::shared_ptr<FileDraft> draft() const override { return draft_; }

private:
    std::shared_ptr<FileDraft> draft_;
    DocumentKey key_;
};

/// A document and, as long as somebody holds them, its pixels.
class EncodedSource final : public ImageSource {
public:
    EncodedSource(std::unique_ptr<const Shelf> shelf, const DocumentKey& key, const ImageHeader& header,
                  const ImageLimits& limits)
        : shelf_(std::move(shelf)), key_(key), header_(header), limits_(limits) {}

    [[nodiscard]] PixelSize pixelSize() const override { return header_.size; }
    [[nodiscard]] bool isKnownOpaque() const override { return header_.isKnownOpaque; }
    [[nodiscard]] DocumentKey documentKey() const override { return key_; }
    [[nodiscard]] SharedDocument document() const override {
        const Result<SharedDocument> taken = shelf_->take();
        return taken ? *taken : nullptr;
    }
    [[nodiscard]] bool isInMemory() const { return shelf_->isMemory(); }
    [[nodiscard]] std::shared_ptr<FileDraft> draft() const { return shelf_->draft(); }
    [[nodiscard]] std::shared_ptr<const EncodedSource> inMemory() const {
        SharedDocument document = this->document();
        return document ? std::make_shared<const EncodedSource>(std::make_unique<MemoryShelf>(std::move(document)),
                                                                key_, header_, limits_)
                        : nullptr;
    }

    [[nodiscard]] SharedBitmap bitmap() const override { return bitmapOfAtLeast(header_.size); }

    [[nodiscard]] SharedBitmap bitmapOfAtLeast(PixelSize minimum) const override {
        const std::lock_guard lock(mutex_);
        if (SharedBitmap whole = whole_.lock()) {
            return whole;
        }
        const PixelSize size = header_.size;
        const bool wantsWhole = minimum.width >= size.width && minimum.height >= size.height;
        if (SharedBitmap reduced = reduced_.lock();
            reduced && reduced->width() >= minimum.width && reduced->height() >= minimum.height) {
            return reduced;
        }
        if (isDamaged_) {
            return nullptr;
        }
        auto decoded = pixels([&](ByteSpan bytes) {
            Result<Bitmap> bitmap = decode(bytes, wantsWhole ? PixelSize{} : atLeastOne(minimum), limits_);
            return wantsWhole && bitmap && bitmap->size() != size ? otherSize() : std::move(bitmap);
        });
        if (decoded) {
            // Formats that cannot reduce while decoding give the whole picture.
            (decoded->size() == size ? whole_ : reduced_) = decoded;
        }
        return decoded;
    }

    [[nodiscard]] SharedBitmap partOfAtLeast(const PixelRect& part, PixelSize minimum) const override {
        const std::lock_guard lock(mutex_);
        if (const SharedBitmap whole = whole_.lock()) {
            return std::make_shared<const Bitmap>(partOf(*whole, part));
        }
        if (isDamaged_) {
            return nullptr;
        }
        return pixels([&](ByteSpan bytes) { return decodePart(bytes, part, atLeastOne(minimum), limits_); });
    }

    [[nodiscard]] std::unique_ptr<RowReader> rowsOfAtLeast(const PixelRect& part, PixelSize minimum) const override {
        const std::lock_guard lock(mutex_);
        if (isDamaged_ || !whole_.expired() || !reduced_.expired()) {
            return nullptr;
        }
        Result<SharedDocument> document = shelf_->take();
        return document ? readRows(std::move(document).value(), part, atLeastOne(minimum), limits_) : nullptr;
    }

    [[nodiscard]] bool mayBeInPlanes() const override { return header_.mayBeInPlanes; }

    [[nodiscard]] std::unique_ptr<PlaneReader> planesOfAtLeast(const PixelRect& part,
                                                               PixelSize minimum) const override {
        const std::lock_guard lock(mutex_);
        return newPlanes(part, minimum);
    }

    [[nodiscard]] std::shared_ptr<const PlanarPicture> planarPartOfAtLeast(const PixelRect& part,
                                                                           PixelSize minimum) const override {
        const std::lock_guard lock(mutex_);
        const auto reader = newPlanes(part, minimum);
        if (!reader) {
            return nullptr;
        }
        auto planes = planes_.lock();
        if (!planes || planesLayout_ != reader->layout()) {
            trace::Span span("decode picture");
            noteSize(span);
            try {
                planes = planarPictureOf(*reader);
            } catch (const std::bad_alloc&) {
                return nullptr;
            }
            planes_ = planes;
            planesLayout_ = reader->layout();
        }
        return planes;
    }

    /// What goes wrong here is for `bitmap` to report.
    [[nodiscard]] std::shared_ptr<const SparsePicture> sparsePixels() const override {
        const std::lock_guard lock(mutex_);
        if (!header_.mayBeInRuns || isDamaged_ || !whole_.expired()) {
            return nullptr;
        }
        auto sparse = sparse_.lock();
        if (!sparse) {
            trace::Span span("decode picture");
            noteSize(span);
            const Result<SharedDocument> document = shelf_->take();
            sparse = document ? decodeSparse(**document, limits_) : nullptr;
            sparse_ = sparse;
        }
        return sparse;
    }

    [[nodiscard]] std::string failure() const override {
        const std::lock_guard lock(mutex_);
        return failure_;
    }

private:
    [[nodiscard]] static PixelSize atLeastOne(PixelSize size) {
        return {std::max(size.width, 1), std::max(size.height, 1)};
    }

    [[nodiscard]] std::unique_ptr<PlaneReader> newPlanes(const PixelRect& part, PixelSize minimum) const {
        if (!header_.mayBeInPlanes || isDamaged_) {
            return nullptr;
        }
        Result<SharedDocument> document = shelf_->take();
        return document ? readPlanes(std::move(document).value(), part, atLeastOne(minimum), limits_) : nullptr;
    }

    void noteSize(trace::Span& span) const {
        span.note("width", header_.size.width);
        span.note("height", header_.size.height);
        span.note("bytes", static_cast<std::int64_t>(key_.length));
    }

    /// The same bytes fail again, so they are decoded but once; a file may come back.
    template <typename Decode> [[nodiscard]] SharedBitmap pixels(const Decode& decodeBytes) const {
        trace::Span span("decode picture");
        noteSize(span);
        const Result<SharedDocument> document = shelf_->take();
        if (!document) {
            failure_ = document.reason();
            return nullptr;
        }
        Result<Bitmap> bitmap = decodeBytes(**document);
        isDamaged_ = !bitmap;
        failure_ = bitmap.reason();
        return bitmap ? std::make_shared<const Bitmap>(std::move(bitmap).value()) : nullptr;
    }

    std::unique_ptr<const Shelf> shelf_;
    DocumentKey key_;
    ImageHeader header_;
    ImageLimits limits_;
    mutable std::mutex mutex_;
    mutable std::weak_ptr<const Bitmap> whole_;
    mutable std::weak_ptr<const Bitmap> reduced_;
    mutable std::weak_ptr<const SparsePicture> sparse_;
    mutable std::weak_ptr<const PlanarPicture> planes_;
    mutable PlanarLayout planesLayout_; // as they were decoded
    mutable bool isDamaged_ = false;
    mutable std::string failure_;
};

} // namespace

Image imageOverDraft(std::shared_ptr<FileDraft> draft, const DocumentKey& key, const ImageHeader& header,
                     const ImageLimits& limits, double scale) {
    auto shelf = std::make_unique<DraftShelf>(std::move(draft), key);
    return Image(std::make_shared<EncodedSource>(std::move(shelf), key, header, limits), scale);
}

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
    const DocumentKey key = codecs::documentKeyOf(bytes);
    auto shelf = std::make_unique<codecs::MemoryShelf>(std::make_shared<const Bytes>(std::move(bytes)));
    return Image(std::make_shared<codecs::EncodedSource>(std::move(shelf), key, *header, limits));
}

Result<Image> imageFromFile(const FileManager& files, const std::string& path, const ImageLimits& limits) {
    Result<Bytes> bytes = files.read(path, limits.fileBytes);
    if (!bytes) {
        return Failure{bytes.reason()};
    }
    return imageFromBytes(std::move(bytes).value(), limits);
}

Result<Image> imageReadWhenDrawn(const FileManager& files, const std::string& path, const ImageLimits& limits) {
    const Result<Bytes> bytes = files.read(path, limits.fileBytes);
    if (!bytes) {
        return Failure{bytes.reason()};
    }
    const Result<ImageHeader> header = readImageHeader(*bytes, limits);
    if (!header) {
        return Failure{header.reason()};
    }
    const DocumentKey key = codecs::documentKeyOf(*bytes);
    auto shelf = std::make_unique<codecs::FileShelf>(files, path, key);
    return Image(std::make_shared<codecs::EncodedSource>(std::move(shelf), key, *header, limits));
}

Image heldInMemory(const Image& image) {
    const auto encoded = std::dynamic_pointer_cast<const codecs::EncodedSource>(image.source());
    if (!encoded || encoded->isInMemory()) {
        return image;
    }
    auto held = encoded->inMemory();
    return held ? Image(std::move(held), image.scale()) : Image();
}

std::shared_ptr<FileDraft> draftOf(const Image& image) {
    const auto encoded = std::dynamic_pointer_cast<const codecs::EncodedSource>(image.source());
    return encoded ? encoded->draft() : nullptr;
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
