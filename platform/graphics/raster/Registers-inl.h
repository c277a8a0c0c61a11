// The registers that the kernels for wide ones share. Compiled once for each kind of processor, like those who include
// it.
#if defined(QUILLOMAT_RASTER_REGISTERS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QUILLOMAT_RASTER_REGISTERS_INL_H
#undef QUILLOMAT_RASTER_REGISTERS_INL_H
#else
#define QUILLOMAT_RASTER_REGISTERS_INL_H
#endif

#include <hwy/highway.h>

#include <cstdint>

HWY_BEFORE_NAMESPACE();
namespace quillomat::raster {
namespace HWY_NAMESPACE { // NOLINT: the library's own name for each kind of processor

#if HWY_TARGET != HWY_SCALAR

namespace hn = hwy::HWY_NAMESPACE;

using Bytes16 = hn::FixedTag<std::uint8_t, 16>;
using Shorts8 = hn::FixedTag<std::int16_t, 8>;
// Two rows of a footprint at once where registers hold them.
using RowBytes = hn::CappedTag<std::uint8_t, 32>;
using RowShorts = hn::CappedTag<std::int16_t, 16>;

/// Two blocks' numbers added, where registers hold two.
template <class D> HWY_INLINE hn::Vec<Shorts8> foldedRows(D, hn::Vec<D> sums) {
    const Shorts8 half;
    if constexpr (hn::MaxLanes(D()) == 16) {
        return hn::SaturatedAdd(hn::LowerHalf(half, sums), hn::UpperHalf(half, sums));
    } else {
        return sums;
    }
}

#endif

} // namespace HWY_NAMESPACE
} // namespace quillomat::raster
HWY_AFTER_NAMESPACE();

#endif
