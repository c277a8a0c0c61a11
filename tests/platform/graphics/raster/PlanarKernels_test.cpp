#include "EveryTarget.h"
#include "platform/graphics/raster/PlanarStretch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>

namespace quillomat::raster {
namespace {

using testing::onEveryTarget;

class PlanarTwins : public ::testing::Test {
protected:
    std::vector<std::uint8_t> randomBytes(std::size_t count) {
        std::vector<std::uint8_t> bytes(count);
        for (std::uint8_t& byte : bytes) {
            const unsigned dice = random_() % 4; // the ends of the range are where sums come near theirs
            byte = dice == 0 ? 0 : dice == 1 ? 255 : static_cast<std::uint8_t>(random_());
        }
        return bytes;
    }
    int upTo(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit + 1)); }
    /// Weights of a line that stretches, from some place on.
    AxisTable<std::int8_t> tableOf(double scale, int columns, int pixels, const PlaneAxis& axis,
                                   const TableForm& form) {
        return StretchAxis(upTo(100) / 100.0 - upTo(columns / 2), scale, PictureFilter::smooth)
            .table<std::int8_t>(0, columns, pixels, axis, form);
    }

    std::mt19937 random_{29};
};

/// What `draw` writes, with bytes before and behind that nobody may touch.
std::vector<std::uint8_t> drawn(const Kernels& kernels, std::size_t size,
                                const std::function<void(const Kernels&, std::uint8_t*)>& draw) {
    constexpr std::size_t guard = 80;
    std::vector<std::uint8_t> buffer(size + 2 * guard, 0xA5);
    draw(kernels, buffer.data() + guard);
    EXPECT_TRUE(std::all_of(buffer.begin(), buffer.begin() + guard, [](auto byte) { return byte == 0xA5; }));
    EXPECT_TRUE(std::all_of(buffer.end() - guard, buffer.end(), [](auto byte) { return byte == 0xA5; }));
    return buffer;
}

void expectSameBytes(std::size_t size, const std::function<void(const Kernels&, std::uint8_t*)>& draw) {
    const std::vector<std::uint8_t> expected = drawn(scalarKernels(), size, draw);
    onEveryTarget([&](const char* target) { ASSERT_EQ(drawn(bestKernels(), size, draw), expected) << target; });
}

TEST_F(PlanarTwins, mixPlaneRows) {
    for (int round = 0; round < 100; ++round) {
        const int to = 64 * upTo(5);
        const int from = 64 * upTo(to / 64);
        const auto table = tableOf(1 / (1.5 + upTo(65) / 10.0), 8, 200, PlaneAxis{200}, mixedRowForm);
        const std::int8_t* weights = table.line(upTo(7));
        const std::size_t stride = 64 * 5;
        const auto memory = randomBytes(stride * static_cast<std::size_t>(table.taps + 3) + 64);
        std::vector<const std::uint8_t*> rows;
        for (int row = 0; row < table.taps + 3; ++row) {
            const bool isThere = row < table.taps || upTo(3) > 0;
            rows.push_back(isThere ? memory.data() + stride * static_cast<std::size_t>(row) : nullptr);
        }
        const PlaneRows taken{rows.data(), weights, table.taps, rows.data() + table.taps, upTo(3)};
        expectSameBytes(static_cast<std::size_t>(to),
                        [&](const Kernels& kernels, std::uint8_t* out) { kernels.mixPlaneRows(taken, from, to, out); });
    }
}

TEST_F(PlanarTwins, mixPlaneColumns) {
    int inGroups = 0, single = 0;
    for (int round = 0; round < 400; ++round) {
        const int columns = 1 + upTo(90);
        const double shrunk = 1.5 + upTo(65) / 10.0;
        const int pixels = 1 + upTo(static_cast<int>(columns * shrunk));
        const bool isHalved = round % 2 == 0;
        const int shift = upTo(40);
        const PlaneAxis chromaAxis =
            isHalved ? PlaneAxis{(shift + pixels + 1) / 2 + upTo(3), shift, 2} : PlaneAxis{pixels + shift, shift, 1};
        const PlaneTable luma(
            tableOf(1 / shrunk, columns, pixels, {pixels + shift + upTo(9), shift, 1}, PlaneTable::form));
        const PlaneTable chroma(tableOf(1 / shrunk, columns, pixels, chromaAxis, PlaneTable::form));
        inGroups += luma.view().groups != nullptr && chroma.view().groups != nullptr ? 1 : 0;
        single += luma.view().groups == nullptr ? 1 : 0;
        // Rows end with their vectors, so that a sanitizer sees a read beyond them.
        const auto gray = randomBytes(static_cast<std::size_t>(luma.room()));
        const auto blue = randomBytes(static_cast<std::size_t>(chroma.room()));
        const auto red = randomBytes(static_cast<std::size_t>(chroma.room()));
        const int from = upTo(columns - 1);
        const int count = upTo(columns - from);
        expectSameBytes(static_cast<std::size_t>(count) * 4, [&](const Kernels& kernels, std::uint8_t* out) {
            kernels.mixPlaneColumns(luma.view(), chroma.view(), {gray.data(), blue.data(), red.data()}, from, count,
                                    out);
        });
    }
    EXPECT_GT(inGroups, 40);
    EXPECT_GT(single, 40);
}

