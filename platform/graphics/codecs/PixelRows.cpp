#include "platform/graphics/codecs/PixelRows.h"

#include "platform/graphics/ProcessorTarget.h"

#include <algorithm>
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
/// Half as many products as there are bytes, divided by 255 and rounded.
template <class D16, class Half> HWY_INLINE hn::Vec<D16> TimesAlphaHalf(D16 d16, Half color, Half alpha) {
    const auto product =
        hn::Add(hn::Mul(hn::PromoteTo(d16, color), hn::PromoteTo(d16, alpha)), hn::Set(d16, std::uint16_t{128}));
    return hn::ShiftRight<8>(hn::Add(product, hn::ShiftRight<8>(product)));
}

template <class V> HWY_INLINE V TimesAlphaAll(Bytes8 d, V color, V alpha) {
    const hn::Half<Bytes8> dHalf;
    const hn::RepartitionToWide<Bytes8> d16;
    const auto low = TimesAlphaHalf(d16, hn::LowerHalf(dHalf, color), hn::LowerHalf(dHalf, alpha));
    const auto high = TimesAlphaHalf(d16, hn::UpperHalf(dHalf, color), hn::UpperHalf(dHalf, alpha));
    // Only signed numbers can be narrowed to bytes; these are below 256.
    const hn::RebindToSigned<decltype(d16)> signed16;
    return hn::Combine(d, hn::DemoteTo(dHalf, hn::BitCast(signed16, high)),
                       hn::DemoteTo(dHalf, hn::BitCast(signed16, low)));
}
#endif

void Premultiply(const std::uint8_t* straight, std::uint8_t* premultiplied, std::size_t pixels) {
    std::size_t i = 0;
#if HWY_TARGET != HWY_SCALAR
    const Bytes8 d;
    const std::size_t lanes = hn::Lanes(d);
    for (; i + lanes <= pixels; i += lanes) {
        auto red = hn::Zero(d);
        auto green = red;
        auto blue = red;
        auto alpha = red;
        hn::LoadInterleaved4(d, straight + i * 4, red, green, blue, alpha);
        if (hn::AllTrue(d, alpha == hn::Set(d, std::uint8_t{255}))) {
            std::memmove(premultiplied + i * 4, straight + i * 4, lanes * 4);
            continue;
        }
        hn::StoreInterleaved4(TimesAlphaAll(d, red, alpha), TimesAlphaAll(d, green, alpha),
                              TimesAlphaAll(d, blue, alpha), alpha, d, premultiplied + i * 4);
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
