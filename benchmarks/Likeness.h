// Whether two renderers show the same thing: how well they do it is for the quality table.
#pragma once

#include "platform/graphics/Bitmap.h"

#include <algorithm>
#include <cmath>

namespace quillomat::benchmarks {

/// PSNR of the colours in dB after averaging 8 x 8 pixels, so that aliasing counts little and a wrong place much.
inline double likeness(const Bitmap& a, const Bitmap& b) {
    constexpr int block = 8;
    double squares = 0;
    double values = 0;
    for (int top = 0; top + block <= a.height(); top += block) {
        for (int left = 0; left + block <= a.width(); left += block) {
            int sums[3] = {};
            for (int y = top; y < top + block; ++y) {
                for (int x = left * 4; x < (left + block) * 4; ++x) {
                    if (x % 4 != 3) {
                        sums[x % 4] += a.row(y)[x] - b.row(y)[x];
                    }
                }
            }
            for (const int sum : sums) {
                const double mean = static_cast<double>(sum) / (block * block);
                squares += mean * mean;
                ++values;
            }
        }
    }
    return squares > 0 ? std::min(99.0, 10 * std::log10(255.0 * 255.0 * values / squares)) : 99;
}

} // namespace quillomat::benchmarks
