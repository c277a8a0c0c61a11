#include "platform/graphics/PixelBlocks.h"

#include "platform/graphics/ProcessorTarget.h"

#include <algorithm>
#include <array>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/graphics/PixelBlocks.cpp"
#include <hwy/foreach_target.h>
// After foreach_target.h, which compiles this file once for each kind of processor.
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace quillomat {
namespace HWY_NAMESPACE { // NOLINT: the library's own name for each kind of processor
namespace hn = hwy::HWY_NAMESPACE;

using PixelLanes = hn::CappedTag<std::uint32_t, blockPixels>;

/// One block. White light has the same four bytes, so it stays itself when it is turned by one.
HWY_INLINE PixelBlock KindsOf(const std::uint32_t* pixels) {
    constexpr std::uint32_t opaqueBlack = 0xff000000;
    const PixelLanes d;
    const auto first = hn::Set(d, pixels[0]);
    auto unlikeFirst = hn::Zero(d);
    auto unlikeWhite = hn::Zero(d);
    auto any = hn::Zero(d);
    auto all = hn::Set(d, ~std::uint32_t{0});
    for (std::size_t i = 0; i < blockPixels; i += hn::Lanes(d)) {
        const auto pixel = hn::LoadU(d, pixels + i);
        unlikeFirst = hn::Or(unlikeFirst, hn::Xor(pixel, first));
        unlikeWhite = hn::Or(unlikeWhite, hn::Xor(pixel, hn::Or(hn::ShiftLeft<8>(pixel), hn::ShiftRight<24>(pixel))));
        any = hn::Or(any, pixel);
        all = hn::And(all, pixel);
    }
    const auto isZero = [&d](auto lanes) { return hn::AllTrue(d, lanes == hn::Zero(d)); };
    const auto alpha = hn::Set(d, opaqueBlack);
    std::uint32_t kinds = isZero(hn::AndNot(all, alpha)) ? asOpaque : asWhole;
    kinds |= isZero(unlikeFirst) ? asOneColor : 0;
    kinds |= isZero(unlikeWhite) ? asWhite : 0;
    kinds |= isZero(hn::AndNot(alpha, any)) ? asBlack : 0;
    return {pixels[0], kinds};
}

void ClassifyBlocks(const std::uint8_t* rgba, std::size_t pixels, PixelBlock* blocks) {
    for (; pixels >= blockPixels; pixels -= blockPixels, rgba += blockPixels * 4) {
        std::array<std::uint32_t, blockPixels> block; // NOLINT(cppcoreguidelines-pro-type-member-init): filled next
        std::memcpy(block.data(), rgba, sizeof block);
        *blocks++ = KindsOf(block.data());
    }
    if (pixels > 0) {
        std::array<std::uint32_t, blockPixels> block; // NOLINT(cppcoreguidelines-pro-type-member-init): filled next
        std::uint32_t last = 0;
        std::memcpy(&last, rgba + (pixels - 1) * 4, 4);
        block.fill(last);
        std::memcpy(block.data(), rgba, pixels * 4);
        *blocks = KindsOf(block.data());
    }
}

} // namespace HWY_NAMESPACE
} // namespace quillomat
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quillomat {

void classifyBlocks(const std::uint8_t* rgba, std::size_t pixels, PixelBlock* blocks) {
    QUILLOMAT_DISPATCH(ClassifyBlocks)(rgba, pixels, blocks);
}

} // namespace quillomat
#endif
