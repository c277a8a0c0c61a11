#include "platform/graphics/raster/StreamedPicture.h"

#include "platform/foundation/Trace.h"
#include "platform/graphics/raster/PlanarStretch.h"
#include "platform/graphics/raster/StretchAxis.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <cstring>
#include <new>

namespace quillomat::raster {

namespace {

// Decoded between two looks at what others want.
constexpr int rowsTogether = 16;
// Memory is taken for so much at once: a large page.
constexpr std::size_t bytesTakenTogether = std::size_t{2} << 20;
// Wide registers read behind a row's end.
constexpr std::size_t rowPadding = 256;

std::uint64_t bytesOf(PixelSize size) {
    return size.area() * 4;
}

RowWindow rowsOf(PixelSize size) {
    return {size.height, static_cast<std::size_t>(size.width) * 4};
}

std::vector<RowRange> copiedRows(const AxisMap& map, PixelSize picture, PixelSize canvas) {
    std::vector<RowRange> ranges;
    ranges.reserve(static_cast<std::size_t>(canvas.height));
    const int shift = static_cast<int>(std::lround(map.originY));
    for (int y = 0; y < canvas.height; ++y) {
        const int row = std::clamp(y - shift, 0, picture.height - 1);
        ranges.push_back({row, row + 1});
    }
    return ranges;
}

std::vector<RowRange> stretchedRows(const AxisMap& map, PixelSize picture, PixelSize canvas) {
    std::vector<RowRange> ranges;
    ranges.reserve(static_cast<std::size_t>(canvas.height));
    const auto rows = StretchAxis(map.originY, map.scaleY, PictureFilter::smooth)
                          .table<std::int8_t>(0, canvas.height, picture.height, mixedRowForm);
    for (const int first : rows.first) {
        ranges.push_back({first, std::min(first + rows.taps, picture.height)});
    }
    return ranges;
}

SampledArea wholeOf(PixelSize canvas) {
    return {0, 0, canvas.width, canvas.height};
}

/// The picture's rows as they are.
class RowsAsRead final : public RowMaker {
public:
    explicit RowsAsRead(std::unique_ptr<RowReader> reader) : reader_(std::move(reader)) {}

    [[nodiscard]] bool make(int /*row*/, std::uint8_t* out) override { return reader_->read(out); }
    [[nodiscard]] bool finish() override { return reader_->finish(); }

private:
    std::unique_ptr<RowReader> reader_;
};

/// The canvas's rows, stretched out of a few of the picture's.
class StretchedRows final : public RowMaker {
public:
    StretchedRows(std::unique_ptr<RowReader> reader, const std::vector<RowRange>& taken, const AxisMap& map,
                  PixelSize canvas, const Kernels& kernels)
        : reader_(std::move(reader))
        , taken_(taken)
        , width_(canvas.width)
        , window_(rowsOf(reader_->size()))
        , stretch_(makeMixSampler(PictureRows(reader_->size(), window_.each()), map, wholeOf(canvas), kernels)) {}

    [[nodiscard]] bool make(int row, std::uint8_t* out) override {
        try {
            const RowRange rows = taken_[static_cast<std::size_t>(row)];
            window_.dropBefore(rows.begin);
            while (window_.end() < rows.end) {
                if (!reader_->read(window_.append())) {
                    return false;
                }
            }
            stretch_->row(row, 0, width_, out, scratch_);
            return true;
        } catch (const std::bad_alloc&) {
            return false; // the whole picture says so, too
        }
    }
    [[nodiscard]] bool finish() override { return reader_->finish(); }

private:
    std::unique_ptr<RowReader> reader_;
    const std::vector<RowRange>& taken_;
    int width_;
    RowWindow window_;
    std::unique_ptr<Sampler> stretch_;
    SamplerScratch scratch_;
};

/// The same out of a few rows of its planes.
class RowsFromPlanes final : public RowMaker {
public:
    RowsFromPlanes(std::unique_ptr<PlaneReader> reader, const LayerDraw& draw, PixelSize canvas, const Kernels& kernels)
        : reader_(std::move(reader))
        , width_(canvas.width)
        , window_(std::make_shared<PlanarPicture>(reader_->layout()))
        , stretch_(window_, draw, wholeOf(canvas), kernels) {}

