// Rows are rasterised, made straight, filtered and deflated in bands of a fixed height, each by one thread; bands are
// joined in order. A band refers to nothing above itself, not even through its first row's filter, so which thread made
// it leaves no trace in the file.
#include "platform/graphics/PngWriter.h"

#include "platform/foundation/Crew.h"
#include "platform/foundation/Trace.h"
#include "platform/graphics/ImageFile.h"
#include "platform/graphics/Rasterizer.h"
#include "platform/graphics/codecs/Deflate.h"
#include "platform/graphics/codecs/DocumentSink.h"
#include "platform/graphics/codecs/DraftDocument.h"
#include "platform/graphics/codecs/PixelRows.h"
#include "platform/graphics/codecs/PngChunks.h"
#include "platform/graphics/codecs/RowFilters.h"
#include "platform/graphics/codecs/SmallestPiece.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <condition_variable>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace quillomat {
namespace {

using codecs::RowFilter;
using codecs::rowPadding;

// Large enough that starting afresh in each band costs under a hundredth of the file, small enough to stay in cache.
constexpr std::size_t fastBandBytes = std::size_t{288} << 10;
constexpr std::size_t bestBandBytes = std::size_t{1} << 20;
constexpr int leastBandRows = 16;
constexpr int mostBandRows = 512;
// Every so many rows of a band are tried with each filter. An odd number: where every other row repeats the one above,
// both kinds are tried.
constexpr int triedRowStep = 7;
// The most that bytes of noise cost which are not 0, in sixteenths of a bit: it is 17 to 46 in photographs, and 60 to
// 69 at the edges of type.
constexpr std::uint64_t mostNoiseCost = 53;
// Bands that are made while a disk is busy.
constexpr std::size_t mostWaitingBytes = std::size_t{4} << 20;
// PNG's own limit is far above; rows beyond this cannot be buffered.
constexpr int largestWidth = 1 << 20;

/// Where the writer takes its premultiplied rows from; called from several threads.
struct RowSource {
    PixelSize size;
    bool isOpaque = false;
    std::function<void(int first, int count, std::span<std::uint8_t> out)> rows;
    /// What threads that share the rows do before they take some.
    std::function<void()> prepare;
};

struct Band {
    Bytes chunk;
    std::uint32_t adler = 1;
    std::uint64_t length = 0; // before it was deflated
};

void appendNumber(Bytes& out, std::uint32_t value) {
    for (const int shift : {24, 16, 8, 0}) {
        out.push_back(static_cast<std::byte>(value >> shift));
    }
}

/// Begins a chunk; `endChunk` fills in its length and checksum.
std::size_t beginChunk(Bytes& out, std::string_view type) {
    const std::size_t begin = out.size();
    appendNumber(out, 0);
    const auto* letters = reinterpret_cast<const std::byte*>(type.data());
    out.insert(out.end(), letters, letters + type.size());
    return begin;
}

void endChunk(Bytes& out, std::size_t begin) {
    const auto length = static_cast<std::uint32_t>(out.size() - begin - 8);
    for (std::size_t i = 0; i < 4; ++i) {
        out[begin + i] = static_cast<std::byte>(length >> (24 - 8 * i));
    }
    appendNumber(out, codecs::crc32(std::span(out).subspan(begin + 4)));
}

Bytes fileHeader(const RowSource& source) {
    constexpr std::string_view signature{"\x89PNG\r\n\x1a\n", 8};
    const auto* letters = reinterpret_cast<const std::byte*>(signature.data());
    Bytes out(letters, letters + signature.size());
    const std::size_t header = beginChunk(out, "IHDR");
    appendNumber(out, static_cast<std::uint32_t>(source.size.width));
    appendNumber(out, static_cast<std::uint32_t>(source.size.height));
    for (const int value : {8, source.isOpaque ? 2 : 6, 0, 0, 0}) {
        out.push_back(static_cast<std::byte>(value));
    }
    endChunk(out, header);
    const std::size_t srgb = beginChunk(out, "sRGB");
    out.push_back(std::byte{0}); // perceptual
    endChunk(out, srgb);
    return out;
}

/// Works one band after another through buffers of its own.
class BandMaker {
public:
    BandMaker(const RowSource& source, PngEffort effort, int bandRows)
        : source_(source)
        , effort_(effort)
        , pixelBytes_(source.isOpaque ? 3 : 4)
        , rowBytes_(static_cast<std::size_t>(source.size.width) * pixelBytes_)
        , rowStride_(rowBytes_ + 2 * rowPadding)
        , premultiplied_(static_cast<std::size_t>(source.size.width) * 4 * static_cast<std::size_t>(bandRows))
        , straight_(rowStride_ * static_cast<std::size_t>(bandRows + 1) + rowPadding) {
        if (effort == PngEffort::best) {
            smallest_ = std::make_unique<codecs::SmallestPiece>(
                rowBytes_, pixelBytes_, bandRows,
                /*isSmall=*/rowBytes_ * static_cast<std::size_t>(source.size.height) <= bestBandBytes);
        } else {
            filtered_.resize((rowBytes_ + 1) * static_cast<std::size_t>(bandRows) + rowPadding);
            deflater_.emplace(codecs::DeflateEffort::fast);
        }
    }

