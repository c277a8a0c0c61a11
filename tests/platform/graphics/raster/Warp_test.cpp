// Which pixels are filtered along the lines of their rows, and that it does not show.
#include "DrawnOnTargets.h"
#include "DrawnPictures.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

namespace quillomat::raster {
namespace {

/// What the plain loops were asked to filter along lines.
struct AlongLines {
    int pixels = 0;
    int segmentsOfSeveralColumns = 0;
    bool areAllAsidesKnown = true;
};
AlongLines drawnAlongLines;

AlongLines alongLinesOf(PixelSize picture, const Quad& quad) {
    static Kernels counting = scalarKernels();
    counting.filterAlongLine = [](const LineFootprint& footprint, const PictureLine& line, const LineCurve& curve,
                                  int first, int count, std::uint8_t* out) {
        const LineFootprint::Columns& columns = footprint.columnsOf(first);
        const LineFootprint::Columns& last = footprint.columnsOf(first + count - 1);
        drawnAlongLines.pixels += count;
        drawnAlongLines.segmentsOfSeveralColumns += columns.table != last.table ? 1 : 0;
        for (const std::int32_t aside : {columns.aside, last.aside}) {
            drawnAlongLines.areAllAsidesKnown &= std::abs(aside) <= footprint.mostAside;
        }
        scalarKernels().filterAlongLine(footprint, line, curve, first, count, out);
    };
    drawnAlongLines = {};
    (void)testing::drawnWith(counting,
                             recordingOf({200, 240}, fittedLayer(Image::fromBitmap(screenshotLike(picture)), quad)));
    return drawnAlongLines;
}

int pixelsAlongLinesOf(PixelSize picture, const Quad& quad) {
    return alongLinesOf(picture, quad).pixels;
}

TEST(Warp, shrunkPicturesWhoseRowsGoTheCanvassWayAreFilteredAlongLines) {
    constexpr int pixels = 160 * 180;
    EXPECT_GT(pixelsAlongLinesOf({480, 600}, {{20, 30}, {180, 34}, {22, 212}, {178, 210}}), pixels * 9 / 10);
    EXPECT_GT(pixelsAlongLinesOf({480, 600}, {{20, 30}, {180, 70}, {12, 190}, {178, 230}}), pixels * 8 / 10)
        << "slanted";
    EXPECT_GT(pixelsAlongLinesOf({480, 600}, {{180, 34}, {20, 30}, {178, 210}, {22, 212}}), pixels * 9 / 10)
        << "from right to left";
    EXPECT_GT(pixelsAlongLinesOf({480, 360}, {{20, 30}, {180, 118}, {20, 150}, {180, 238}}), 160 * 120 * 8 / 10)
        << "steep";
}

TEST(Warp, columnsChangeWithinTheirBlocks) {
    const Quad growing{{20, 40}, {180, 34}, {20, 210}, {180, 224}};
    EXPECT_GT(alongLinesOf({480, 600}, growing).segmentsOfSeveralColumns, 100);
    const Quad leaning{{20, 40}, {180, 34}, {24, 210}, {176, 224}};
    EXPECT_TRUE(alongLinesOf({480, 600}, leaning).areAllAsidesKnown);
}

TEST(Warp, othersAreNot) {
    EXPECT_EQ(pixelsAlongLinesOf({170, 200}, {{20, 30}, {180, 34}, {22, 212}, {178, 210}}), 0) << "near its own size";
    EXPECT_EQ(pixelsAlongLinesOf({480, 600}, turnedQuad({100, 120}, {120, 150}, 45)), 0) << "turned";
    EXPECT_EQ(pixelsAlongLinesOf({480, 600}, {{180, 30}, {178, 212}, {20, 34}, {22, 210}}), 0) << "lying";
    EXPECT_EQ(pixelsAlongLinesOf({1600, 2000}, {{20, 30}, {180, 34}, {22, 212}, {178, 210}}), 0) << "shrunk ten times";
}

TEST(Warp, aPixelDoesNotDependOnHowMuchOfItsRowIsDrawn) {
    // Level, and growing along the rows: blocks of 64, 32, and 16 pixels.
    const Quad quads[] = {{{20, 30}, {180, 60}, {12, 200}, {178, 225}},
                          {{20, 40}, {180, 34}, {20, 210}, {180, 224}},
                          {{180, 45}, {20, 20}, {180, 195}, {20, 220}}};
    const Image picture = Image::fromBitmap(screenshotLike({480, 600}));
    for (const Quad& quad : quads) {
        const LayerDraw whole = fittedLayer(picture, quad);
        const Bitmap expected = rasterize(recordingOf({200, 240}, whole));
        for (const double left : {21.0, 40.0, 67.0, 131.0}) {
            LayerDraw part = whole;
            part.clips.push_back({Homography{}, {makeRect(left, 0, 37, 240), 0}});
            const Bitmap drawn = rasterize(recordingOf({200, 240}, part));
            for (int y = 70; y < 190; ++y) {
                for (int x = static_cast<int>(left); x < static_cast<int>(left) + 37; ++x) {
                    const std::ptrdiff_t at = std::ptrdiff_t{4} * x;
                    ASSERT_EQ(std::memcmp(drawn.row(y) + at, expected.row(y) + at, 4), 0) << x << ", " << y;
                }
            }
        }
    }
}

} // namespace
} // namespace quillomat::raster
