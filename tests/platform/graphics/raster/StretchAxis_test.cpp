#include "platform/graphics/raster/StretchAxis.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <numeric>

namespace quillomat::raster {
namespace {

constexpr TableForm form{mixedWhole, 1, 1};

struct Stretched {
    int pixels = 0;
    int canvas = 0;
    double origin = 0;
};

PlaneAxis planeOf(int pixels, int step) {
    return {(pixels + step - 1) / step, 0, step};
}

// A table copies the weights of positions that lie whole periods apart; a table of one position has nobody to copy.
TEST(StretchAxis, positionsTakeTheirSamplesAlikeInEveryTable) {
    for (const Stretched& now :
         {Stretched{3000, 1080}, Stretched{4000, 1080}, Stretched{4000, 3000}, Stretched{300, 300}, Stretched{301, 300},
          Stretched{4032, 1170}, Stretched{997, 331}, Stretched{40, 700}, Stretched{1000, 250, 0.3},
          Stretched{1000, 400, -600}, Stretched{1000, 400, 170}, Stretched{9, 3}, Stretched{2, 1}}) {
        for (const int step : {1, 2}) {
            for (const double sign : {1.0, -1.0}) {
                const double scale = sign * now.canvas / now.pixels;
                const double origin = sign > 0 ? now.origin : now.canvas - now.origin;
                const StretchAxis axis(origin, scale, PictureFilter::smooth);
                const PlaneAxis plane = planeOf(now.pixels, step);
                const auto whole = axis.table<std::int8_t>(-70, now.canvas, now.pixels, plane, form);
                for (int at = -70; at < now.canvas; ++at) {
                    const auto one = axis.table<std::int8_t>(at, at + 1, now.pixels, plane, form);
                    ASSERT_EQ(one.taps, whole.taps);
                    ASSERT_EQ(one.first[0], whole.first[whole.index(at)])
                        << now.pixels << " to " << now.canvas << " at " << at << ", step " << step;
                    for (int tap = 0; tap < one.taps; ++tap) {
                        ASSERT_EQ(one.line(at)[tap], whole.line(at)[tap])
                            << now.pixels << " to " << now.canvas << " at " << at << ", step " << step;
                    }
                }
            }
        }
    }
}

/// Where a line's weights have their middle, in positions of the plane's samples.
double middleOf(const AxisTable<std::int8_t>& table, int at) {
    double sum = 0;
    for (int tap = 0; tap < table.taps; ++tap) {
        sum += table.line(at)[tap] * (table.first[table.index(at)] + tap + 0.5);
    }
    return sum / mixedWhole;
}

TEST(StretchAxis, weightsStandWherePositionsLie) {
    for (const Stretched& now : {Stretched{3000, 1080}, Stretched{4000, 1080, 3.25}, Stretched{1001, 400, -60}}) {
        const double scale = static_cast<double>(now.canvas) / now.pixels;
        const auto table =
            StretchAxis(now.origin, scale, PictureFilter::smooth).table<std::int8_t>(0, now.canvas, now.pixels, form);
        for (int at = 0; at < now.canvas; ++at) {
            const auto* const line = table.line(at);
            ASSERT_EQ(std::accumulate(line, line + table.taps, 0), mixedWhole);
            const double position = (at + 0.5 - now.origin) / scale;
            if (position > 20 && position < now.pixels - 20) {
                ASSERT_NEAR(middleOf(table, at), position, 0.1) << now.pixels << " to " << now.canvas << " at " << at;
            }
        }
    }
}

TEST(StretchAxis, linesOfBytesFitSumsOf16Bits) {
    for (double scale = 0.02; scale < 40; scale *= 1.003) {
        for (const int samples : {1, 3, 300}) {
            const StretchAxis axis(0.31, samples == 3 ? -scale : scale, PictureFilter::smooth);
            const int from = samples == 3 ? -130 : -10;
            const auto table = axis.table<std::int8_t>(from, from + 140, samples, {mixedWhole, 1, 1});
            for (int at = from; at < from + 140; ++at) {
                int positive = 0, negative = 0;
                for (int tap = 0; tap < table.taps; ++tap) {
                    (table.line(at)[tap] > 0 ? positive : negative) += table.line(at)[tap];
                }
                ASSERT_EQ(positive + negative, mixedWhole) << scale << ", " << at;
                ASSERT_LE(positive, mostOneSign) << scale << ", " << at;
            }
        }
    }
}

TEST(StretchAxis, beyondThePictureItsLastSampleWeighsAll) {
    const auto table = StretchAxis(100, 0.36, PictureFilter::smooth).table<std::int8_t>(0, 300, 300, form);
    EXPECT_EQ(table.first[0], 0);
    EXPECT_EQ(table.line(0)[0], mixedWhole);
    EXPECT_EQ(table.first[299], 300 - table.taps);
    EXPECT_EQ(table.line(299)[table.taps - 1], mixedWhole);
}

} // namespace
} // namespace quillomat::raster