    [[nodiscard]] bool make(int first, int count, Band& band) {
        const std::size_t width = static_cast<std::size_t>(source_.size.width);
        source_.rows(first, count, std::span(premultiplied_).first(width * 4 * static_cast<std::size_t>(count)));
        straighten(count);
        return deflate(first, count, band);
    }

private:
    /// What the file holds, from what was drawn.
    void straighten(int count) {
        const trace::Span span("straighten");
        const std::size_t width = static_cast<std::size_t>(source_.size.width);
        for (int y = 0; y < count; ++y) {
            const std::uint8_t* from = premultiplied_.data() + width * 4 * static_cast<std::size_t>(y);
            if (source_.isOpaque) {
                codecs::dropAlpha(from, row(y), width);
            } else {
                codecs::unpremultiply(from, row(y), width);
            }
            // What a vector may have written behind the row is the zero before the next one.
            std::fill_n(row(y) + rowBytes_, rowPadding, std::uint8_t{0});
        }
    }

    /// A zero row lies before the first one.
    [[nodiscard]] std::uint8_t* row(int y) {
        return straight_.data() + rowStride_ * static_cast<std::size_t>(y + 1) + rowPadding;
    }

    void write(RowFilter filter, int y) {
        std::uint8_t* out = filtered_.data() + (rowBytes_ + 1) * static_cast<std::size_t>(y);
        *out = static_cast<std::uint8_t>(filter);
        codecs::filterRow(filter, row(y), row(y - 1), rowBytes_, pixelBytes_, out + 1);
    }

    [[nodiscard]] RowFilter cheapest(int y) {
        const codecs::RowCosts costs = codecs::costsOfRow(row(y), row(y - 1), rowBytes_, pixelBytes_);
        const auto cost = [&](RowFilter filter) { return costs[static_cast<std::size_t>(filter)]; };
        return std::ranges::min({RowFilter::paeth, RowFilter::sub, RowFilter::up, RowFilter::average}, {}, cost);
    }

    [[nodiscard]] static int firstTriedRow(int count) { return std::min(triedRowStep / 2, count - 1); }

    /// The one filter that all tried rows of a band want, if they agree.
    [[nodiscard]] std::optional<RowFilter> commonFilter(int count) {
        std::optional<RowFilter> common;
        for (int y = firstTriedRow(count); y > 0 && y < count; y += triedRowStep) {
            const RowFilter filter = cheapest(y);
            if (common.value_or(filter) != filter) {
                return std::nullopt;
            }
            common = filter;
        }
        return common;
    }

