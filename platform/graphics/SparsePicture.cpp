// Rows are looked at in blocks of 16 pixels. Blocks of one colour make a run where there are enough of them; what lies
// between is kept pixel by pixel, in a byte each where it is only white light or black shadow.
#include "platform/graphics/SparsePicture.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstring>
#include <utility>

namespace quillomat {
namespace {

constexpr std::size_t leastBlocksOfOneColor = 4;
constexpr std::size_t pieceBytes = std::size_t{2} << 20; // a large page

void fill(std::uint8_t* out, std::uint32_t color, std::size_t count) {
    if (color == 0) {
        std::memset(out, 0, count * 4);
        return;
    }
    for (std::size_t i = 0; i < count; ++i) {
        std::memcpy(out + i * 4, &color, 4);
    }
}

void spread(std::uint8_t* out, const std::uint8_t* alphas, std::uint32_t unit, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint32_t pixel = alphas[i] * unit;
        std::memcpy(out + i * 4, &pixel, 4);
    }
}

constexpr std::uint32_t whiteUnit = 0x01010101;
constexpr std::uint32_t blackUnit = 0x01000000;

} // namespace

const SparsePicture::Run* SparsePicture::runAt(const Row& row, int x) const {
    // Halved without branches, which would be guessed wrong every other time. The last run ends behind any pixel.
    const Run* first = runs_.data() + row.firstRun;
    for (std::size_t count = row.runCount; count > 1;) {
        const std::size_t half = count / 2;
        first += first[half - 1].right <= static_cast<std::uint32_t>(x) ? half : 0;
        count -= half;
    }
    return first;
}

SparsePicture::Content SparsePicture::contentOf(const Run& run) {
    if (run.isOpaque) {
        return Content::opaque;
    }
    return run.storage == Storage::oneColor && run.value == 0 ? Content::empty : Content::mixed;
}

SparsePicture::Stretch SparsePicture::stretchAt(int y, int x, int right) const {
    const Row& row = this->row(y);
    const Run* run = runAt(row, x);
    const Run* const end = runs_.data() + row.firstRun + row.runCount;
    Stretch stretch{static_cast<int>(run->right), contentOf(*run), nullptr};
    if (run->storage == Storage::whole) {
        const int left = run == runs_.data() + row.firstRun ? 0 : static_cast<int>((run - 1)->right);
        stretch.pixels = row.bytes + run->value + static_cast<std::ptrdiff_t>(x - left) * 4;
    }
    for (++run; stretch.right < right && run != end && contentOf(*run) == stretch.content; ++run) {
        stretch.right = static_cast<int>(run->right);
        stretch.pixels = nullptr;
    }
    stretch.right = std::min(stretch.right, right);
    return stretch;
}

void SparsePicture::copy(int y, int left, int right, std::uint8_t* out) const {
    if (left >= right) {
        return;
    }
    const Row& row = this->row(y);
    const Run* run = runAt(row, left);
    int runLeft = run == runs_.data() + row.firstRun ? 0 : static_cast<int>((run - 1)->right);
    for (; left < right; ++run) {
        const int until = std::min(right, static_cast<int>(run->right));
        const auto count = static_cast<std::size_t>(until - left);
        const auto before = static_cast<std::size_t>(left - runLeft);
        // A run of one colour has no bytes, and its value says the colour.
        const std::uint8_t* const bytes = run->storage == Storage::oneColor ? nullptr : row.bytes + run->value;
        switch (run->storage) {
        case Storage::oneColor:
            fill(out, run->value, count);
            break;
        case Storage::white:
            spread(out, bytes + before, whiteUnit, count);
            break;
        case Storage::black:
            spread(out, bytes + before, blackUnit, count);
            break;
        case Storage::whole:
            std::memcpy(out, bytes + before * 4, count * 4);
            break;
        }
        out += count * 4;
        left = until;
        runLeft = static_cast<int>(run->right);
    }
}

std::size_t SparsePicture::byteCount() const {
    std::size_t sum = runs_.capacity() * sizeof(Run) + rows_.capacity() * sizeof(Row);
    for (const PixelMemory& piece : memory_) {
        sum += piece.size();
    }
    return sum;
}

SparsePictureMaker::SparsePictureMaker(PixelSize size) : picture_(std::make_shared<SparsePicture>()) {
    picture_->size_ = size;
    picture_->rows_.reserve(static_cast<std::size_t>(size.height));
    blocks_.resize(blockCount(static_cast<std::size_t>(size.width)));
}

void SparsePictureMaker::addRow(const std::uint8_t* pixels) {
    classifyBlocks(pixels, static_cast<std::size_t>(picture_->size_.width), blocks_.data());
    makeRuns();
    SparsePicture::Row row;
    row.bytes = store(pixels);
    row.firstRun = picture_->runs_.size();
    row.runCount = row_.size();
    row.widestOpaque = widestOpaque();
    picture_->runs_.insert(picture_->runs_.end(), row_.begin(), row_.end());
    picture_->rows_.push_back(row);
    lastRowIsEmpty_ = row_.size() == 1 && SparsePicture::contentOf(row_.front()) == SparsePicture::Content::empty;
}

