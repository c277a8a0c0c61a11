// Positions of projected pictures in wide registers; each gives the bits of the scalar twin.
#include "platform/graphics/raster/Kernels.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/graphics/raster/PositionKernels.cpp"
#include <hwy/foreach_target.h>
// After foreach_target.h, which compiles this file once for each kind of processor.
#include "platform/graphics/raster/Registers-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quillomat::raster {
namespace HWY_NAMESPACE { // NOLINT: the library's own name for each kind of processor

#if HWY_TARGET != HWY_SCALAR

void projectPositions(const ProjectedRow& row, int left, int count, std::int32_t* u, std::int32_t* v) {
    const hn::ScalableTag<double> d;
    const hn::Rebind<std::int32_t, decltype(d)> d32;
    const auto lanes = static_cast<int>(hn::Lanes(d));
    const auto lowest = hn::Set(d, lowestPosition);
    const auto half = hn::Set(d, 0.5);
    const auto whole = hn::Set(d32, static_cast<std::int32_t>(lowestPosition));
    const auto position = [&](auto x, auto inverse, double step, double start, double highest) {
        const auto at = hn::Mul(hn::Add(hn::Mul(x, hn::Set(d, step)), hn::Set(d, start)), inverse);
        const auto most = hn::Set(d, highest);
        const auto raised = hn::IfThenElse(hn::Gt(at, lowest), at, lowest);
        const auto bounded = hn::IfThenElse(hn::Lt(raised, most), raised, most);
        return hn::Add(hn::DemoteTo(d32, hn::Add(hn::Sub(bounded, lowest), half)), whole);
    };
    int i = 0;
    for (; i + lanes <= count; i += lanes) {
        // Small whole numbers and halves: exact, in whatever order they are added.
        const auto x = hn::Iota(d, left + 0.5 + i);
        const auto inverse = hn::Div(hn::Set(d, 1.0), hn::Add(hn::Mul(x, hn::Set(d, row.wStep)), hn::Set(d, row.w0)));
        hn::StoreU(position(x, inverse, row.uStep, row.u0, row.highestU), d32, u + i);
        hn::StoreU(position(x, inverse, row.vStep, row.v0, row.highestV), d32, v + i);
    }
    scalarKernels().projectPositions(row, left + i, count - i, u + i, v + i);
}

#endif

} // namespace HWY_NAMESPACE
} // namespace quillomat::raster
HWY_AFTER_NAMESPACE();