    /// Rows of a photograph all want the same filter; only where those that are tried do not agree is each one asked.
    void filterBand(int count) {
        const trace::Span span("filter");
        const std::optional<RowFilter> common = commonFilter(count);
        write(RowFilter::sub, 0);
        for (int y = 1; y < count; ++y) {
            write(common ? *common : cheapest(y), y);
        }
    }

    /// How far references are worth their bits in the band that has been filtered.
    [[nodiscard]] codecs::DeflateReach reachOf(int count) const {
        codecs::FilteredCost sum;
        std::uint64_t bytes = 0;
        for (int y = firstTriedRow(count); y < count; y += triedRowStep) {
            const auto cost =
                codecs::costOfFiltered(filtered_.data() + (rowBytes_ + 1) * static_cast<std::size_t>(y) + 1, rowBytes_);
            sum.sixteenths += cost.sixteenths;
            sum.zeros += cost.zeros;
            bytes += rowBytes_;
        }
        const bool isNoise = sum.zeros < bytes / 2 && sum.sixteenths < mostNoiseCost * (bytes - sum.zeros);
        return isNoise ? codecs::DeflateReach::runs : codecs::DeflateReach::window;
    }

    [[nodiscard]] bool deflate(int first, int count, Band& band) {
        const std::size_t begin = beginChunk(band.chunk, "IDAT");
        if (first == 0) {
            // Deflate with a window of 32 KiB, and a word on how hard was tried.
            band.chunk.push_back(std::byte{0x78});
            band.chunk.push_back(effort_ == PngEffort::best ? std::byte{0xda} : std::byte{0x01});
        }
        const bool isLast = first + count == source_.size.height;
        std::span<const std::uint8_t> filtered;
        if (smallest_) {
            const trace::Span span("filter and deflate");
            if (!smallest_->make(row(0), rowStride_, count, isLast, band.chunk)) {
                return false;
            }
            filtered = smallest_->filtered();
        } else {
            filterBand(count);
            filtered = std::span(filtered_).first((rowBytes_ + 1) * static_cast<std::size_t>(count));
            const trace::Span span("deflate");
            if (!deflater_->deflate(filtered, isLast, band.chunk, reachOf(count))) {
                return false;
            }
        }
        band.length = filtered.size();
        band.adler = codecs::adler32(filtered);
        endChunk(band.chunk, begin);
        return true;
    }

    const RowSource& source_;
    PngEffort effort_;
    std::size_t pixelBytes_;
    std::size_t rowBytes_;
    std::size_t rowStride_;
    std::vector<std::uint8_t> premultiplied_;
    std::vector<std::uint8_t> straight_;
    std::vector<std::uint8_t> filtered_;
    std::optional<codecs::PieceDeflater> deflater_;
    std::unique_ptr<codecs::SmallestPiece> smallest_;
};

/// Hands out bands and joins what comes back.
class Encoder {
public:
    Encoder(const RowSource& source, PngEffort effort, codecs::DocumentSink& sink)
        : source_(source), effort_(effort), sink_(sink) {
        const std::size_t wanted = effort == PngEffort::best ? bestBandBytes : fastBandBytes;
        const std::size_t rowBytes = static_cast<std::size_t>(source.size.width) * (source.isOpaque ? 3 : 4);
        const auto rows = static_cast<int>(std::min<std::size_t>(wanted / rowBytes, mostBandRows));
        bandRows_ = std::clamp(rows, leastBandRows, mostBandRows);
        bandCount_ = (source.size.height + bandRows_ - 1) / bandRows_;
        // Most pictures come out smaller than half. Twice as much holds any.
        const std::size_t filteredBytes = (rowBytes + 1) * static_cast<std::size_t>(source.size.height);
        sink_.begin(filteredBytes / 2 + filteredBytes / 256 + 1024);
    }

