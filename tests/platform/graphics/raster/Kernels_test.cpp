// Every kind of processor's kernels against the scalar twin, to the bit: odd lengths, offsets, guard bytes.
#include "platform/graphics/raster/Kernels.h"

#include "EveryTarget.h"
#include "platform/graphics/raster/FilterTables.h"
#include "platform/graphics/raster/MixTable.h"
#include "platform/graphics/raster/Profiles.h"
#include "platform/graphics/raster/StretchAxis.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <vector>

namespace quillomat::raster {
namespace {

using quillomat::testing::onEveryTarget;

class KernelsTwins : public ::testing::Test {
protected:
    std::vector<std::uint8_t> randomBytes(std::size_t count) {
        std::vector<std::uint8_t> bytes(count);
        for (std::uint8_t& byte : bytes) {
            byte = static_cast<std::uint8_t>(random_());
        }
        return bytes;
    }

    /// Premultiplied pixels, many of them clear or opaque, some breaking the rule.
    std::vector<std::uint8_t> randomPixels(std::size_t count) {
        std::vector<std::uint8_t> bytes = randomBytes(count * 4);
        for (std::size_t i = 0; i < count; ++i) {
            const unsigned kind = random_() % 8;
            std::uint8_t& alpha = bytes[i * 4 + 3];
            alpha = kind < 3 ? 0 : kind < 5 ? 255 : alpha;
            for (std::size_t channel = 0; channel < 3 && kind != 7; ++channel) {
                bytes[i * 4 + channel] = std::min(bytes[i * 4 + channel], alpha);
            }
        }
        return bytes;
    }

    /// Weights as bytes are mixed with: neither sign's come to more than `mostOneSign`, and often they do to that.
    std::vector<std::int8_t> mixWeights(int count) {
        std::vector<std::int8_t> weights(static_cast<std::size_t>(count));
        int left[2] = {mostOneSign, mostOneSign};
        for (int i = 0; i < count; ++i) {
            const auto sign = static_cast<std::size_t>(upTo(1));
            const int weight =
                upTo(3) == 0 ? std::min(left[sign], 127) : upTo(std::min({left[sign], 256 / count, 127}));
            left[sign] -= weight;
            weights[static_cast<std::size_t>(i)] = static_cast<std::int8_t>(sign == 0 ? weight : -weight);
        }
        return weights;
    }

    int upTo(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit + 1)); }

    std::mt19937 random_{23};
};

constexpr std::size_t guard = 40;

/// Runs `draw` of the scalar twin and of each target into guarded buffers of `size` bytes and compares them.
void expectSameBytes(const std::vector<std::uint8_t>& before, std::size_t offset,
                     const std::function<void(const Kernels&, std::uint8_t*)>& draw) {
    const auto drawn = [&](const Kernels& kernels) {
        std::vector<std::uint8_t> buffer(guard + offset, 0xA5);
        buffer.insert(buffer.end(), before.begin(), before.end());
        buffer.insert(buffer.end(), guard, 0xA5);
        draw(kernels, buffer.data() + guard + offset);
        return buffer;
    };
    const std::vector<std::uint8_t> expected = drawn(scalarKernels());
    for (std::size_t i = 0; i < guard; ++i) {
        ASSERT_EQ(expected[i], 0xA5);
        ASSERT_EQ(expected[expected.size() - 1 - i], 0xA5);
    }
    onEveryTarget([&](const char* target) { ASSERT_EQ(drawn(bestKernels()), expected) << target; });
}

TEST(Kernels, wideRegistersAreUsedWhereThereAreAny) {
#if defined(__x86_64__) || defined(__aarch64__)
    EXPECT_NE(&bestKernels(), &scalarKernels());
#endif
}

TEST(Kernels, dividesBy255ToTheNearest) {
    for (std::uint32_t a = 0; a <= 65152; ++a) {
        ASSERT_EQ(dividedBy255(a), static_cast<std::uint32_t>(std::lround(a / 255.0))) << a;
        ASSERT_LE(a + 128 + ((a + 128) >> 8), 65535U) << "fits 16 bits";
    }
}