    [[nodiscard]] bool make(int row, std::uint8_t* out) override {
        try {
            const PlanarSampler::LumaRows rows = stretch_.lumaRows(row);
            window_->dropBefore(rows.begin);
            while (window_->end() < rows.end) {
                if (!window_->append(*reader_)) {
                    return false;
                }
                window_->dropBefore(rows.begin);
            }
            stretch_.row(row, 0, width_, out, scratch_);
            return true;
        } catch (const std::bad_alloc&) {
            return false; // the whole picture says so, too
        }
    }
    [[nodiscard]] bool finish() override {
        try {
            return reader_->finish();
        } catch (const std::bad_alloc&) {
            return false;
        }
    }

private:
    std::unique_ptr<PlaneReader> reader_;
    int width_;
    std::shared_ptr<PlanarPicture> window_;
    PlanarSampler stretch_;
    SamplerScratch scratch_;
};

} // namespace

std::uint8_t* RowWindow::append() {
    if (free_.empty()) {
        const std::size_t room = rowBytes_ + rowPadding;
        const std::size_t together = std::clamp<std::size_t>(bytesTakenTogether / room, 1, rows_.size());
        free_.reserve((memory_.size() + 1) * together); // so that dropping a row needs no memory
        memory_.emplace_back(room * together);
        for (std::size_t i = together; i-- > 0;) {
            free_.push_back(memory_.back().data() + room * i);
        }
    }
    std::uint8_t* const row = free_.back();
    free_.pop_back();
    rows_[static_cast<std::size_t>(end_++)] = row;
    return row;
}

void RowWindow::dropBefore(int row) {
    for (; begin_ < std::min(row, end_); ++begin_) {
        const std::uint8_t*& dropped = rows_[static_cast<std::size_t>(begin_)];
        free_.push_back(const_cast<std::uint8_t*>(std::exchange(dropped, nullptr))); // NOLINT: it is this one's own
    }
}

std::shared_ptr<StreamedPicture> StreamedPicture::make(std::unique_ptr<RowReader> reader, const LayerDraw& draw,
                                                       PixelSize canvas, const Kernels& kernels) {
    if (!reader || reader->size().isEmpty() || canvas.isEmpty()) {
        return nullptr;
    }
    const auto map = axisMap(pictureToCanvas(draw, reader->size()));
    if (!map || !(map->scaleX > 0) || !(map->scaleY > 0)) {
        return nullptr;
    }
    const bool isCopied = map->isWholePixelShift(reader->size());
    const bool isHalved = StretchAxis(map->originX, map->scaleX, draw.filter).level() > 0 ||
                          StretchAxis(map->originY, map->scaleY, draw.filter).level() > 0;
    if (!isCopied && (draw.filter != PictureFilter::smooth || isHalved)) {
        return nullptr;
    }
    return std::shared_ptr<StreamedPicture>(new StreamedPicture(std::move(reader), *map, canvas, kernels));
}

std::shared_ptr<StreamedPicture> StreamedPicture::make(std::unique_ptr<PlaneReader> reader, const LayerDraw& draw,
                                                       PixelSize canvas, const Kernels& kernels) {
    auto maker = std::make_unique<RowsFromPlanes>(std::move(reader), draw, canvas, kernels);
    return std::shared_ptr<StreamedPicture>(new StreamedPicture(std::move(maker), canvas, kernels));
}

StreamedPicture::StreamedPicture(std::unique_ptr<RowReader> reader, const AxisMap& map, PixelSize canvas,
                                 const Kernels& kernels)
    : map_(map)
    , picture_(reader->size())
    , canvas_(canvas)
    , kernels_(kernels)
    , isCopied_(map.isWholePixelShift(picture_))
    , keepsCanvas_(!isCopied_ && bytesOf(canvas) < bytesOf(picture_))
    , pictureRows_(isCopied_ ? copiedRows(map, picture_, canvas) : stretchedRows(map, picture_, canvas))
    , kept_(rowsOf(keepsCanvas_ ? canvas : picture_))
    , isDrawn_(static_cast<std::size_t>(canvas.height)) {
    if (keepsCanvas_) {
        maker_ = std::make_unique<StretchedRows>(std::move(reader), pictureRows_, map, canvas, kernels);
    } else {
        maker_ = std::make_unique<RowsAsRead>(std::move(reader));
    }
}

StreamedPicture::StreamedPicture(std::unique_ptr<RowMaker> maker, PixelSize canvas, const Kernels& kernels)
    : canvas_(canvas)
    , kernels_(kernels)
    , keepsCanvas_(true)
    , maker_(std::move(maker))
    , kept_(rowsOf(canvas))
    , isDrawn_(static_cast<std::size_t>(canvas.height)) {}

std::unique_ptr<Sampler> StreamedPicture::makeSampler(const SampledArea& area) const {
    if (keepsCanvas_) {
        return makeCopySampler(PictureRows(canvas_, kept_.each()), AxisMap{});
    }
    const PictureRows rows(picture_, kept_.each());
    return isCopied_ ? makeCopySampler(rows, map_) : makeMixSampler(rows, map_, area, kernels_);
}

RowRange StreamedPicture::keptFor(int y) const {
    return keepsCanvas_ ? RowRange{y, y + 1} : pictureRows_[static_cast<std::size_t>(y)];
}

void StreamedPicture::claim(int first, int count) {
    assert(first >= 0 && count > 0 && first + count <= canvas_.height);
    const int end = keptFor(first + count - 1).end;
    std::unique_lock lock(mutex_);
    assert(!isDrawn_[static_cast<std::size_t>(first)]);
    while (made_ < end) {
        if (isMaking_) {
            changed_.wait(lock);
        } else {
            makeRows(lock, std::min(end - made_, rowsTogether));
        }
    }
}

void StreamedPicture::release(int first, int count) noexcept {
    const std::lock_guard lock(mutex_);
    std::fill_n(isDrawn_.begin() + first, count, true);
    while (firstNotDrawn_ < canvas_.height && isDrawn_[static_cast<std::size_t>(firstNotDrawn_)]) {
        ++firstNotDrawn_;
    }
    dropDrawn();
}

void StreamedPicture::dropDrawn() noexcept {
    kept_.dropBefore(firstNotDrawn_ < canvas_.height ? std::min(keptFor(firstNotDrawn_).begin, made_) : made_);
}

void StreamedPicture::runAhead(const std::atomic<bool>& isEnough) {
    std::unique_lock lock(mutex_);
    while (!isEnough.load() && !isMaking_ && made_ < keptCount() && kept_.bytes() < bytesKeptAhead) {
        makeRows(lock, std::min(keptCount() - made_, rowsTogether));
    }
}

bool StreamedPicture::finish() {
    const std::lock_guard lock(mutex_);
    isDamaged_ = isDamaged_ || !maker_->finish();
    return !isDamaged_;
}

std::size_t StreamedPicture::mostBytes() const {
    const std::lock_guard lock(mutex_);
    return mostBytes_;
}

/// Others may claim and release meanwhile. What cannot be made is of no matter: nobody uses what is drawn of it.
void StreamedPicture::makeRows(std::unique_lock<std::mutex>& lock, int count) {
    std::array<std::uint8_t*, rowsTogether> rows{};
    const int first = made_;
    count = appendRows(std::span(rows).first(static_cast<std::size_t>(count)));
    mostBytes_ = std::max(mostBytes_, kept_.bytes());
    isMaking_ = true;
    bool isDamaged = isDamaged_;
    lock.unlock();
    {
        trace::Span span("decode rows");
        span.note("first", first);
        span.note("count", count);
        for (int i = 0; i < count; ++i) {
            isDamaged = isDamaged || !maker_->make(first + i, rows[static_cast<std::size_t>(i)]);
        }
    }
    lock.lock();
    isDamaged_ = isDamaged;
    made_ += count;
    dropDrawn();
    isMaking_ = false;
    changed_.notify_all();
}

/// As many as there is memory for, at least one.
int StreamedPicture::appendRows(std::span<std::uint8_t*> rows) {
    std::size_t count = 0;
    try {
        for (; count < rows.size(); ++count) {
            rows[count] = kept_.append();
        }
    } catch (const std::bad_alloc&) {
        if (count == 0) {
            throw;
        }
    }
    return static_cast<int>(count);
}

ClaimedRows::ClaimedRows(const std::vector<std::shared_ptr<StreamedPicture>>& pictures, int first, int count)
    : pictures_(pictures), first_(first), count_(count) {
    for (; claimed_ < pictures_.size(); ++claimed_) {
        pictures_[claimed_]->claim(first, count);
    }
}

ClaimedRows::~ClaimedRows() {
    for (std::size_t i = 0; i < claimed_; ++i) {
        pictures_[i]->release(first_, count_);
    }
}

} // namespace quillomat::raster
