#include "platform/graphics/PlanarPicture.h"

#include <algorithm>

namespace quillomat {

namespace {

constexpr std::array planes{Plane::luma, Plane::blueChroma, Plane::redChroma};
// A sample of chroma beside the part's edge and the two of luma that it stands for.
constexpr int samplesBeside = 2;

std::size_t strideOf(const PlanarLayout& layout, Plane plane) {
    const auto room = static_cast<std::size_t>(layout.roomOf(plane));
    return (room + PlanarPicture::alignment - 1) / PlanarPicture::alignment * PlanarPicture::alignment;
}

std::size_t stripBytes(const PlanarLayout& layout) {
    std::size_t bytes = 0;
    for (const Plane plane : planes) {
        bytes += strideOf(layout, plane) * static_cast<std::size_t>(layout.rowsTogetherOf(plane));
    }
    return bytes;
}

int stripsOf(int rows, const PlanarLayout& layout) {
    return (rows + layout.rowsTogether - 1) / layout.rowsTogether;
}

/// Rows whose columns beside the part would take more memory than the part has as pixels.
bool takesMoreThanPixels(const PlanarLayout& layout) {
    constexpr std::size_t bytesPerPixel = 4;
    return stripBytes(layout) >
           static_cast<std::size_t>(layout.part.width) * bytesPerPixel * static_cast<std::size_t>(layout.rowsTogether);
}

/// No more columns than the part needs.
class NarrowedReader final : public PlaneReader {
public:
    explicit NarrowedReader(PlaneReader& reader) : reader_(reader), layout_(reader.layout()), strip_(layout_) {
        const int beside = std::max(layout_.part.x - samplesBeside, 0);
        left_ = beside / layout_.across * layout_.across;
        const int right = std::min(layout_.part.x + layout_.part.width + samplesBeside, layout_.size.width);
        layout_.part.x -= left_;
        layout_.size.width = right - left_;
        layout_.lumaRoom = layout_.size.width;
        layout_.chromaRoom = layout_.chromaSize().width;
    }

    [[nodiscard]] const PlanarLayout& layout() const override { return layout_; }

    [[nodiscard]] bool read(const PlaneStrip& strip) override {
        const int first = strip_.end();
        strip_.dropBefore(first);
        if (!strip_.append(reader_)) {
            return false;
        }
        for (const Plane plane : planes) {
            const int step = plane == Plane::luma ? 1 : layout_.across;
            const int top = first / layout_.rowsTogether * layout_.rowsTogetherOf(plane);
            for (int row = 0; row < layout_.rowsTogetherOf(plane); ++row) {
                std::copy_n(strip_.rows(plane)[top + row] + left_ / step, layout_.roomOf(plane),
                            strip[static_cast<std::size_t>(plane)][static_cast<std::size_t>(row)]);
            }
        }
        return true;
    }

    [[nodiscard]] bool finish() override { return reader_.finish(); }

private:
    PlaneReader& reader_;
    PlanarLayout layout_;
    PlanarPicture strip_;
    int left_ = 0;
};

std::shared_ptr<const PlanarPicture> wholePictureOf(PlaneReader& reader) {
    const PlanarLayout& layout = reader.layout();
    const int first = std::max(layout.part.y - samplesBeside, 0);
    const int end = std::min(layout.part.y + layout.part.height + samplesBeside, layout.size.height);
    const int above = first / layout.rowsTogether * layout.rowsTogether;
    auto picture = std::make_shared<PlanarPicture>(layout, end - above);
    while (picture->end() < end) {
        picture->dropBefore(first);
        if (!picture->append(reader)) {
            return nullptr;
        }
    }
    return reader.finish() ? picture : nullptr;
}

} // namespace

PlanarPicture::PlanarPicture(const PlanarLayout& layout, int rowsAtOnce)
    : layout_(layout), stripsAtOnce_(std::max(1, stripsOf(rowsAtOnce, layout))) {
    for (const Plane plane : planes) {
        const int rows = stripsOf(layout.size.height, layout) * layout.rowsTogetherOf(plane);
        rows_[static_cast<std::size_t>(plane)].resize(static_cast<std::size_t>(rows));
    }
}

void PlanarPicture::takeMemory() {
    const auto strips = static_cast<std::size_t>(stripsAtOnce_);
    const PixelMemory& memory = memory_.emplace_back(stripBytes(layout_) * strips + alignment);
    const std::size_t misplaced = reinterpret_cast<std::uintptr_t>(memory.data()) % alignment;
    std::uint8_t* at = memory.data() + (alignment - misplaced) % alignment;
    for (std::size_t i = 0; i < strips; ++i) {
        PlaneStrip& strip = free_.emplace_back();
        for (const Plane plane : planes) {
            for (int row = 0; row < layout_.rowsTogetherOf(plane); ++row, at += strideOf(layout_, plane)) {
                strip[static_cast<std::size_t>(plane)].push_back(at);
            }
        }
    }
    std::reverse(free_.begin(), free_.end()); // rows lie in their order
}

bool PlanarPicture::append(PlaneReader& reader) {
    if (free_.empty()) {
        takeMemory();
    }
    kept_.push_back(std::move(free_.back()));
    free_.pop_back();
    const PlaneStrip& strip = kept_.back();
    for (std::size_t plane = 0; plane < planeCount; ++plane) {
        std::copy(strip[plane].begin(), strip[plane].end(),
                  rows_[plane].begin() + static_cast<std::ptrdiff_t>(strip[plane].size()) * strips_);
    }
    ++strips_;
    return reader.read(strip);
}

void PlanarPicture::dropBefore(int row) {
    const int last = std::min(row / layout_.rowsTogether, strips_);
    const int dropped = std::max(last - firstStrip_, 0);
    const auto end = kept_.begin() + dropped;
    for (const Plane plane : planes) {
        const std::ptrdiff_t rows = layout_.rowsTogetherOf(plane);
        std::fill_n(rows_[static_cast<std::size_t>(plane)].begin() + firstStrip_ * rows, dropped * rows, nullptr);
    }
    std::move(kept_.begin(), end, std::back_inserter(free_));
    kept_.erase(kept_.begin(), end);
    firstStrip_ += dropped;
}

std::shared_ptr<const PlanarPicture> planarPictureOf(PlaneReader& reader) {
    if (takesMoreThanPixels(reader.layout())) {
        NarrowedReader narrowed(reader);
        return wholePictureOf(narrowed);
    }
    return wholePictureOf(reader);
}

} // namespace quillomat