TEST_F(KernelsTwins, compositeUniform) {
    for (int count = 0; count < 80; ++count) {
        const auto pixels = randomPixels(static_cast<std::size_t>(count));
        for (const int coverage : {0, 1, 127, 128, 254, 255}) {
            expectSameBytes(randomPixels(static_cast<std::size_t>(count)), static_cast<std::size_t>(count % 5),
                            [&](const Kernels& kernels, std::uint8_t* out) {
                                kernels.compositeUniform(out, pixels.data(), coverage, count);
                            });
        }
    }
}

TEST_F(KernelsTwins, compositeCovered) {
    for (int count = 0; count < 200; ++count) {
        const auto pixels = randomPixels(static_cast<std::size_t>(count));
        const auto coverage = randomBytes(static_cast<std::size_t>(count));
        expectSameBytes(randomPixels(static_cast<std::size_t>(count)), static_cast<std::size_t>(count % 7),
                        [&](const Kernels& kernels, std::uint8_t* out) {
                            kernels.compositeCovered(out, pixels.data(), coverage.data(), count);
                        });
    }
}

TEST_F(KernelsTwins, combineRows) {
    for (int count = 0; count < 100; ++count) {
        const int taps = 1 + upTo(7);
        std::vector<std::vector<std::uint8_t>> rows;
        std::vector<const std::uint8_t*> pointers;
        std::vector<std::int16_t> weights;
        int rest = 16384;
        for (int tap = 0; tap < taps; ++tap) {
            rows.push_back(randomBytes(static_cast<std::size_t>(count)));
            const int weight = tap + 1 == taps ? rest : upTo(6000) - 1500;
            weights.push_back(static_cast<std::int16_t>(weight));
            rest -= weight;
        }
        for (const auto& row : rows) {
            pointers.push_back(row.data());
        }
        expectSameBytes(std::vector<std::uint8_t>(static_cast<std::size_t>(count) * 2), 0,
                        [&](const Kernels& kernels, std::uint8_t* out) {
                            std::vector<std::int16_t> sums(static_cast<std::size_t>(count) + 4, 1234);
                            kernels.combineRows(pointers.data(), weights.data(), taps, count, sums.data());
                            std::memcpy(out, sums.data(), static_cast<std::size_t>(count) * 2);
                            EXPECT_EQ(sums[static_cast<std::size_t>(count)], 1234);
                        });
    }
}

TEST_F(KernelsTwins, combineColumns) {
    for (int count = 0; count < 60; ++count) {
        const int taps = 2 + 2 * upTo(4);
        std::vector<std::int16_t> row(400);
        for (std::int16_t& value : row) {
            value = static_cast<std::int16_t>(upTo(18000) - 1000);
        }
        std::vector<std::int32_t> first;
        std::vector<std::int16_t> weights;
        for (int i = 0; i < count; ++i) {
            first.push_back(upTo(100 - taps));
            int rest = 16384;
            for (int tap = 0; tap < taps; ++tap) {
                const int weight = tap + 1 == taps ? rest : upTo(4000) - 1000;
                weights.push_back(static_cast<std::int16_t>(weight));
                rest -= weight;
            }
        }
        expectSameBytes(randomBytes(static_cast<std::size_t>(count) * 4), static_cast<std::size_t>(count % 3),
                        [&](const Kernels& kernels, std::uint8_t* out) {
                            kernels.combineColumns(row.data(), first.data(), weights.data(), taps, count, out);
                        });
    }
}

TEST_F(KernelsTwins, mixRows) {
    for (int count = 0; count < 150; ++count) {
        const int taps = 1 + upTo(12);
        std::vector<std::vector<std::uint8_t>> rows;
        std::vector<const std::uint8_t*> pointers;
        for (int tap = 0; tap < taps; ++tap) {
            rows.push_back(randomPixels(static_cast<std::size_t>(count)));
        }
        for (const auto& row : rows) {
            pointers.push_back(row.data());
        }
        const std::vector<std::int8_t> weights = mixWeights(taps);
        expectSameBytes(randomPixels(static_cast<std::size_t>(count)), static_cast<std::size_t>(count % 3),
                        [&](const Kernels& kernels, std::uint8_t* out) {
                            kernels.mixRows(pointers.data(), weights.data(), taps, count, out);
                        });
    }
}

