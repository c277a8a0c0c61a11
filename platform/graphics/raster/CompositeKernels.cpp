// Pixels over pixels in wide registers; each gives the bits of the scalar twin.
#include "platform/graphics/raster/Kernels.h"

#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/graphics/raster/CompositeKernels.cpp"
#include <hwy/foreach_target.h>
// After foreach_target.h, which compiles this file once for each kind of processor.
#include "platform/graphics/raster/Registers-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quillomat::raster {
namespace HWY_NAMESPACE { // NOLINT: the library's own name for each kind of processor

#if HWY_TARGET != HWY_SCALAR

/// Four pixels, each byte widened; eight numbers at a time.
struct Composite {
    const hn::FixedTag<std::uint16_t, 8> d16{};

    template <class V> HWY_INLINE V divided(V a) const {
        const auto raised = hn::SaturatedAdd(a, hn::Set(d16, std::uint16_t{128}));
        return hn::ShiftRight<8>(hn::Add(raised, hn::ShiftRight<8>(raised)));
    }

    template <class V> HWY_INLINE V over(V canvas, V pixels, V coverage) const {
        const auto weighted = hn::Mul(pixels, coverage);
        alignas(16) static constexpr std::uint8_t spread[16] = {6, 7, 6, 7, 6, 7, 6, 7, 14, 15, 14, 15, 14, 15, 14, 15};
        const Bytes16 d8;
        const auto alpha = hn::BitCast(d16, hn::TableLookupBytes(hn::BitCast(d8, weighted), hn::Load(d8, spread)));
        const auto rest = hn::Sub(hn::Set(d16, std::uint16_t{255}), divided(alpha));
        const auto sum = hn::SaturatedAdd(weighted, hn::Mul(canvas, rest));
        return divided(hn::Min(sum, hn::Set(d16, std::uint16_t{65152})));
    }
};

void compositeUniform(std::uint8_t* canvas, const std::uint8_t* pixels, std::uint8_t coverage, int count) {
    const Composite composite;
    const Bytes16 d8;
    const hn::Half<Bytes16> dHalf;
    const hn::FixedTag<std::uint16_t, 8> d16;
    const hn::FixedTag<std::int16_t, 8> dSigned;
    const hn::FixedTag<std::uint32_t, 4> d32;
    const auto alphas = hn::BitCast(d8, hn::Set(d32, 0xFF000000U));
    const auto factor = hn::Set(d16, std::uint16_t{coverage});
    int i = 0;
    for (; i + 4 <= count; i += 4) {
        const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(i) * 4;
        const auto source = hn::LoadU(d8, pixels + at);
        // Most of a picture with alpha is all there or not there at all.
        if (hn::AllTrue(d8, hn::Eq(source, hn::Zero(d8)))) {
            continue;
        }
        if (coverage == 255 && hn::AllTrue(d8, hn::Eq(hn::And(source, alphas), alphas))) {
            hn::StoreU(source, d8, canvas + at);
            continue;
        }
        const auto under = hn::LoadU(d8, canvas + at);
        const auto low = composite.over(hn::PromoteTo(d16, hn::LowerHalf(dHalf, under)),
                                        hn::PromoteTo(d16, hn::LowerHalf(dHalf, source)), factor);
        const auto high = composite.over(hn::PromoteTo(d16, hn::UpperHalf(dHalf, under)),
                                         hn::PromoteTo(d16, hn::UpperHalf(dHalf, source)), factor);
        hn::StoreU(hn::Combine(d8, hn::DemoteTo(dHalf, hn::BitCast(dSigned, high)),
                               hn::DemoteTo(dHalf, hn::BitCast(dSigned, low))),
                   d8, canvas + at);
    }
    const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(i) * 4;
    scalarKernels().compositeUniform(canvas + at, pixels + at, coverage, count - i);
}

void compositeCovered(std::uint8_t* canvas, const std::uint8_t* pixels, const std::uint8_t* coverage, int count) {
    const Composite composite;
    const Bytes16 d8;
    const hn::Half<Bytes16> dHalf;
    const hn::FixedTag<std::uint16_t, 8> d16;
    const hn::FixedTag<std::int16_t, 8> dSigned;
    const hn::FixedTag<std::uint32_t, 4> d32;
    alignas(16) static constexpr std::uint8_t spread[16] = {0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3};
    int i = 0;
    for (; i + 4 <= count; i += 4) {
        const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(i) * 4;
        std::uint32_t four = 0;
        std::memcpy(&four, coverage + i, sizeof four);
        const auto factors = hn::TableLookupBytes(hn::BitCast(d8, hn::Set(d32, four)), hn::Load(d8, spread));
        const auto source = hn::LoadU(d8, pixels + at);
        const auto under = hn::LoadU(d8, canvas + at);
        const auto low = composite.over(hn::PromoteTo(d16, hn::LowerHalf(dHalf, under)),
                                        hn::PromoteTo(d16, hn::LowerHalf(dHalf, source)),
                                        hn::PromoteTo(d16, hn::LowerHalf(dHalf, factors)));
        const auto high = composite.over(hn::PromoteTo(d16, hn::UpperHalf(dHalf, under)),
                                         hn::PromoteTo(d16, hn::UpperHalf(dHalf, source)),
                                         hn::PromoteTo(d16, hn::UpperHalf(dHalf, factors)));
        hn::StoreU(hn::Combine(d8, hn::DemoteTo(dHalf, hn::BitCast(dSigned, high)),
                               hn::DemoteTo(dHalf, hn::BitCast(dSigned, low))),
                   d8, canvas + at);
    }
    const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(i) * 4;
    scalarKernels().compositeCovered(canvas + at, pixels + at, coverage + i, count - i);
}

#endif

} // namespace HWY_NAMESPACE
} // namespace quillomat::raster
HWY_AFTER_NAMESPACE();