    [[nodiscard]] Status encode(int threads) {
        trace::Span span("write PNG");
        span.note("width", source_.size.width);
        span.note("height", source_.size.height);
        put(fileHeader(source_));
        const int workers = std::min(threads, bandCount_);
        isShared_ = workers > 1;
        Crew::shared().run(workers, [this] { work(); });
        Bytes end;
        const std::size_t checksum = beginChunk(end, "IDAT");
        appendNumber(end, adler_);
        endChunk(end, checksum);
        endChunk(end, beginChunk(end, "IEND"));
        put(end);
        return failure_.empty() ? Status() : Status(Failure{failure_});
    }

private:
    void work() noexcept {
        try {
            prepare();
            BandMaker maker(source_, effort_, bandRows_);
            for (int index = next_++; index < bandCount_ && !hasFailed_; index = next_++) {
                const int first = index * bandRows_;
                Band band;
                if (!maker.make(first, std::min(bandRows_, source_.size.height - first), band)) {
                    fail("the picture could not be compressed");
                    return;
                }
                join(index, std::move(band));
                prepare();
            }
        } catch (const std::bad_alloc&) {
            fail("not enough memory for the picture");
        }
    }

    void prepare() const {
        if (isShared_) {
            source_.prepare();
        }
    }

    void fail(const std::string& reason) {
        const std::lock_guard lock(mutex_);
        failure_ = reason;
        hasFailed_ = true;
    }

    /// After a failure nothing more is of use.
    void put(std::span<const std::byte> bytes) {
        if (hasFailed_) {
            return;
        }
        if (const Status status = sink_.append(bytes); !status) {
            fail(status.reason());
        }
    }

    /// One thread at a time hands bands on, and those that others bring meanwhile: nobody waits for a disk, unless it
    /// falls far behind.
    void join(int index, Band band) {
        std::unique_lock lock(mutex_);
        waitingBytes_ += band.chunk.size();
        waiting_.emplace(index, std::move(band));
        handedOn_.wait(lock, [this] { return !isJoining_ || waitingBytes_ < mostWaitingBytes; });
        if (isJoining_) {
            return;
        }
        isJoining_ = true;
        for (auto next = waiting_.extract(joined_); !next.empty(); next = waiting_.extract(joined_)) {
            lock.unlock();
            put(next.mapped().chunk);
            adler_ = codecs::joinAdler32(adler_, next.mapped().adler, next.mapped().length);
            lock.lock();
            ++joined_;
            waitingBytes_ -= next.mapped().chunk.size();
            handedOn_.notify_all();
        }
        isJoining_ = false;
        handedOn_.notify_all();
    }