TEST_F(KernelsTwins, mixColumns) {
    int inPairs = 0, inFours = 0, single = 0;
    for (int count = 0; count < 240; ++count) {
        AxisTable<std::int8_t> axis;
        axis.taps = count % 3 == 0 ? 4 : 8 + 8 * upTo(3);
        const int samples = count % 4 == 0 ? 1 + upTo(axis.taps + 20) : 400;
        const double step = (count % 2 == 0 ? 1 : -1) * (count % 5 == 0 ? 9 : 0.25 * axis.taps) * upTo(64) / 64;
        const bool usesFew = count % 7 < 4; // the others' weights are 0, as those are that fill a line up
        for (int i = 0; i < count; ++i) {
            const int at = (step < 0 ? samples : 0) + static_cast<int>(std::floor(step * i));
            axis.first.push_back(std::clamp(at, 0, std::max(0, samples - axis.taps)));
            std::vector<std::int8_t> weights = mixWeights(usesFew ? axis.taps - 2 : axis.taps);
            weights.resize(static_cast<std::size_t>(axis.taps));
            // Near the edge the weights that count are the last ones.
            std::rotate(weights.begin(), weights.end() - (at > axis.first.back() ? 2 : 0), weights.end());
            axis.weights.insert(axis.weights.end(), weights.begin(), weights.end());
        }
        const MixTable table(std::move(axis), samples);
        const MixedColumns columns = table.view();
        inPairs += columns.tapsAtOnce == 2 ? 1 : 0;
        inFours += columns.tapsAtOnce == 4 ? 1 : 0;
        single += columns.groups == nullptr ? 1 : 0;
        // The row ends with its vector, so that a sanitizer sees a read beyond it.
        const auto pixels = randomPixels(static_cast<std::size_t>(table.roomOfRow()));
        const MixedRow row{pixels.data(), count % 2 == 0 ? pixels.data() : nullptr};
        const int from = upTo(std::min(count, 20));
        const int length = count % 6 == 0 ? upTo(std::min(count - from, 20)) : count - from;
        expectSameBytes(randomBytes(static_cast<std::size_t>(length) * 4), static_cast<std::size_t>(count % 3),
                        [&](const Kernels& kernels, std::uint8_t* out) {
                            kernels.mixColumns(columns, row, from, length, /*isCut=*/count % 2 == 0, out);
                        });
    }
    EXPECT_GT(inPairs, 20);
    EXPECT_GT(inFours, 20);
    EXPECT_GT(single, 20);
}

TEST(Kernels, mixingOneRowOrColumnKeepsIt) {
    std::vector<std::uint8_t> bytes(256);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<std::uint8_t>(i);
    }
    const std::uint8_t* row = bytes.data();
    const std::int8_t whole[1] = {mixedWhole};
    std::vector<std::uint8_t> mixed(bytes.size());
    bestKernels().mixRows(&row, whole, 1, 64, mixed.data());
    EXPECT_EQ(mixed, bytes);
}

