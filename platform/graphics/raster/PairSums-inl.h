// Products added to sums, for the loops that weigh pixels. Compiled once for each kind of processor, like those who
// include it.
#if defined(QUILLOMAT_RASTER_PAIR_SUMS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QUILLOMAT_RASTER_PAIR_SUMS_INL_H
#undef QUILLOMAT_RASTER_PAIR_SUMS_INL_H
#else
#define QUILLOMAT_RASTER_PAIR_SUMS_INL_H
#endif

#include "platform/graphics/raster/Registers-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quillomat::raster {
namespace HWY_NAMESPACE { // NOLINT: the library's own name for each kind of processor

#if HWY_TARGET != HWY_SCALAR

#if HWY_TARGET == HWY_AVX3_DL
// These processors add pairs of products to a sum at once, which the library does not ask the compiler for. Clang would
// not add that to what is asked for around it, so all of it is asked for anew, here and by whoever calls this.
HWY_POP_ATTRIBUTES
HWY_PUSH_ATTRIBUTES(HWY_TARGET_STR ",avx512vnni")
#endif

/// Sums of pairs of 16-bit products, in whatever order the processor adds them.
template <class D32> class PairSums {
public:
    using D16 = hn::Repartition<std::int16_t, D32>;

    HWY_INLINE PairSums() : sum_(hn::Zero(D32())), rest_(hn::Zero(D32())) {}
    HWY_INLINE void add(hn::Vec<D16> a, hn::Vec<D16> b) {
#if HWY_TARGET == HWY_AVX3_DL
        if constexpr (hn::MaxLanes(D32()) == 16) {
            sum_ = hn::Vec<D32>{_mm512_dpwssd_epi32(sum_.raw, a.raw, b.raw)};
        } else if constexpr (hn::MaxLanes(D32()) == 8) {
            sum_ = hn::Vec<D32>{_mm256_dpwssd_epi32(sum_.raw, a.raw, b.raw)};
        } else {
            sum_ = hn::Vec<D32>{_mm_dpwssd_epi32(sum_.raw, a.raw, b.raw)};
        }
#else
        sum_ = hn::ReorderWidenMulAccumulate(D32(), a, b, sum_, rest_);
#endif
    }
    [[nodiscard]] HWY_INLINE hn::Vec<D32> total() const {
        return hn::RearrangeToOddPlusEven(sum_, rest_);
    }

private:
    hn::Vec<D32> sum_;
    hn::Vec<D32> rest_;
};

#endif

} // namespace HWY_NAMESPACE
} // namespace quillomat::raster
HWY_AFTER_NAMESPACE();

#endif
