// The yardstick: the same recording drawn slowly and obviously right. Kept for ever; only tests and benchmarks call it.
#pragma once

#include "platform/graphics/Bitmap.h"
#include "platform/graphics/Recording.h"

#include <array>
#include <vector>

namespace quillomat {

struct ReferenceQuality {
    int samplesPerSide = 16; // samples inside a pixel's square, per side
};

/// Exact area coverage at edges (polygon clipping of the flattened shape); inside, the average over the pixel's square
/// of the bilinearly reconstructed picture; premultiplied 8-bit sRGB numbers, no linear light.
[[nodiscard]] Bitmap renderReference(const Recording& recording, const ReferenceQuality& quality = {});
/// The same before it is rounded: rows of pixels of four numbers, 0 to 255.
[[nodiscard]] std::vector<std::array<double, 4>> renderUnrounded(const Recording& recording,
                                                                 const ReferenceQuality& quality = {});

} // namespace quillomat