TEST_F(KernelsTwins, projectPositions) {
    constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
    std::uniform_real_distribution<double> unit(-1, 1);
    for (int i = 0; i < 300; ++i) {
        ProjectedRow row;
        row.uStep = unit(random_) * 64, row.u0 = unit(random_) * 9000;
        row.vStep = unit(random_) * 64, row.v0 = unit(random_) * 9000;
        row.wStep = unit(random_) * 0.01, row.w0 = i % 7 == 0 ? 0 : 1 + unit(random_);
        row.highestU = 9000, row.highestV = 7000.5;
        if (i % 11 == 0) {
            row.u0 = notANumber;
        }
        if (i % 13 == 0) {
            row.wStep = row.w0 = 0;
        }
        const int count = upTo(longestSegment);
        const int left = upTo(3000);
        expectSameBytes(std::vector<std::uint8_t>(static_cast<std::size_t>(count) * 8), 0,
                        [&](const Kernels& kernels, std::uint8_t* out) {
                            std::vector<std::int32_t> u(static_cast<std::size_t>(count) + 1, 77);
                            std::vector<std::int32_t> v(static_cast<std::size_t>(count) + 1, 77);
                            kernels.projectPositions(row, left, count, u.data(), v.data());
                            EXPECT_EQ(u.back(), 77);
                            EXPECT_EQ(v.back(), 77);
                            std::memcpy(out, u.data(), static_cast<std::size_t>(count) * 4);
                            std::memcpy(out + count * 4, v.data(), static_cast<std::size_t>(count) * 4);
                            for (int k = 0; k < count; ++k) {
                                EXPECT_GE(u[static_cast<std::size_t>(k)], lowestPosition);
                                EXPECT_LE(u[static_cast<std::size_t>(k)], 9000);
                            }
                        });
    }
}

/// A footprint of any kind over a picture of noise.
class FootprintTwins : public KernelsTwins {
protected:
    /// The i-th of them. The picture ends with its memory, so that a sanitizer sees a read beyond it.
    Footprint randomFootprint(int i, int smallestSide) {
        const int width = smallestSide + upTo(60);
        const int height = smallestSide + upTo(40);
        pixels_ = randomPixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
        if (i % 9 == 4) {
            // The largest products there are, side by side.
            const std::uint8_t split = upTo(2) == 0 ? 128 : 250;
            std::transform(pixels_.begin(), pixels_.end(), pixels_.begin(),
                           [split](std::uint8_t byte) { return byte < split ? 0 : 255; });
        }
        Footprint footprint;
        footprint.picture = {pixels_.data(), width, height, static_cast<std::size_t>(width) * 4};
        const auto boxWidth = [&] { return upTo(100) * (i % 3 == 0 ? 0.07 : 0.02); };
        footprint.rows = &rowTable(boxWidth(), boxWidth());
        footprint.shear = i % 4 == 0 ? 0 : (upTo(400) - 200) * (i % 5 == 0 ? 2500 : 350);
        footprint.isSteady = i % 2 == 0;
        if (footprint.isSteady) {
            const int farthest = (phasesBeyond - 1) * 2 / (footprint.rows->taps - 1);
            footprint.shear = steadyShear * std::clamp(footprint.shear / steadyShear, -farthest, farthest);
        }
        footprint.columns = &columnTable(boxWidth(), boxWidth(), (i % 7) * 0.08);
        if (footprint.isSteady && footprint.rows->taps == 4 && footprint.columns->taps == 4 && i % 8 != 0) {
            footprint.steadyLines = steadyLines(*footprint.columns, footprint.shear / steadyShear);
            ++withSteadyLines_;
        }
        return footprint;
    }

    /// Four sums for each of `count` positions.
    static void expectSameSums(int count, const std::function<void(const Kernels&, std::int32_t*)>& sum) {
        expectSameBytes(std::vector<std::uint8_t>(static_cast<std::size_t>(count) * 16), 0,
                        [&](const Kernels& kernels, std::uint8_t* out) {
                            std::vector<std::int32_t> sums(static_cast<std::size_t>(count) * 4 + 1, 1234);
                            sum(kernels, sums.data());
                            EXPECT_EQ(sums.back(), 1234);
                            std::memcpy(out, sums.data(), static_cast<std::size_t>(count) * 16);
                        });
    }

    TablesInUse tables_;
    std::vector<std::uint8_t> pixels_;
    int withSteadyLines_ = 0;
};

