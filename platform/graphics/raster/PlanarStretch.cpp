#include "platform/graphics/raster/PlanarStretch.h"

#include <algorithm>
#include <cassert>
#include <cstring>

namespace quillomat::raster {

namespace {

// Drawn less than half as large again as this, a picture is no cheaper in planes than in pixels.
constexpr double largestScale = 2.0 / 3;

std::size_t roundedUp(std::size_t bytes) {
    return (bytes + PlanarPicture::alignment - 1) / PlanarPicture::alignment * PlanarPicture::alignment;
}

std::optional<AxisMap> shrinkingMap(const LayerDraw& draw, PixelSize picture) {
    const auto map = axisMap(pictureToCanvas(draw, picture));
    const bool isShrunk = map && map->scaleX > 0 && map->scaleX <= largestScale && map->scaleY > 0 &&
                          map->scaleY <= largestScale && draw.filter == PictureFilter::smooth;
    return isShrunk ? map : std::nullopt;
}

bool isHalved(double origin, double scale) {
    return StretchAxis(origin, scale, PictureFilter::smooth).level() > 0;
}

PlaneAxis axisAcross(const PlanarLayout& layout, Plane plane) {
    return plane == Plane::luma ? PlaneAxis{layout.size.width, layout.part.x, 1}
                                : PlaneAxis{layout.chromaSize().width, layout.part.x, layout.across};
}

PlaneAxis axisDown(const PlanarLayout& layout, Plane plane) {
    return plane == Plane::luma ? PlaneAxis{layout.size.height, layout.part.y, 1}
                                : PlaneAxis{layout.chromaSize().height, layout.part.y, layout.down};
}

PlaneTable columnsFor(const PlanarLayout& layout, Plane plane, const AxisMap& map, const SampledArea& area) {
    return PlaneTable(
        StretchAxis(map.originX, map.scaleX, PictureFilter::smooth)
            .table<std::int8_t>(area.left, area.right, layout.part.width, axisAcross(layout, plane), PlaneTable::form));
}

AxisTable<std::int8_t> rowsFor(const PlanarLayout& layout, Plane plane, const AxisMap& map, const SampledArea& area) {
    return StretchAxis(map.originY, map.scaleY, PictureFilter::smooth)
        .table<std::int8_t>(area.top, area.bottom, layout.part.height, axisDown(layout, plane), mixedRowForm);
}

} // namespace

bool mayBeStretchedFromPlanes(const LayerDraw& draw) {
    return !draw.picture.pixelSize().isEmpty() && shrinkingMap(draw, draw.picture.pixelSize());
}

bool isStretchedFromPlanes(const LayerDraw& draw, PixelSize picture, PixelSize canvas) {
    const auto map = shrinkingMap(draw, picture);
    return map && !isHalved(map->originX, map->scaleX) && !isHalved(map->originY, map->scaleY) &&
           canvas.area() < picture.area();
}

PlaneTable::PlaneTable(AxisTable<std::int8_t> axis) : axis_(std::move(axis)) {
    for (const std::int32_t first : axis_.first) {
        room_ = std::max(room_, first + axis_.taps);
    }
    if (!groupColumns()) {
        groups_.clear();
    }
}

PlaneColumns PlaneTable::view() const {
    PlaneColumns columns{axis_.taps, axis_.first.data(), axis_.weights.data()};
    if (!groups_.empty()) {
        columns.groups = groups_.data();
        columns.groupWeights = groupWeights_.data();
        columns.steps = steps_;
    }
    return columns;
}

PlaneTable::Samples PlaneTable::samplesOf(int left, int right) const {
    return {axis_.first[static_cast<std::size_t>(left)], axis_.first[static_cast<std::size_t>(right - 1)] + axis_.taps};
}

/// Near the picture's right edge a column's weights stand behind zeros, which groups leave out.
bool PlaneTable::groupColumns() {
    std::vector<std::int32_t> firsts(axis_.first);
    std::vector<int> behind(firsts.size()); // the taps that weigh anything
    int taps = 1;
    for (std::size_t column = 0; column < firsts.size(); ++column) {
        const UsedTaps used(axis_, column);
        behind[column] = used.to;
        taps = std::max(taps, used.count());
    }
    steps_ = (taps + planeGroupTaps - 1) / planeGroupTaps;
    for (std::size_t column = 0; column < firsts.size(); ++column) {
        firsts[column] += std::max(0, behind[column] - steps_ * planeGroupTaps);
    }
    for (std::size_t from = 0; from < firsts.size(); from += planeGroupColumns) {
        if (!addGroup(firsts, from)) {
            return false;
        }
    }
    addGroupWeights(firsts);
    return true;
}

bool PlaneTable::addGroup(const std::vector<std::int32_t>& firsts, std::size_t from) {
    const std::size_t to = std::min(from + planeGroupColumns, firsts.size());
    const auto at = [&](std::size_t column) { return firsts.begin() + static_cast<std::ptrdiff_t>(column); };
    const auto [lowest, highest] = std::minmax_element(at(from), at(to));
    if (*highest - *lowest + planeGroupTaps > planeWindow) {
        return false;
    }
    PlaneGroup& group = groups_.emplace_back();
    group.base = *lowest;
    for (std::size_t column = from; column < to; ++column) {
        group.offsets[column - from] = static_cast<std::uint8_t>(firsts[column] - group.base);
    }
    room_ = std::max(room_, group.base + (steps_ - 1) * planeGroupTaps + planeWindow);
    return true;
}

void PlaneTable::addGroupWeights(const std::vector<std::int32_t>& firsts) {
    constexpr std::size_t together = planeGroupColumns;
    constexpr std::size_t atOnce = planeGroupTaps;
    const auto steps = static_cast<std::size_t>(steps_);
    const auto taps = static_cast<std::size_t>(axis_.taps);
    groupWeights_.assign(groups_.size() * steps * together * atOnce, 0);
    for (std::size_t column = 0; column < firsts.size(); ++column) {
        const auto skipped = static_cast<std::size_t>(firsts[column] - axis_.first[column]);
        const std::int8_t* weights = axis_.weights.data() + column * taps + skipped;
        assert(skipped + steps * atOnce <= taps);
        std::size_t place = (column / together * steps * together + column % together) * atOnce;
        for (std::size_t step = 0; step < steps; ++step, place += together * atOnce) {
            std::memcpy(&groupWeights_[place], weights + step * atOnce, atOnce);
        }
    }
}

PlanarSampler::PlanarSampler(const std::shared_ptr<const PlanarPicture>& picture, const LayerDraw& draw,
                             const SampledArea& area, const Kernels& kernels)
    : PlanarSampler(picture, *axisMap(pictureToCanvas(draw, picture->size())), area, kernels) {}

PlanarSampler::PlanarSampler(std::shared_ptr<const PlanarPicture> picture, const AxisMap& map, const SampledArea& area,
                             const Kernels& kernels)
    : picture_(std::move(picture))
    , left_(area.left)
    , lumaColumns_(columnsFor(picture_->layout(), Plane::luma, map, area))
    , chromaColumns_(columnsFor(picture_->layout(), Plane::blueChroma, map, area))
    , lumaRows_(rowsFor(picture_->layout(), Plane::luma, map, area))
    , chromaRows_(rowsFor(picture_->layout(), Plane::blueChroma, map, area))
    , kernels_(kernels) {}

PlanarSampler::LumaRows PlanarSampler::lumaRows(int y) const {
    const PlanarLayout& layout = picture_->layout();
    LumaRows rows{layout.size.height, 0};
    for (const Plane plane : {Plane::luma, Plane::blueChroma}) {
        const AxisTable<std::int8_t>& table = rowsOf(plane);
        const UsedTaps used(table, table.index(y));
        const int down = plane == Plane::luma ? 1 : layout.down;
        const int first = table.first[table.index(y)];
        rows.begin = std::min(rows.begin, (first + used.from) * down);
        rows.end = std::max(rows.end, std::min((first + used.to) * down, layout.size.height));
    }
    return rows;
}

std::size_t PlanarSampler::placeOf(Plane plane) const {
    const PlanarLayout& layout = picture_->layout();
    const auto bytes = [&](Plane of) {
        return roundedUp(static_cast<std::size_t>(std::max(columnsOf(of).room(), layout.roomOf(of))));
    };
    return plane == Plane::luma ? 0 : bytes(Plane::luma) + (plane == Plane::redChroma ? bytes(plane) : 0);
}

void PlanarSampler::row(int y, int left, int right, std::uint8_t* out, SamplerScratch& scratch) const {
    if (left >= right) {
        return;
    }
    const std::size_t bytes = placeOf(Plane::redChroma) * 2 + PlanarPicture::alignment;
    if (scratch.mixedPlanes.size() < bytes) {
        scratch.mixedPlanes.resize(bytes);
    }
    const std::size_t misplaced =
        reinterpret_cast<std::uintptr_t>(scratch.mixedPlanes.data()) % PlanarPicture::alignment;
    std::uint8_t* const memory =
        scratch.mixedPlanes.data() + (PlanarPicture::alignment - misplaced) % PlanarPicture::alignment;
    const auto mixed = [&](Plane plane) {
        return mixRows(plane, y, left - left_, right - left_, memory + placeOf(plane));
    };
    const PlanarRow row{mixed(Plane::luma), mixed(Plane::blueChroma), mixed(Plane::redChroma)};
    kernels_.mixPlaneColumns(lumaColumns_.view(), chromaColumns_.view(), row, left - left_, right - left, out);
}

int PlanarSampler::rowCount(Plane plane) const {
    const PlanarLayout& layout = picture_->layout();
    return plane == Plane::luma ? layout.size.height : layout.chromaSize().height;
}

/// Whole lines of the cache, as far as the columns [left, right) take samples of them.
const std::uint8_t* PlanarSampler::mixRows(Plane plane, int y, int left, int right, std::uint8_t* memory) const {
    const AxisTable<std::int8_t>& table = rowsOf(plane);
    const PlaneTable::Samples samples = columnsOf(plane).samplesOf(left, right);
    const std::size_t room = roundedUp(static_cast<std::size_t>(picture_->layout().roomOf(plane)));
    const std::size_t from =
        static_cast<std::size_t>(samples.from) / PlanarPicture::alignment * PlanarPicture::alignment;
    const std::size_t to = std::min(roundedUp(static_cast<std::size_t>(samples.to)), room);
    const UsedTaps used(table, table.index(y));
    const int first = table.first[table.index(y)];
    const bool isLast = table.index(y + 1) >= table.first.size();
    const int nextFirst = isLast ? first : table.first[table.index(y + 1)];
    const int behind = std::min(first + table.taps, rowCount(plane));
    const int behindNext = std::min(nextFirst + table.taps, rowCount(plane));
    const std::uint8_t* const* const rows = picture_->rows(plane);
    const PlaneRows mixed{rows + first + used.from, table.line(y) + used.from, used.count(), rows + behind,
                          behindNext - behind};
    kernels_.mixPlaneRows(mixed, static_cast<int>(from), static_cast<int>(to), memory);
    return memory;
}

} // namespace quillomat::raster
