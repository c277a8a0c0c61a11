#include "platform/graphics/codecs/PixelRows.h"

#include "platform/graphics/ProcessorTarget.h"

#include <algorithm>
#include <array>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/graphics/codecs/PixelRows.cpp"
#include <hwy/foreach_target.h>
// After foreach_target.h, which compiles this file once for each kind of processor.
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace quillomat::codecs {
namespace HWY_NAMESPACE { // NOLINT: the library's own name for each kind of processor
namespace hn = hwy::HWY_NAMESPACE;

using Bytes8 = hn::ScalableTag<std::uint8_t>;

constexpr std::uint8_t TimesAlpha(unsigned color, unsigned alpha) {
    const unsigned product = color * alpha + 128;
    return static_cast<std::uint8_t>((product + (product >> 8)) >> 8);
}

#if HWY_TARGET != HWY_SCALAR
/// Products divided by 255 and rounded, in the higher byte of each lane; the lower one is to be cleared.
template <class V> HWY_INLINE V TimesAlphaHigh(V color, V alpha) {
    const hn::DFromV<V> d16;
    const V product = hn::Add(hn::Mul(color, alpha), hn::Set(d16, std::uint16_t{128}));
    return hn::Add(product, hn::ShiftRight<8>(product));
}
#endif

void Premultiply(const std::uint8_t* straight, std::uint8_t* premultiplied, std::size_t pixels) {
    std::size_t i = 0;
#if HWY_TARGET != HWY_SCALAR
    const Bytes8 d;
    const hn::Repartition<std::uint16_t, Bytes8> d16;
    const hn::Repartition<std::uint32_t, Bytes8> d32;
    alignas(16) static constexpr std::array<std::uint8_t, 16> alphaTwice{3,  0x80, 3,  0x80, 7,  0x80, 7,  0x80,
                                                                         11, 0x80, 11, 0x80, 15, 0x80, 15, 0x80};
    const auto toAlphas = hn::LoadDup128(d, alphaTwice.data());
    const auto low = hn::Set(d16, std::uint16_t{0x00ff});
    const auto high = hn::Set(d16, std::uint16_t{0xff00});
    const auto firstOfTwo = hn::BitCast(d16, hn::Set(d32, 0x0000ffffU));
    const auto unitForAlpha = hn::BitCast(d16, hn::Set(d32, 0x00ff0000U)); // which stays as it is
    const std::size_t pixelsAtOnce = hn::Lanes(d32);
    for (; i + pixelsAtOnce <= pixels; i += pixelsAtOnce) {
        const auto rgba = hn::LoadU(d, straight + i * 4);
        const auto alpha = hn::BitCast(d16, hn::TableLookupBytesOr0(rgba, toAlphas));
        const auto redAndBlue = hn::And(hn::BitCast(d16, rgba), low);
        const auto greenAndAlpha = hn::ShiftRight<8>(hn::BitCast(d16, rgba));
        const auto redAndBlueTimes = hn::ShiftRight<8>(TimesAlphaHigh(redAndBlue, alpha));
        const auto greenTimes = TimesAlphaHigh(greenAndAlpha, hn::Or(hn::And(alpha, firstOfTwo), unitForAlpha));
        hn::StoreU(hn::BitCast(d, hn::Or(redAndBlueTimes, hn::And(greenTimes, high))), d, premultiplied + i * 4);
    }
#endif
    for (; i < pixels; ++i) {
        const std::uint8_t* from = straight + i * 4;
        std::uint8_t* to = premultiplied + i * 4;
        const unsigned alpha = from[3];
        to[0] = TimesAlpha(from[0], alpha);
        to[1] = TimesAlpha(from[1], alpha);
        to[2] = TimesAlpha(from[2], alpha);
        to[3] = from[3];
    }
}

void MakeOpaque(const std::uint8_t* rgbx, std::uint8_t* rgba, std::size_t pixels) {
    std::size_t i = 0;
#if HWY_TARGET != HWY_SCALAR
    const Bytes8 d;
    const hn::Repartition<std::uint32_t, Bytes8> d32;
    const auto opaque = hn::BitCast(d, hn::Set(d32, 0xff000000U));
    for (; i + hn::Lanes(d) <= pixels * 4; i += hn::Lanes(d)) {
        hn::StoreU(hn::Or(hn::LoadU(d, rgbx + i), opaque), d, rgba + i);
    }
#endif
    for (; i < pixels * 4; ++i) {
        rgba[i] = i % 4 == 3 ? std::uint8_t{255} : rgbx[i];
    }
}

void AddBytes(const std::uint8_t* bytes, std::uint16_t* sums, std::size_t count) {
    std::size_t i = 0;
#if HWY_TARGET != HWY_SCALAR
    const hn::ScalableTag<std::uint16_t> d16;
    const hn::Rebind<std::uint8_t, decltype(d16)> d8;
    for (; i + hn::Lanes(d16) <= count; i += hn::Lanes(d16)) {
        hn::StoreU(hn::Add(hn::LoadU(d16, sums + i), hn::PromoteTo(d16, hn::LoadU(d8, bytes + i))), d16, sums + i);
    }
#endif
    for (; i < count; ++i) {
        sums[i] = static_cast<std::uint16_t>(sums[i] + bytes[i]);
    }
}

} // namespace HWY_NAMESPACE
} // namespace quillomat::codecs
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quillomat::codecs {
namespace {

constexpr std::uint8_t overAlpha(unsigned color, unsigned alpha) {
    return static_cast<std::uint8_t>(std::min(255U, (color * 255 + alpha / 2) / alpha));
}

void unpremultiplyEach(const std::uint8_t* from, std::uint8_t* to, std::size_t pixels) {
    for (std::size_t i = 0; i < pixels; ++i, from += 4, to += 4) {
        const unsigned alpha = from[3];
        if (alpha == 255) {
            std::memmove(to, from, 4);
        } else if (alpha == 0) {
            std::memset(to, 0, 4);
        } else {
            to[0] = overAlpha(from[0], alpha);
            to[1] = overAlpha(from[1], alpha);
            to[2] = overAlpha(from[2], alpha);
            to[3] = from[3];
        }
    }
}

} // namespace

void premultiply(const std::uint8_t* straight, std::uint8_t* premultiplied, std::size_t pixels) {
    QUILLOMAT_DISPATCH(Premultiply)(straight, premultiplied, pixels);
}

void makeOpaque(const std::uint8_t* rgbx, std::uint8_t* rgba, std::size_t pixels) {
    QUILLOMAT_DISPATCH(MakeOpaque)(rgbx, rgba, pixels);
}

void addBytes(const std::uint8_t* bytes, std::uint16_t* sums, std::size_t count) {
    QUILLOMAT_DISPATCH(AddBytes)(bytes, sums, count);
}

void unpremultiply(const std::uint8_t* premultiplied, std::uint8_t* straight, std::size_t pixels) {
    // Most pixels are opaque or empty, and so are most of their neighbours.
    constexpr std::size_t together = 8;
    std::size_t i = 0;
    for (; i + together <= pixels; i += together) {
        const std::uint8_t* from = premultiplied + i * 4;
        std::uint8_t* to = straight + i * 4;
        unsigned all = 255;
        unsigned any = 0;
        for (std::size_t k = 0; k < together; ++k) {
            all &= from[k * 4 + 3];
            any |= from[k * 4 + 3];
        }
        if (all == 255) {
            std::memmove(to, from, together * 4);
        } else if (any == 0) {
            std::memset(to, 0, together * 4);
        } else {
            unpremultiplyEach(from, to, together);
        }
    }
    unpremultiplyEach(premultiplied + i * 4, straight + i * 4, pixels - i);
}

bool allOpaque(const std::uint8_t* rgba, std::size_t pixels) {
    unsigned all = 255;
    for (std::size_t i = 0; i < pixels; ++i) {
        all &= rgba[i * 4 + 3];
    }
    return all == 255;
}

} // namespace quillomat::codecs
#endif