TEST_F(FootprintTwins, filterFootprint) {
    for (int i = 0; i < 400; ++i) {
        const Footprint footprint = randomFootprint(i, 1);
        const int count = 1 + upTo(longestSegment - 1);
        std::vector<std::int32_t> u(longestSegment);
        std::vector<std::int32_t> v(longestSegment);
        for (std::size_t k = 0; k < longestSegment; ++k) {
            u[k] = upTo((footprint.picture.width + 8) * phases) - 4 * phases;
            v[k] = upTo((footprint.picture.height + 8) * phases) - 4 * phases;
        }
        expectSameBytes(randomBytes(static_cast<std::size_t>(count) * 4), static_cast<std::size_t>(i % 4),
                        [&](const Kernels& kernels, std::uint8_t* out) {
                            kernels.filterFootprint(footprint, u.data(), v.data(), count, out);
                        });
        expectSameSums(count, [&](const Kernels& kernels, std::int32_t* sums) {
            kernels.sumFootprint(footprint, u.data(), v.data(), count, sums);
        });
    }
    EXPECT_GT(withSteadyLines_, 10);
}

TEST_F(FootprintTwins, filterAlongCurve) {
    std::uniform_real_distribution<float> unit(-1, 1);
    for (int i = 0; i < 400; ++i) {
        const Footprint footprint = randomFootprint(i, 30);
        // Some curves keep inside, some cross the edges, some leave the picture far behind.
        const float speed = i % 5 == 0 ? 900.0F : 60.0F;
        const auto axis = [&](int side) {
            return CurvedRow::Axis{upTo(side * phases), unit(random_), unit(random_) * speed, unit(random_) * 0.5F};
        };
        const CurvedRow row{axis(footprint.picture.width), axis(footprint.picture.height)};
        const int count = 1 + upTo(longestBlock - 1);
        const int first = upTo(longestBlock - count);
        expectSameBytes(randomBytes(static_cast<std::size_t>(count) * 4), static_cast<std::size_t>(i % 4),
                        [&](const Kernels& kernels, std::uint8_t* out) {
                            kernels.filterAlongCurve(footprint, row, first, count, out);
                        });
        expectSameSums(count, [&](const Kernels& kernels, std::int32_t* sums) {
            kernels.sumAlongCurve(footprint, row, first, count, sums);
        });
    }
    EXPECT_GT(withSteadyLines_, 5);
}

TEST_F(FootprintTwins, curvesLeadToTheirNearestPositions) {
    std::uniform_real_distribution<float> unit(-1, 1);
    for (int i = 0; i < 60; ++i) {
        const Footprint footprint = randomFootprint(i, 40);
        const CurvedRow row{{4000, unit(random_), unit(random_) * 30.0F, unit(random_) * 0.06F},
                            {5000, unit(random_), unit(random_) * 20.0F, unit(random_) * 0.06F}};
        const auto positionAt = [](const CurvedRow::Axis& axis, int at) {
            const double exact =
                axis.start + at * static_cast<double>(axis.step) + at * at * static_cast<double>(axis.bend);
            return axis.origin + static_cast<std::int32_t>(std::floor(exact + 0.5));
        };
        for (int at = 0; at < longestBlock; ++at) {
            const std::int32_t u = positionAt(row.u, at);
            const std::int32_t v = positionAt(row.v, at);
            std::uint8_t along[4];
            std::uint8_t there[4];
            scalarKernels().filterAlongCurve(footprint, row, at, 1, along);
            scalarKernels().filterFootprint(footprint, &u, &v, 1, there);
            // Single precision errs by a thirty-second of a unit: now and then the neighbouring position is taken.
            for (std::size_t channel = 0; channel < 4; ++channel) {
                ASSERT_NEAR(along[channel], there[channel], 4) << i << ", pixel " << at;
            }
        }
    }
}

