#include "platform/graphics/raster/MixTable.h"
#include "platform/graphics/raster/Pyramid.h"
#include "platform/graphics/raster/Sampler.h"
#include "platform/graphics/raster/StretchAxis.h"

#include <algorithm>

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

/// For backgrounds, which are large and soft: bytes throughout, several times faster.
class MixSampler final : public Sampler {
public:
    MixSampler(const PictureRows& picture, const StretchAxis& across, const StretchAxis& down, const SampledArea& area,
               const Kernels& kernels)
        : picture_(picture)
        , columns_(across.table<std::int8_t>(area.left, area.right, width(), {mixedWhole, 4, 8}), width())
        , rows_(down.table<std::int8_t>(area.top, area.bottom, picture.size.height, mixedRowForm))
        , kernels_(kernels) {}

    void row(int y, int left, int right, std::uint8_t* out, SamplerScratch& scratch) const override {
        if (left >= right) {
            return;
        }
        const Columns columns(columns_.axis(), left, right, width());
        scratch.rows.clear();
        scratch.mixWeights.clear();
        for (int tap = 0; tap < rows_.taps; ++tap) {
            if (rows_.line(y)[tap] != 0) {
                scratch.rows.push_back(picture_.row(rows_.first[rows_.index(y)] + tap));
                scratch.mixWeights.push_back(rows_.line(y)[tap]);
            }
        }
        const std::uint8_t* mixed = scratch.rows.front();
        // A row that is taken as it is needs no copy, where the picture is as wide as what is read at once.
        if (scratch.rows.size() > 1 || width() < columns_.roomOfRow()) {
            scratch.mixed.resize(std::max(scratch.mixed.size(), static_cast<std::size_t>(columns_.roomOfRow()) * 4));
            for (const std::uint8_t*& row : scratch.rows) {
                row += columns.firstByte();
            }
            kernels_.mixRows(scratch.rows.data(), scratch.mixWeights.data(), static_cast<int>(scratch.rows.size()),
                             columns.bytes(), scratch.mixed.data() + columns.firstByte());
            mixed = scratch.mixed.data();
        }
        kernels_.mixColumns(columns_.view(), mixed, static_cast<int>(columns_.axis().index(left)), right - left, out);
    }

private:
    [[nodiscard]] int width() const { return picture_.size.width; }

    PictureRows picture_;
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
