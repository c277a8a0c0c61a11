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

/// Pixels over pixels, in registers of bytes.
template <class D8> class Composite {
public:
    using V8 = hn::Vec<D8>;

    /// `coverage` is each byte's own.
    static HWY_INLINE V8 over(V8 canvas, V8 pixels, V8 coverage) {
        const D8 d8;
        const auto none = hn::Zero(d8);
        const auto lower =
            wideOver(widened(hn::InterleaveLower(d8, canvas, none)), widened(hn::InterleaveLower(d8, pixels, none)),
                     widened(hn::InterleaveLower(d8, coverage, none)));
        const auto upper =
            wideOver(widened(hn::InterleaveUpper(d8, canvas, none)), widened(hn::InterleaveUpper(d8, pixels, none)),
                     widened(hn::InterleaveUpper(d8, coverage, none)));
        const hn::RebindToSigned<D16> signed16;
        return packedInBlocks(d8, hn::BitCast(signed16, lower), hn::BitCast(signed16, upper));
    }

private:
    using D16 = hn::Repartition<std::uint16_t, D8>;
    using V16 = hn::Vec<D16>;

    static HWY_INLINE V16 widened(V8 pairs) { return hn::BitCast(D16(), pairs); }

    static HWY_INLINE V16 divided(V16 a) {
        const auto raised = hn::SaturatedAdd(a, hn::Set(D16(), std::uint16_t{128}));
        return hn::ShiftRight<8>(hn::Add(raised, hn::ShiftRight<8>(raised)));
    }

    static HWY_INLINE V16 wideOver(V16 canvas, V16 pixels, V16 coverage) {
        const D8 d8;
        const D16 d16;
        const auto weighted = hn::Mul(pixels, coverage);
        alignas(16) static constexpr std::uint8_t spread[16] = {6, 7, 6, 7, 6, 7, 6, 7, 14, 15, 14, 15, 14, 15, 14, 15};
        const auto alpha = widened(hn::TableLookupBytes(hn::BitCast(d8, weighted), hn::LoadDup128(d8, spread)));
        const auto rest = hn::Sub(hn::Set(d16, std::uint16_t{255}), divided(alpha));
        const auto sum = hn::SaturatedAdd(weighted, hn::Mul(canvas, rest));
        return divided(hn::Min(sum, hn::Set(d16, std::uint16_t{65152})));
    }
};

/// As many pixels as fill whole registers; tells how many those are.
template <class D8>
HWY_INLINE int compositeWhole(D8 d8, std::uint8_t* canvas, const std::uint8_t* pixels, int coverage, int count) {
    constexpr int together = static_cast<int>(hn::MaxLanes(D8())) / 4;
    const auto alphas = hn::BitCast(d8, hn::Set(hn::Repartition<std::uint32_t, D8>(), 0xFF000000U));
    const auto factors = hn::Set(d8, static_cast<std::uint8_t>(coverage));
    int i = 0;
    for (; i + together <= count; i += together) {
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
        hn::StoreU(Composite<D8>::over(hn::LoadU(d8, canvas + at), source, factors), d8, canvas + at);
    }
    return i;
}

void compositeUniform(std::uint8_t* canvas, const std::uint8_t* pixels, int coverage, int count) {
    int done = compositeWhole(hn::CappedTag<std::uint8_t, 64>(), canvas, pixels, coverage, count);
    const auto from = [&done](auto* bytes) { return bytes + static_cast<std::ptrdiff_t>(done) * 4; };
    done += compositeWhole(Bytes16(), from(canvas), from(pixels), coverage, count - done);
    scalarKernels().compositeUniform(from(canvas), from(pixels), coverage, count - done);
}

void compositeCovered(std::uint8_t* canvas, const std::uint8_t* pixels, const std::uint8_t* coverage, int count) {
    const Bytes16 d8;
    const hn::FixedTag<std::uint32_t, 4> d32;
    alignas(16) static constexpr std::uint8_t spread[16] = {0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3};
    int i = 0;
    for (; i + 4 <= count; i += 4) {
        const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(i) * 4;
        std::uint32_t four = 0;
        std::memcpy(&four, coverage + i, sizeof four);
        const auto factors = hn::TableLookupBytes(hn::BitCast(d8, hn::Set(d32, four)), hn::Load(d8, spread));
        const auto mixed = Composite<Bytes16>::over(hn::LoadU(d8, canvas + at), hn::LoadU(d8, pixels + at), factors);
        hn::StoreU(mixed, d8, canvas + at);
    }
    const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(i) * 4;
    scalarKernels().compositeCovered(canvas + at, pixels + at, coverage + i, count - i);
}

#endif

} // namespace HWY_NAMESPACE
} // namespace quillomat::raster
HWY_AFTER_NAMESPACE();