    const RowSource& source_;
    PngEffort effort_;
    int bandRows_ = 0;
    int bandCount_ = 0;
    bool isShared_ = false; // by several threads
    std::atomic<int> next_ = 0;
    std::atomic<bool> hasFailed_ = false;
    std::mutex mutex_;
    std::string failure_;
    std::map<int, Band> waiting_; // made before those above them
    std::size_t waitingBytes_ = 0;
    std::condition_variable handedOn_;
    bool isJoining_ = false;
    int joined_ = 0;
    std::uint32_t adler_ = 1; // of what is joined
    codecs::DocumentSink& sink_;
};

Status encode(const RowSource& source, codecs::DocumentSink& sink, PngEffort effort, int threads) {
    if (source.size.isEmpty()) {
        return Failure{"a picture without pixels"};
    }
    if (source.size.width > largestWidth) {
        return Failure{"a picture of " + std::to_string(source.size.width) + " pixels across is too wide for PNG"};
    }
    try {
        return Encoder(source, effort, sink).encode(threadsFor(threads));
    } catch (const std::bad_alloc&) {
        return Failure{"not enough memory for the picture"};
    }
}

RowSource rowsOf(const Bitmap& bitmap, bool isOpaque) {
    return {bitmap.size(), isOpaque,
            [&bitmap](int first, int count, std::span<std::uint8_t> out) {
                std::copy_n(bitmap.row(first), static_cast<std::size_t>(count) * bitmap.stride(), out.begin());
            },
            [] {}};
}

/// Nothing where the rows have to be drawn for `RowUse::any`.
std::optional<Status> encodeRows(const Recording& recording, RowUse use, bool isOpaque, codecs::DocumentSink& sink,
                                 PngEffort effort, int threads) {
    const Rasterizer rasterizer(recording, use, threads);
    const RowSource rows{
        recording.size(), isOpaque,
        [&rasterizer](int first, int count, std::span<std::uint8_t> out) { rasterizer.rows(first, count, out); },
        [&rasterizer] { rasterizer.decodeAhead(); }};
    Status encoded = encode(rows, sink, effort, threads);
    if (!rasterizer.finish()) {
        return std::nullopt;
    }
    return encoded;
}

Status encode(const Image& image, codecs::DocumentSink& sink, PngEffort effort, int threads) {
    if (!image) {
        return Failure{"no picture"};
    }
    const ImageSource& source = *image.source();
    if (const Recording* recording = source.recording()) {
        const bool isOpaque = source.isKnownOpaque();
        const auto encoded = encodeRows(*recording, RowUse::once, isOpaque, sink, effort, threads);
        return encoded ? *encoded : *encodeRows(*recording, RowUse::any, isOpaque, sink, effort, threads);
    }
    const SharedBitmap bitmap = source.bitmap();
    if (!bitmap) {
        const std::string reason = source.failure();
        return Failure{reason.empty() ? "a picture without pixels" : reason};
    }
    return encode(rowsOf(*bitmap, source.isKnownOpaque() || bitmap->isOpaque()), sink, effort, threads);
}

/// Null where the document could not be written so.
std::shared_ptr<FileDraft> encodeIntoDraft(const Image& image, PngEffort effort, const DraftMaker& makeDraft,
                                           DocumentKey& key) {
    const auto draft = makeDraft ? makeDraft() : Failure{"no draft"};
    if (!draft) {
        return nullptr;
    }
    codecs::DraftSink sink(**draft);
    if (!encode(image, sink, effort, /*threads=*/0)) {
        return nullptr;
    }
    key = sink.key();
    return *draft;
}

} // namespace

Result<Bytes> encodePng(const Bitmap& bitmap, PngEffort effort, int threads) {
    codecs::BytesSink sink;
    const bool isOpaque = codecs::allOpaque(bitmap.bytes().data(), bitmap.size().area());
    const Status encoded = encode(rowsOf(bitmap, isOpaque), sink, effort, threads);
    return encoded ? Result<Bytes>(sink.take()) : Failure{encoded.reason()};
}

Result<Bytes> encodePng(const Image& image, PngEffort effort, int threads) {
    codecs::BytesSink sink;
    const Status encoded = encode(image, sink, effort, threads);
    return encoded ? Result<Bytes>(sink.take()) : Failure{encoded.reason()};
}

Result<Image> asPngDocument(const Image& image, PngEffort effort, const DraftMaker& makeDraft) {
    // For a document that was written a moment ago, here.
    constexpr ImageLimits ownDocument{.pixels = std::numeric_limits<std::uint64_t>::max(),
                                      .side = std::numeric_limits<int>::max(),
                                      .fileBytes = std::numeric_limits<std::uint64_t>::max()};
    const SharedDocument document = image ? image.source()->document() : nullptr;
    if (document && codecs::isPng(*document)) {
        return image;
    }
    DocumentKey key;
    if (auto draft = encodeIntoDraft(image, effort, makeDraft, key)) {
        ImageHeader header;
        header.size = image.pixelSize();
        header.isKnownOpaque = image.source()->isKnownOpaque();
        return codecs::imageOverDraft(std::move(draft), key, header, ownDocument, image.scale());
    }
    auto encoded = encodePng(image, effort);
    if (!encoded) {
        return Failure{"the picture cannot be encoded: " + encoded.reason()};
    }
    auto readable = imageFromBytes(std::move(encoded).value(), ownDocument);
    if (!readable) {
        return Failure{"the picture cannot be read back: " + readable.reason()};
    }
    return Image(readable->source(), image.scale());
}

} // namespace quillomat
