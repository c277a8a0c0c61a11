// A photograph's planes stretched smaller, each at its own size, straight to the canvas's pixels: as good as stretching
// the decoded picture, for less work.
//
// Rows first, then columns: bytes that lie side by side, and rows of the canvas that need not know each other. Chroma
// is weighed as if it had been enlarged to the luma's size by the triangle filter with which pictures are decoded.
#pragma once

#include "platform/graphics/PlanarPicture.h"
#include "platform/graphics/raster/Kernels.h"
#include "platform/graphics/raster/Sampler.h"
#include "platform/graphics/raster/StretchAxis.h"

#include <memory>
#include <vector>

namespace quillomat::raster {

/// Whether that is how a picture of so many pixels is to be drawn, where it is to be had in planes: much smaller, along
/// the axes, upright and smooth, on a canvas smaller than it.
[[nodiscard]] bool isStretchedFromPlanes(const LayerDraw& draw, PixelSize picture, PixelSize canvas);
/// Whether it may turn out so: how far the picture is reduced while it is decoded is not known yet.
[[nodiscard]] bool mayBeStretchedFromPlanes(const LayerDraw& draw);

/// A plane's columns as the kernels read them: one by one, and sixteen at a time.
class PlaneTable {
public:
    static constexpr TableForm form{mixedWhole, planeTapsTogether, planeTapsTogether};

    explicit PlaneTable(AxisTable<std::int8_t> axis);

    [[nodiscard]] PlaneColumns view() const;
    /// The samples that columns [left, right) take, counted from the table's first column.
    struct Samples {
        int from = 0;
        int to = 0;
    };
    [[nodiscard]] Samples samplesOf(int left, int right) const;
    /// How many samples a row needs room for; what those hold that the plane does not have does not matter.
    [[nodiscard]] int room() const { return room_; }

private:
    [[nodiscard]] bool groupColumns();
    [[nodiscard]] bool addGroup(const std::vector<std::int32_t>& firsts, std::size_t from);
    void addGroupWeights(const std::vector<std::int32_t>& firsts);

    AxisTable<std::int8_t> axis_;
    std::vector<PlaneGroup> groups_;
    std::vector<std::int8_t> groupWeights_;
    int steps_ = 0;
    int room_ = 0;
};

/// Asked for a row it reads the picture's rows that the row takes: no others need be there.
class PlanarSampler final : public Sampler {
public:
    PlanarSampler(const std::shared_ptr<const PlanarPicture>& picture, const LayerDraw& draw, const SampledArea& area,
                  const Kernels& kernels);

    void row(int y, int left, int right, std::uint8_t* out, SamplerScratch& scratch) const override;

    /// The rows of the luma that a canvas row takes, and those beside the chroma that it takes.
    struct LumaRows {
        int begin = 0;
        int end = 0;
    };
    [[nodiscard]] LumaRows lumaRows(int y) const;

private:
    PlanarSampler(std::shared_ptr<const PlanarPicture> picture, const AxisMap& map, const SampledArea& area,
                  const Kernels& kernels);
    [[nodiscard]] const AxisTable<std::int8_t>& rowsOf(Plane plane) const {
        return plane == Plane::luma ? lumaRows_ : chromaRows_;
    }
    [[nodiscard]] const PlaneTable& columnsOf(Plane plane) const {
        return plane == Plane::luma ? lumaColumns_ : chromaColumns_;
    }
    /// Where a plane's mixed row begins in the memory for them.
    [[nodiscard]] std::size_t placeOf(Plane plane) const;
    [[nodiscard]] int rowCount(Plane plane) const;
    const std::uint8_t* mixRows(Plane plane, int y, int left, int right, std::uint8_t* memory) const;

    std::shared_ptr<const PlanarPicture> picture_;
    int left_;
    PlaneTable lumaColumns_;
    PlaneTable chromaColumns_;
    AxisTable<std::int8_t> lumaRows_;
    AxisTable<std::int8_t> chromaRows_;
    const Kernels& kernels_;
};

} // namespace quillomat::raster