/// A footprint along a line over a picture of noise that ends with its memory.
class LineTwins : public KernelsTwins {
protected:
    LineFootprint randomFootprint(int i) {
        const int width = 1 + upTo(i % 5 == 0 ? 20 : 300);
        const int height = 1 + upTo(i % 7 == 0 ? 12 : 80);
        pixels_ = randomPixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
        if (i % 9 == 4) {
            // The largest sums there are, side by side.
            std::transform(pixels_.begin(), pixels_.end(), pixels_.begin(),
                           [](std::uint8_t byte) { return byte < 200 ? 0 : 255; });
        }
        LineFootprint footprint;
        footprint.picture = {pixels_.data(), width, height, static_cast<std::size_t>(width) * 4};
        footprint.parts = 1 + i % 2;
        footprint.rows = &lineRows(0.02 * upTo(300), footprint.parts);
        footprint.columnBits = 4 + i % 3;
        for (LineFootprint::Columns& columns : footprint.columns) {
            columns.table = &lineColumns(0.02 * upTo(250));
            columns.aside = footprint.parts == 1 ? 0 : upTo(2 * farthestAside) - farthestAside;
            footprint.mostAside = std::max(footprint.mostAside, std::abs(columns.aside));
        }
        footprint.ahead = {8, 3, 4};
        return footprint;
    }

    /// The same columns for all pixels.
    static void setColumns(LineFootprint& footprint, double width, std::int32_t aside) {
        footprint.columns.fill({&lineColumns(width), aside});
        footprint.columnBits = 6;
        footprint.mostAside = std::abs(aside);
    }

    PictureLine randomLine(const PixelView& picture) {
        PictureLine line;
        line.column = upTo(picture.width);
        line.row = upTo(picture.height + 8) - 4;
        line.start = upTo(4 << lineBits) - (2 << lineBits);
        const int steepest = upTo(2) == 0 ? steepestLine : steepestLine / 10;
        line.step = upTo(5) == 0 ? 0 : upTo(2 * steepest) - steepest;
        return line;
    }

    TablesInUse tables_;
    std::vector<std::uint8_t> pixels_;
};

TEST_F(LineTwins, filterAlongLine) {
    std::uniform_real_distribution<float> unit(-1, 1);
    for (int i = 0; i < 800; ++i) {
        const LineFootprint footprint = randomFootprint(i);
        const PictureLine line = randomLine(footprint.picture);
        LineCurve curve;
        curve.origin = upTo((footprint.picture.width + 40) * phases) - 20 * phases;
        curve.start = unit(random_);
        // All one way, no matter which, and never too fast.
        curve.step = (i % 4 < 2 ? 1.0F : -1.0F) * (100.0F + static_cast<float>(upTo(mostLineStep - 400)));
        curve.fall = unit(random_) * 0.0002F;
        const int block = static_cast<int>(LineFootprint::mostColumns) << footprint.columnBits;
        const int count = 1 + upTo(i % 3 == 0 ? 9 : block - 1);
        const int first = upTo(block - count);
        expectSameBytes(randomBytes(static_cast<std::size_t>(count) * 4), static_cast<std::size_t>(i % 4),
                        [&](const Kernels& kernels, std::uint8_t* out) {
                            kernels.filterAlongLine(footprint, line, curve, first, count, out);
                        });
    }
}

TEST_F(LineTwins, pixelsAreThePicturesMeanUnderTheBoxesThatFollowTheLine) {
    const int width = 120, height = 90;
    pixels_ = randomPixels(std::size_t{width} * height);
    LineFootprint footprint;
    footprint.picture = {pixels_.data(), width, height, std::size_t{width} * 4};
    for (const int parts : {1, 2}) {
        constexpr double down = 3.25, across = 2.5, aside = 0.375;
        footprint.parts = parts;
        footprint.rows = &lineRows(down, parts);
        setColumns(footprint, across, parts == 1 ? 0 : static_cast<int>(aside * phases));
        const PictureLine line{10, 12, 1 << (lineBits - 1), (1 << lineBits) / 4};
        const LineCurve curve{20 * phases + 77, 0, 2.5F * phases, 0};
        constexpr int count = 24;
        std::uint8_t out[count * 4];
        bestKernels().filterAlongLine(footprint, line, curve, 0, count, out);
        for (int i = 0; i < count; ++i) {
            for (int channel = 0; channel < 4; ++channel) {
                double mean = 0;
                for (int part = 0; part < parts; ++part) {
                    const int side = parts == 1 ? 0 : 2 * part - 1;
                    const double u = 20 + 77.0 / phases + 2.5 * i + side * aside;
                    for (int x = 0; x < width; ++x) {
                        const double v = 12.5 + (x - 10) / 4.0 + side * down / 4;
                        for (int y = 0; y < height; ++y) {
                            mean += boxTent(x - u, across) * boxTent(y - v, down / parts) / parts *
                                    pixels_[static_cast<std::size_t>((y * width + x) * 4 + channel)];
                        }
                    }
                }
                // Weights of rows are whole numbers of 256, at the nearest of 64 phases.
                ASSERT_NEAR(out[i * 4 + channel], mean, 3) << parts << " parts, pixel " << i;
            }
        }
    }
}

