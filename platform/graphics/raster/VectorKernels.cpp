// The table of the kernels for wide registers, one source for every kind of processor: PositionKernels.cpp,
// FootprintKernels.cpp, LineKernels.cpp, StretchKernels.cpp, PlanarKernels.cpp and CompositeKernels.cpp.
#include "platform/graphics/raster/Kernels.h"

#include "platform/graphics/ProcessorTarget.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/graphics/raster/VectorKernels.cpp"
#include <hwy/foreach_target.h>
// After foreach_target.h, which compiles this file once for each kind of processor.
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace quillomat::raster {
namespace HWY_NAMESPACE { // NOLINT: the library's own name for each kind of processor

#if HWY_TARGET == HWY_SCALAR

const Kernels& kernelsOfTarget() {
    return scalarKernels();
}

#else

void projectPositions(const ProjectedRow& row, int left, int count, std::int32_t* u, std::int32_t* v);
void filterFootprint(const Footprint& footprint, const std::int32_t* u, const std::int32_t* v, int count,
                     std::uint8_t* out);
void filterAlongCurve(const Footprint& footprint, const CurvedRow& row, int first, int count, std::uint8_t* out);
void sumFootprint(const Footprint& footprint, const std::int32_t* u, const std::int32_t* v, int count,
                  std::int32_t* sums);
void sumAlongCurve(const Footprint& footprint, const CurvedRow& row, int first, int count, std::int32_t* sums);
void filterAlongLine(const LineFootprint& footprint, const PictureLine& line, const LineCurve& curve, int first,
                     int count, std::uint8_t* out);
void averageParts(const std::int32_t* sums, PixelParts parts, int count, std::uint8_t* out);
void combineRows(const std::uint8_t* const* rows, const std::int16_t* weights, int taps, int count, std::int16_t* out);
void combineColumns(const std::int16_t* row, const std::int32_t* first, const std::int16_t* weights, int taps,
                    int count, std::uint8_t* out);
void mixRows(const std::uint8_t* const* rows, const std::int8_t* weights, int taps, int count, std::uint8_t* out);
void mixColumns(const MixedColumns& columns, const MixedRow& row, int from, int count, bool isCut, std::uint8_t* out);
void mixPlaneRows(const PlaneRows& rows, int from, int to, std::uint8_t* out);
void mixPlaneColumns(const PlaneColumns& luma, const PlaneColumns& chroma, const PlanarRow& row, int from, int count,
                     std::uint8_t* out);
void compositeCovered(std::uint8_t* canvas, const std::uint8_t* pixels, const std::uint8_t* coverage, int count);
void compositeUniform(std::uint8_t* canvas, const std::uint8_t* pixels, int coverage, int count);

const Kernels& kernelsOfTarget() {
    static constexpr Kernels kernels{"vector",     projectPositions, filterFootprint,  filterAlongCurve,
                                     sumFootprint, sumAlongCurve,    filterAlongLine,  averageParts,
                                     combineRows,  combineColumns,   mixRows,          mixColumns,
                                     mixPlaneRows, mixPlaneColumns,  compositeCovered, compositeUniform};
    return kernels;
}

#endif

} // namespace HWY_NAMESPACE
} // namespace quillomat::raster
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quillomat::raster {

const Kernels& bestKernels() {
    return QUILLOMAT_DISPATCH(kernelsOfTarget)();
}

} // namespace quillomat::raster
#endif
