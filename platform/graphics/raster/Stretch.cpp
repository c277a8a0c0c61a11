#include "platform/graphics/raster/MixTable.h"
#include "platform/graphics/raster/MixedLines.h"
#include "platform/graphics/raster/Pyramid.h"
#include "platform/graphics/raster/Sampler.h"
#include "platform/graphics/raster/StretchAxis.h"

#include <algorithm>
#include <cstring>

namespace quillomat::raster {

namespace {

constexpr TableForm preciseForm{16384, 2, 2};

/// The picture's columns that canvas columns take.
struct Columns {
    int from = 0;
    int to = 0;

    template <typename Weight> Columns(const AxisTable<Weight>& table, int left, int right, int width) {
        const std::int32_t first = table.first[table.index(left)];
        const std::int32_t last = table.first[table.index(right - 1)];
        from = std::min(first, last);
        to = std::min(std::max(first, last) + table.taps, width);
    }

    [[nodiscard]] std::size_t firstByte() const { return static_cast<std::size_t>(from) * 4; }
    [[nodiscard]] int bytes() const { return (to - from) * 4; }
};

/// For screenshots: sums of 16 bits and more. Rows are combined first, then columns: no row is kept, so bands need not
/// know each other.
class StretchSampler final : public Sampler {
public:
    StretchSampler(std::shared_ptr<const Pyramid> picture, const StretchAxis& across, const StretchAxis& down,
                   const SampledArea& area, const Kernels& kernels)
        : pyramid_(std::move(picture))
        , view_(pyramid_->level(across.level(), down.level()))
        , columns_(across.table<std::int16_t>(area.left, area.right, view_.width, preciseForm))
        , rows_(down.table<std::int16_t>(area.top, area.bottom, view_.height, preciseForm))
        , kernels_(kernels) {}

    void row(int y, int left, int right, std::uint8_t* out, SamplerScratch& scratch) const override {
        if (left >= right) {
            return;
        }
        const Columns columns(columns_, left, right, view_.width);
        // One pixel more than the picture has, for the taps that are made up.
        scratch.combined.resize((static_cast<std::size_t>(view_.width) + 1) * 4);
        scratch.rows.clear();
        scratch.weights.clear();
        for (int tap = 0; tap < rows_.taps; ++tap) {
            if (rows_.line(y)[tap] != 0) {
                const auto row = static_cast<std::size_t>(rows_.first[rows_.index(y)] + tap);
                scratch.rows.push_back(view_.pixels + row * view_.stride + columns.firstByte());
                scratch.weights.push_back(rows_.line(y)[tap]);
            }
        }
        kernels_.combineRows(scratch.rows.data(), scratch.weights.data(), static_cast<int>(scratch.rows.size()),
                             columns.bytes(), scratch.combined.data() + columns.firstByte());
        kernels_.combineColumns(scratch.combined.data(), columns_.first.data() + columns_.index(left),
                                columns_.line(left), columns_.taps, right - left, out);
    }

private:
    std::shared_ptr<const Pyramid> pyramid_;
    PixelView view_;
    AxisTable<std::int16_t> columns_;
    AxisTable<std::int16_t> rows_;
    const Kernels& kernels_;
};

/// For backgrounds, which are large and soft: bytes throughout, several times faster. Columns are mixed first, so that
/// a picture's rows are read one after the other, and each once for all the canvas rows that share it: a band of rows
/// mixes its first ones' again, and need not know the others.
class MixSampler final : public Sampler {
public:
    MixSampler(const PictureRows& picture, const StretchAxis& across, const StretchAxis& down, const SampledArea& area,
               const Kernels& kernels)
        : picture_(picture)
        , left_(area.left)
        , columns_(across.table<std::int8_t>(area.left, area.right, width(), {mixedWhole, 4, 8}), width())
        , rows_(down.table<std::int8_t>(area.top, area.bottom, picture.size.height, mixedRowForm))
        , kernels_(kernels) {}

    void row(int y, int left, int right, std::uint8_t* out, SamplerScratch& scratch) const override {
        if (left >= right) {
            return;
        }
        const std::int8_t* weights = rows_.line(y);
        const int first = rows_.first[rows_.index(y)];
        if (const int whole = onlyTap(weights); whole >= 0) {
            mixColumns(first + whole, left - left_, right - left_, /*isCut=*/true, out, scratch);
            return;
        }
        MixedLines& lines = scratch.linesOf(this);
        lines.prepare(rows_.taps, columns_.columns());
        scratch.rows.clear();
        scratch.mixWeights.clear();
        for (int tap = 0; tap < rows_.taps; ++tap) {
            if (weights[tap] != 0) {
                const int row = first + tap;
                const auto mix = [&](int from, int to, std::uint8_t* pixels) {
                    mixColumns(row, from, to, /*isCut=*/false, pixels, scratch);
                };
                scratch.rows.push_back(lines.columnsOf(row, left - left_, right - left_, mix));
                scratch.mixWeights.push_back(weights[tap]);
            }
        }
        kernels_.mixRows(scratch.rows.data(), scratch.mixWeights.data(), static_cast<int>(scratch.rows.size()),
                         right - left, out);
    }

private:
    /// The one tap of a row that is taken as it is, or -1.
    [[nodiscard]] int onlyTap(const std::int8_t* weights) const {
        const std::int8_t* whole = std::find(weights, weights + rows_.taps, std::int8_t{mixedWhole});
        const auto others = std::count(weights, weights + rows_.taps, std::int8_t{0});
        return others == rows_.taps - 1 && whole != weights + rows_.taps ? static_cast<int>(whole - weights) : -1;
    }

    /// Canvas columns of a picture's row, counted from the area's left.
    void mixColumns(int row, int from, int to, bool isCut, std::uint8_t* out, SamplerScratch& scratch) const {
        MixedRow mixed{picture_.row(row), picture_.rowToFetch(row + 1)};
        if (width() < columns_.roomOfRow()) {
            scratch.widened.resize(
                std::max(scratch.widened.size(), static_cast<std::size_t>(columns_.roomOfRow()) * 4));
            std::memcpy(scratch.widened.data(), mixed.pixels, static_cast<std::size_t>(width()) * 4);
            mixed = {scratch.widened.data(), nullptr};
        }
        kernels_.mixColumns(columns_.view(), mixed, from, to - from, isCut, out);
    }

    [[nodiscard]] int width() const { return picture_.size.width; }

    PictureRows picture_;
    int left_;
    MixTable columns_;
    AxisTable<std::int8_t> rows_;
    const Kernels& kernels_;
};

} // namespace

std::unique_ptr<Sampler> makeMixSampler(const PictureRows& picture, const AxisMap& map, const SampledArea& area,
                                        const Kernels& kernels) {
    const StretchAxis across(map.originX, map.scaleX, PictureFilter::smooth);
    const StretchAxis down(map.originY, map.scaleY, PictureFilter::smooth);
    return std::make_unique<MixSampler>(picture, across, down, area, kernels);
}

std::unique_ptr<Sampler> makeStretchSampler(std::shared_ptr<const Pyramid> picture, const AxisMap& map,
                                            PictureFilter filter, const SampledArea& area, const Kernels& kernels) {
    const StretchAxis across(map.originX, map.scaleX, filter);
    const StretchAxis down(map.originY, map.scaleY, filter);
    if (filter == PictureFilter::smooth) {
        const PixelView level = picture->level(across.level(), down.level());
        return std::make_unique<MixSampler>(PictureRows(std::move(picture), level), across, down, area, kernels);
    }
    return std::make_unique<StretchSampler>(std::move(picture), across, down, area, kernels);
}

} // namespace quillomat::raster