TEST_F(LineTwins, pixelsAreFilteredByTheColumnsOfTheirPlaceInTheBlock) {
    LineFootprint footprint = randomFootprint(1);
    footprint.columnBits = 5;
    const PictureLine line{3, 7, 12345, -9000};
    const LineCurve curve{5 * phases, 0.25F, 700, 0.0003F};
    constexpr int count = 128;
    std::uint8_t out[count * 4];
    bestKernels().filterAlongLine(footprint, line, curve, 0, count, out);
    for (int pixel = 0; pixel < count; ++pixel) {
        LineFootprint alone = footprint;
        alone.columns.fill(footprint.columns[static_cast<std::size_t>(pixel / 32)]);
        std::uint8_t expected[4];
        bestKernels().filterAlongLine(alone, line, curve, pixel, 1, expected);
        ASSERT_EQ(std::memcmp(out + std::ptrdiff_t{4} * pixel, expected, 4), 0) << pixel;
    }
}

TEST_F(LineTwins, curvesLeadToTheirNearestPositions) {
    const int width = 1024, height = 8;
    pixels_ = randomPixels(std::size_t{width} * height);
    LineFootprint footprint;
    footprint.picture = {pixels_.data(), width, height, std::size_t{width} * 4};
    // No wider than they must be, so that positions tell.
    footprint.rows = &lineRows(0, 1);
    setColumns(footprint, 0, 0);
    const PictureLine line{0, 4, 0, 0};
    for (const float fall : {-0.0004F, 0.0F, 0.0004F}) {
        const LineCurve curve{100 * phases, 0.25F, 3.01F * phases, fall};
        std::uint8_t out[longestBlock * 4];
        bestKernels().filterAlongLine(footprint, line, curve, 0, longestBlock, out);
        for (int i = 0; i < longestBlock; ++i) {
            const double moved = static_cast<double>(curve.step) * i / (1 + static_cast<double>(fall) * i);
            const LineCurve there{100 * phases + static_cast<std::int32_t>(std::lround(0.25 + moved)), 0, 256, 0};
            std::uint8_t expected[4];
            scalarKernels().filterAlongLine(footprint, line, there, 0, 1, expected);
            // Single precision may take the neighbouring position now and then.
            for (int channel = 0; channel < 4; ++channel) {
                ASSERT_NEAR(out[i * 4 + channel], expected[channel], 1) << fall << ", pixel " << i;
            }
        }
    }
}

TEST_F(LineTwins, flatPicturesStayFlat) {
    for (int level = 0; level < 256; ++level) {
        for (const int parts : {1, 2}) {
            pixels_.assign(std::size_t{60} * 40 * 4, static_cast<std::uint8_t>(level));
            LineFootprint footprint;
            footprint.picture = {pixels_.data(), 60, 40, 240};
            footprint.parts = parts;
            footprint.rows = &lineRows(1 + level % 32 / 8.0, parts);
            setColumns(footprint, 1 + level / 64.0, parts == 1 ? 0 : 90);
            std::uint8_t out[40 * 4];
            bestKernels().filterAlongLine(footprint, {0, 5, 1234, 9000}, {-3 * phases, 0, 400, 0}, 0, 40, out);
            for (const std::uint8_t byte : out) {
                ASSERT_EQ(byte, level) << parts << " parts";
            }
        }
    }
}