void SparsePictureMaker::repeatRow() {
    if (picture_->rows_.empty()) {
        picture_->runs_.push_back({static_cast<std::uint32_t>(picture_->size_.width), 0, Storage::oneColor, false});
        picture_->rows_.push_back({0, 1, nullptr, {}});
        return;
    }
    const SparsePicture::Row last = picture_->rows_.back();
    picture_->rows_.push_back(last);
}

std::shared_ptr<const SparsePicture> SparsePictureMaker::finish() {
    assert(picture_->rows_.size() == static_cast<std::size_t>(picture_->size_.height));
    const int width = picture_->size_.width;
    picture_->isOpaque_ = std::all_of(picture_->rows_.begin(), picture_->rows_.end(), [width](const auto& row) {
        return row.widestOpaque == Columns{0, width};
    });
    picture_->runs_.shrink_to_fit();
    return std::move(picture_);
}

void SparsePictureMaker::makeRuns() {
    row_.clear();
    std::size_t loose = 0;
    for (std::size_t b = 0; b < blocks_.size();) {
        std::size_t end = b + 1;
        if ((blocks_[b].kinds & asOneColor) != 0) {
            while (end < blocks_.size() && (blocks_[end].kinds & asOneColor) != 0 &&
                   blocks_[end].color == blocks_[b].color) {
                ++end;
            }
            const bool fillsRow = b == 0 && end == blocks_.size();
            if (end - b >= leastBlocksOfOneColor || fillsRow) {
                addLooseBlocks(loose, b);
                addRun(end, blocks_[b].kinds, blocks_[b].color);
                loose = end;
            }
        }
        b = end;
    }
    addLooseBlocks(loose, blocks_.size());
}

/// A run goes on as long as its blocks can be stored alike. Opaque ones stand apart, and so do those that a byte a
/// pixel is enough for; but a short gap of nothing goes with whatever surrounds it.
void SparsePictureMaker::addLooseBlocks(std::size_t first, std::size_t last) {
    constexpr std::uint32_t small = asWhite | asBlack;
    std::uint32_t now = 0;
    for (std::size_t b = first; b < last; ++b) {
        const std::uint32_t kinds = blocks_[b].kinds;
        const bool isEmpty = (kinds & asOneColor) != 0 && blocks_[b].color == 0;
        std::uint32_t here = kinds & asOpaque;
        if (here == 0) {
            here = (kinds & small) != 0 ? kinds & small : asWhole;
        }
        if (isEmpty) {
            here |= asWhole;
        }
        if (now != 0 && (now & here) == 0) {
            addRun(b, now, 0);
            now = 0;
        }
        now = now == 0 ? here : now & here;
    }
    if (now != 0) {
        addRun(last, now, 0);
    }
}

void SparsePictureMaker::addRun(std::size_t lastBlock, std::uint32_t kinds, std::uint32_t color) {
    const auto right =
        static_cast<std::uint32_t>(std::min(lastBlock * blockPixels, static_cast<std::size_t>(picture_->size_.width)));
    Storage storage = Storage::whole;
    if ((kinds & asOneColor) != 0) {
        storage = Storage::oneColor;
    } else if ((kinds & asWhite) != 0) {
        storage = Storage::white;
    } else if ((kinds & asBlack) != 0) {
        storage = Storage::black;
    }
    row_.push_back({right, color, storage, (kinds & asOpaque) != 0});
}

const std::uint8_t* SparsePictureMaker::store(const std::uint8_t* pixels) {
    std::size_t bytes = 0;
    std::uint32_t left = 0;
    for (Run& run : row_) {
        const std::size_t count = run.right - std::exchange(left, run.right);
        if (run.storage != Storage::oneColor) {
            run.value = static_cast<std::uint32_t>(bytes);
            bytes += run.storage == Storage::whole ? count * 4 : count;
        }
    }
    if (bytes == 0) {
        return nullptr;
    }
    std::uint8_t* const begin = roomFor(bytes);
    left = 0;
    for (const Run& run : row_) {
        const std::size_t from = std::exchange(left, run.right);
        const std::size_t count = run.right - from;
        std::uint8_t* const to = begin + run.value;
        if (run.storage == Storage::whole) {
            std::memcpy(to, pixels + from * 4, count * 4);
        } else if (run.storage != Storage::oneColor) {
            for (std::size_t i = 0; i < count; ++i) {
                to[i] = pixels[(from + i) * 4 + 3];
            }
        }
    }
    return begin;
}

std::uint8_t* SparsePictureMaker::roomFor(std::size_t bytes) {
    if (bytes > freeBytes_) {
        PixelMemory& piece = picture_->memory_.emplace_back(std::max(bytes, pieceBytes));
        free_ = piece.data();
        freeBytes_ = piece.size();
    }
    freeBytes_ -= bytes;
    return std::exchange(free_, free_ + bytes);
}

Columns SparsePictureMaker::widestOpaque() const {
    Columns widest;
    int begin = 0;
    for (const Run& run : row_) {
        const auto right = static_cast<int>(run.right);
        if (!run.isOpaque) {
            begin = right;
        } else if (right - begin > widest.length()) {
            widest = {begin, right};
        }
    }
    return widest;
}

} // namespace quillomat