TEST(PlanarKernels, flatPlanesBecomeTheColoursOfJfif) {
    const PlaneTable table(
        StretchAxis(0, 0.4, PictureFilter::smooth).table<std::int8_t>(0, 20, 50, PlaneAxis{50}, PlaneTable::form));
    const auto colorOf = [&](int y, int blue, int red) {
        const auto flat = [&](int value) {
            return std::vector<std::uint8_t>(static_cast<std::size_t>(table.room()), static_cast<std::uint8_t>(value));
        };
        const auto luma = flat(y), blueChroma = flat(blue), redChroma = flat(red);
        std::array<std::uint8_t, 80> out{};
        bestKernels().mixPlaneColumns(table.view(), table.view(), {luma.data(), blueChroma.data(), redChroma.data()}, 0,
                                      20, out.data());
        return std::array<int, 4>{out[40], out[41], out[42], out[43]};
    };
    const auto rounded = [](double value) { return std::clamp(static_cast<int>(std::lround(value)), 0, 255); };
    for (int y = 0; y < 256; y += 15) {
        for (int blue = 0; blue < 256; blue += 17) {
            for (int red = 0; red < 256; red += 17) {
                const std::array<int, 4> color = colorOf(y, blue, red);
                const double cb = blue - 128.0, cr = red - 128.0;
                ASSERT_EQ(color[0], rounded(y + 1.402 * cr)) << y << ' ' << blue << ' ' << red;
                ASSERT_NEAR(color[1], rounded(y - 0.344136 * cb - 0.714136 * cr), 1) << y << ' ' << blue << ' ' << red;
                ASSERT_EQ(color[2], rounded(y + 1.772 * cb)) << y << ' ' << blue << ' ' << red;
                ASSERT_EQ(color[3], 255);
            }
        }
    }
}

/// The weights of a halved plane are those of its enlargement, gathered.
TEST(PlanarKernels, halvedPlanesAreWeighedAsIfTheyHadBeenEnlarged) {
    constexpr int samples = 60;
    std::array<double, samples> plane{};
    std::mt19937 random(3);
    for (double& sample : plane) {
        sample = static_cast<double>(random() % 256);
    }
    const auto enlarged = [&](int position) {
        const int nearest = position / 2;
        const int other = std::clamp(position % 2 == 0 ? nearest - 1 : nearest + 1, 0, samples - 1);
        return 0.75 * plane[static_cast<std::size_t>(nearest)] + 0.25 * plane[static_cast<std::size_t>(other)];
    };
    constexpr TableForm fine{16384, 1, 1};
    for (const int shift : {0, 1, 6, 7}) {
        for (const double scale : {0.13, 0.36, 0.6}) {
            const int pixels = 2 * samples - shift - 5;
            const StretchAxis axis(-0.3, scale, PictureFilter::smooth);
            const int columns = static_cast<int>(pixels * scale);
            const auto direct = axis.table<std::int16_t>(0, columns, pixels, {samples, shift, 2}, fine);
            const auto after = axis.table<std::int16_t>(0, columns, pixels, fine);
            for (int at = 0; at < columns; ++at) {
                double a = 0, b = 0;
                for (int tap = 0; tap < direct.taps; ++tap) {
                    if (direct.line(at)[tap] != 0) {
                        a += direct.line(at)[tap] *
                             plane[static_cast<std::size_t>(direct.first[direct.index(at)] + tap)];
                    }
                }
                for (int tap = 0; tap < after.taps; ++tap) {
                    if (after.line(at)[tap] != 0) {
                        b += after.line(at)[tap] * enlarged(shift + after.first[after.index(at)] + tap);
                    }
                }
                ASSERT_NEAR(a / fine.sum, b / fine.sum, 0.2) << shift << ", " << scale << ", " << at;
            }
        }
    }
}

} // namespace
} // namespace quillomat::raster