TEST_F(KernelsTwins, averageParts) {
    // Sums of whole weights are 2^23 times what lies 128 from a byte at most.
    std::uniform_int_distribution<std::int32_t> sumOf(-(128 << 23), 127 << 23);
    for (const int across : {1, 2, 4}) {
        for (const int down : {1, 2, 4}) {
            const PixelParts parts{across, down};
            for (int count = 0; count < 40; ++count) {
                std::vector<std::int32_t> sums(static_cast<std::size_t>(count * parts.count()) * 4);
                std::generate(sums.begin(), sums.end(), [&] { return upTo(5) == 0 ? 127 << 23 : sumOf(random_); });
                expectSameBytes(randomBytes(static_cast<std::size_t>(count) * 4), static_cast<std::size_t>(count % 4),
                                [&](const Kernels& kernels, std::uint8_t* out) {
                                    kernels.averageParts(sums.data(), parts, count, out);
                                });
            }
        }
    }
}

TEST(Kernels, partsAreAveragedRowByRow) {
    // Two pixels of two parts in two rows each: 10, 20 and 30, 40 over 50, 60 and 70, 80.
    std::vector<std::int32_t> sums;
    for (const int level : {10, 20, 30, 40, 50, 60, 70, 80}) {
        sums.insert(sums.end(), 4, (level - 128) << 23);
    }
    std::vector<std::uint8_t> out(8);
    scalarKernels().averageParts(sums.data(), {2, 2}, 2, out.data());
    EXPECT_EQ(out, (std::vector<std::uint8_t>{35, 35, 35, 35, 55, 55, 55, 55}));
}

TEST_F(FootprintTwins, keepFlatColours) {
    // Weights sum to 1 at every phase: a flat picture stays flat, and an opaque one opaque.
    for (const int level : {0, 1, 127, 254, 255}) {
        const std::vector<std::uint8_t> pixels(64 * 64 * 4, static_cast<std::uint8_t>(level));
        for (double width = 0; width <= 10.5; width += 0.37) {
            Footprint footprint;
            footprint.picture = {pixels.data(), 64, 64, 256};
            footprint.columns = &columnTable(width, width / 3);
            footprint.rows = &rowTable(width / 3, width);
            footprint.shear = 15000;
            for (int phase = 0; phase < phases; ++phase) {
                const std::int32_t u = 32 * phases + phase;
                const std::int32_t v = 32 * phases + (phase * 7) % phases;
                std::uint8_t out[4];
                scalarKernels().filterFootprint(footprint, &u, &v, 1, out);
                ASSERT_EQ(out[0], level) << width << ", phase " << phase;
                ASSERT_EQ(out[3], level) << width << ", phase " << phase;
            }
        }
    }
}

TEST(Profiles, boxesAndTentsSumToOne) {
    for (const double width : {0.0, 0.3, 1.0, 2.7, 6.0}) {
        for (const double other : {0.0, 0.5, 1.9}) {
            double sum = 0;
            double integral = 0;
            for (int i = -12; i <= 12; ++i) {
                sum += boxBoxTent(i + 0.3, width, other);
            }
            for (int i = -12000; i <= 12000; ++i) {
                integral += boxBoxTent(i / 1000.0, width, other) / 1000;
            }
            EXPECT_NEAR(integral, 1, 1e-6);
            EXPECT_NEAR(sum, 1, 1e-9) << width << " and " << other;
        }
    }
}

TEST(Profiles, boxBoxTentIsTheAverageOfBoxTentsOverTheOtherBox) {
    for (double t = -4; t <= 4; t += 0.173) {
        double average = 0;
        for (int i = 0; i < 2000; ++i) {
            average += boxTent(t + ((i + 0.5) / 2000 - 0.5) * 1.3, 2.2) / 2000;
        }
        EXPECT_NEAR(boxBoxTent(t, 2.2, 1.3), average, 1e-6);
        EXPECT_NEAR(boxBoxTent(t, 1.3, 2.2), average, 1e-6);
    }
}

} // namespace
} // namespace quillomat::raster
