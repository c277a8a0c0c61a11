#include "platform/graphics/Rasterizer.h"

#include "DrawnPictures.h"
#include "PictureComparison.h"
#include "platform/graphics/BitmapContext.h"
#include "platform/graphics/ReferenceRenderer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <thread>

namespace quillomat {
namespace {

// The tolerances, by how far the footprint is from a plain square.
constexpr PictureTolerance mildTolerance{6, 2, 0.05, 56};
constexpr PictureTolerance turnedTolerance{8, 3, 0.02, 55};
constexpr PictureTolerance shrunkTolerance{8, 3, 0.02, 54}; // the judge's own samples are this far apart here
constexpr PictureTolerance growingTolerance{6, 3, 0.001, 59};
constexpr PictureTolerance obliqueTolerance{32, 4, 0.05, 48};
constexpr PictureTolerance longTolerance{3, 2, 0.001, 60};
constexpr PictureTolerance exactTolerance{2, 1, 0.01, 60};
// Backgrounds are stretched in bytes, with weights of 1/112; six levels off are those beside a letter, of 255.
constexpr PictureTolerance mixTolerance{6, 1, 0.01, 54};

const PixelSize canvas{200, 240};

Image screenshot() {
    static const Image image = Image::fromBitmap(screenshotLike({160, 200}));
    return image;
}

Image translucentScreenshot() {
    static const Image image = Image::fromBitmap(screenshotLike({160, 200}, /*opaque=*/false));
    return image;
}

testing::AssertionResult agreesWithReference(const Recording& recording, const PictureTolerance& tolerance) {
    return picturesAgree(renderReference(recording, {12}), rasterize(recording, 2), tolerance);
}

testing::AssertionResult quadAgrees(const Image& picture, const Quad& quad, const PictureTolerance& tolerance,
                                    double radius = 0) {
    return agreesWithReference(recordingOf(canvas, fittedLayer(picture, quad, radius)), tolerance);
}

TEST(Rasterizer, drawsMildQuadsAsTheReferenceDoes) {
    const Quad quad{{18, 22}, {180, 30}, {25, 225}, {176, 212}};
    EXPECT_TRUE(quadAgrees(screenshot(), quad, mildTolerance));
    EXPECT_TRUE(quadAgrees(translucentScreenshot(), quad, mildTolerance));
}

TEST(Rasterizer, drawsStrongQuadsAsTheReferenceDoes) {
    EXPECT_TRUE(quadAgrees(screenshot(), {{60, 20}, {150, 60}, {40, 230}, {150, 190}}, obliqueTolerance));
}

TEST(Rasterizer, drawsAxisAlignedQuadsAsTheReferenceDoes) {
    EXPECT_TRUE(
        quadAgrees(screenshot(), {{20.25, 30.5}, {180.75, 30.5}, {20.25, 190.5}, {180.75, 190.5}}, exactTolerance));
}

TEST(Rasterizer, drawsSteeplyForeshortenedQuadsAsTheReferenceDoes) {
    EXPECT_TRUE(quadAgrees(screenshot(), {{70, 100}, {130, 100}, {10, 160}, {190, 160}}, obliqueTolerance));
}

TEST(Rasterizer, drawsQuadsTurnedByEveryFifteenDegreesAsTheReferenceDoes) {
    for (int degrees = 0; degrees < 360; degrees += 15) {
        EXPECT_TRUE(quadAgrees(screenshot(), turnedQuad({100.3, 120.6}, {120, 150}, degrees), turnedTolerance, 16))
            << degrees << " degrees";
    }
}

TEST(Rasterizer, drawsShrunkQuadsAsTheReferenceDoes) {
    const Image large = Image::fromBitmap(screenshotLike({480, 600}));
    for (const double shrink : {1.2, 1.5, 2.0, 2.5, 3.0, 3.5, 4.0}) {
        const double w = 480 / shrink;
        const double h = 600 / shrink;
        const double fit = std::min(1.0, std::min(190 / w, 230 / h));
        const Quad quad{{4, 6}, {4 + w * fit, 8}, {6, 6 + h * fit}, {4 + w * fit * 0.97, 4 + h * fit}};
        EXPECT_TRUE(quadAgrees(large, quad, shrunkTolerance)) << shrink << " times";
    }
}

TEST(Rasterizer, drawsShrunkQuadsWhosePixelsGrowAlongTheirRowsAsTheReferenceDoes) {
    // By 3 % in 16 to 64 pixels, to both sides, level and aslant: neighbours soon need footprints of their own.
    const Image large = Image::fromBitmap(screenshotLike({1100, 700}));
    for (const double growth : {0.1, 0.25}) {
        for (const double slope : {0.0, 0.2, 0.45}) {
            const double left = 150 * (1 - growth), right = 150 * (1 + growth);
            const auto top = [&](double height) { return (220 - height) / 2; };
            const Quad quad{{10, top(left)},
                            {390, top(right) + slope * 380},
                            {10, top(left) + left},
                            {390, top(right) + right + slope * 380}};
            const Quad mirrored{quad.topRight, quad.topLeft, quad.bottomRight, quad.bottomLeft};
            for (const Quad& each : {quad, mirrored}) {
                EXPECT_TRUE(agreesWithReference(recordingOf({400, 400}, fittedLayer(large, each, 0)), growingTolerance))
                    << growth << ", aslant by " << slope;
            }
        }
    }
}

TEST(Rasterizer, drawsLongObliqueFootprintsAsTheReferenceDoes) {
    // As in the lower corners of strong quads on small canvases: a step right leads steeply over the picture, a step
    // down far along its columns.
    const Image plate = Image::fromBitmap(zonePlate({360, 360}));
    const auto at = [](double x, double y) { return Point{12 + 161.2 * x - 4.1 * y, 20 + 53.8 * x + 92 * y}; };
    const Quad rising{at(0, 0), at(1, 0), at(0, 1), at(1, 1)};
    const auto mirrored = [](const Quad& quad) {
        return Quad{quad.topRight, quad.topLeft, quad.bottomRight, quad.bottomLeft};
    };
    const auto flipped = [](const Quad& quad) {
        return Quad{quad.bottomLeft, quad.bottomRight, quad.topLeft, quad.topRight};
    };
    for (const Quad& quad : {rising, mirrored(rising), flipped(rising), mirrored(flipped(rising))}) {
        EXPECT_TRUE(quadAgrees(plate, quad, longTolerance));
    }
}

TEST(Rasterizer, drawsShrunkQuadsTurnedByEveryFifteenDegreesAsTheReferenceDoes) {
    for (const double shrink : {2.0, 3.0, 4.0}) {
        const auto side = [shrink](int length) { return static_cast<int>(length * shrink); };
        const Image large = Image::fromBitmap(screenshotLike({side(120), side(150)}));
        for (int degrees = 0; degrees < 180; degrees += 15) {
            EXPECT_TRUE(quadAgrees(large, turnedQuad({100.3, 120.6}, {120, 150}, degrees), shrunkTolerance))
                << shrink << " times, " << degrees << " degrees";
        }
    }
}

TEST(Rasterizer, drawsShrunkQuadsWhoseSidesLeanAsTheReferenceDoes) {
    const Image large = Image::fromBitmap(screenshotLike({480, 600}));
    const Image translucent = Image::fromBitmap(screenshotLike({480, 600}, /*opaque=*/false));
    for (const double right : {-40.0, -12.0, 0.0, 25.0}) {
        for (const double down : {-30.0, -8.0, 3.0, 18.0}) {
            const auto leaning = [&](double x, double y) {
                return Point{25 + x * 150 + y * down, 45 + y * 170 + x * right};
            };
            const Point topLeft = leaning(0, 0), topRight = leaning(1, 0);
            const Point bottomLeft = leaning(0, 1), bottomRight = leaning(1, 1.03);
            const Quad ways[] = {{topLeft, topRight, bottomLeft, bottomRight},
                                 {topRight, topLeft, bottomRight, bottomLeft},
                                 {bottomLeft, bottomRight, topLeft, topRight}};
            for (const Quad& quad : ways) {
                EXPECT_TRUE(quadAgrees(large, quad, shrunkTolerance)) << right << " right, " << down << " down";
            }
            EXPECT_TRUE(quadAgrees(translucent, ways[0], shrunkTolerance, 20)) << right << " right, " << down;
        }
    }
}

TEST(Rasterizer, flatPicturesStayFlatHoweverTheyAreTurnedAndShrunk) {
    for (const int level : {0, 1, 127, 254, 255}) {
        Bitmap flat({480, 600});
        std::ranges::fill(flat.bytes(), static_cast<std::uint8_t>(level));
        const Image picture = Image::fromBitmap(std::move(flat));
        for (const int degrees : {10, 30, 45, 100}) {
            const Bitmap drawn =
                rasterize(recordingOf(canvas, fittedLayer(picture, turnedQuad({100, 120}, {120, 150}, degrees))));
            for (int x = 80; x < 120; ++x) {
                ASSERT_EQ(drawn.row(120)[x * 4], level) << degrees << " degrees at " << x;
            }
        }
    }
}

TEST(Rasterizer, roundsCornersAsTheReferenceDoes) {
    LayerDraw draw;
    draw.shape = {makeRect(10.3, 12.7, 150, 160), 45};
    draw.fill = Color::black();
    EXPECT_TRUE(agreesWithReference(recordingOf(canvas, draw), {1, 0, 0.02, 60}));
    draw.shape.radius = 1e9;
    EXPECT_TRUE(agreesWithReference(recordingOf(canvas, draw), {1, 0, 0.02, 60}));
    draw.shape.radius = -3;
    EXPECT_TRUE(agreesWithReference(recordingOf(canvas, draw), {1, 0, 0.02, 60}));
}

TEST(Rasterizer, cutsLayersWithOneCoverage) {
    LayerDraw draw = fittedLayer(screenshot(), {{18, 22}, {180, 30}, {25, 225}, {176, 212}}, 30);
    draw.fill = Color::white();
    draw.clips.push_back({Homography::fromAffine({1, 0.2, -0.1, 1, 5, 5}), {makeRect(20, 10, 130, 180), 60}});
    draw.clips.push_back({Homography{}, {makeRect(0, 40.5, 200, 150.25), 0}});
    EXPECT_TRUE(agreesWithReference(recordingOf(canvas, draw), mildTolerance));
}

TEST(Rasterizer, drawsOpacityFillPictureAndBorderAsTheReferenceDoes) {
    Recording recording(canvas);
    LayerDraw paper;
    paper.shape = {makeRect(0, 0, 200, 240), 0};
    paper.fill = Color{0.9, 0.8, 0.3, 1};
    recording.add(paper);
    LayerDraw draw;
    draw.shape = {makeRect(30.5, 40.25, 130, 170), 40};
    draw.fill = Color{0.2, 0.5, 0.8, 0.7};
    draw.picture = translucentScreenshot();
    draw.pictureRect = makeRect(60, 60, 80, 110);
    draw.borderWidth = 11.3;
    draw.borderColor = Color::pureRed(0.8);
    draw.opacity = 0.8;
    recording.add(draw);
    EXPECT_TRUE(agreesWithReference(recording, {3, 2, 0.001, 52}));
}

TEST(Rasterizer, picturesThatLeaveTheShapeAreCutAndSmallerOnesLeaveItFree) {
    LayerDraw draw;
    draw.shape = {makeRect(40, 40, 100, 100), 0};
    draw.picture = screenshot();
    draw.pictureRect = makeRect(20, 30, 160, 200);
    EXPECT_TRUE(agreesWithReference(recordingOf(canvas, draw), exactTolerance));
    draw.pictureRect = makeRect(60.5, 70.5, 40, 200);
    EXPECT_TRUE(agreesWithReference(recordingOf(canvas, draw), exactTolerance));
    draw.pictureRect = makeRect(150, 150, 40, 40);
    EXPECT_EQ(rasterize(recordingOf(canvas, draw)), Bitmap(canvas));
}

TEST(Rasterizer, stretchesPicturesAsAntiAliasedCubicDoes) {
    const Image photograph = Image::fromBitmap(photographLike({120, 90}));
    const Image translucent = translucentScreenshot();
    for (const Size size : {Size{200, 240}, Size{60, 30}, Size{17, 230}, Size{121, 91}}) {
        for (const Image& image : {photograph, translucent}) {
            BitmapContext context({200, 240});
            context.drawImage(image, makeRect(-2.3, 1.7, size.width, size.height));
            EXPECT_TRUE(agreesWithReference(context.recording(), mixTolerance)) << size.width << " x " << size.height;
        }
    }
}

TEST(Rasterizer, mirroredPicturesAreStretchedToo) {
    LayerDraw draw;
    draw.map = Homography::fromAffine({-1.25, 0, 0, 1.1, 210, 3});
    draw.shape = {makeRect(0, 0, 160, 200), 0};
    draw.picture = screenshot();
    draw.pictureRect = draw.shape.rect;
    EXPECT_TRUE(agreesWithReference(recordingOf(canvas, draw), exactTolerance));
}

TEST(Rasterizer, wholePixelShiftsCopyPicturesExactly) {
    BitmapContext context({200, 240});
    context.drawImage(screenshot(), makeRect(7, 9, 160, 200));
    const Bitmap result = rasterize(context.recording());
    const SharedBitmap source = screenshot().bitmap();
    for (int y = 0; y < 200; ++y) {
        ASSERT_TRUE(std::equal(source->row(y), source->row(y) + source->stride(), result.row(y + 9) + 7 * 4)) << y;
    }
    EXPECT_EQ(result.row(8)[7 * 4 + 3], 0);
    EXPECT_EQ(result.row(9)[6 * 4 + 3], 0);
}

TEST(Rasterizer, drawsNothingOutsideTheQuad) {
    const Quad quad{{60, 20}, {150, 60}, {40, 230}, {150, 190}};
    const Bitmap result = rasterize(recordingOf(canvas, fittedLayer(screenshot(), quad)));
    const Bitmap expected = renderReference(recordingOf(canvas, fittedLayer(screenshot(), quad)), {1});
    for (std::size_t i = 3; i < result.bytes().size(); i += 4) {
        if (expected.bytes()[i] == 0) {
            ASSERT_LE(result.bytes()[i], 1) << i / 4 % 200 << ", " << i / 4 / 200;
        }
    }
}

Recording busyRecording(PixelSize size) {
    Recording recording(size);
    BitmapContext context({static_cast<double>(size.width), static_cast<double>(size.height)});
    context.drawImage(Image::fromBitmap(photographLike({173, 91})), makeRect(0, 0, size.width, size.height));
    context.drawLayer(fittedLayer(screenshot(), {{40, 20}, {150, 60}, {30, 230}, {160, 190}}, 25));
    LayerDraw glass = fittedLayer(translucentScreenshot(), turnedQuad({120, 130}, {140, 90}, 33), 20);
    glass.opacity = 0.6;
    glass.borderWidth = 4;
    glass.borderColor = Color::pureBlue();
    context.drawLayer(glass);
    context.drawImage(translucentScreenshot(), makeRect(11, 13, 160, 200));
    return context.recording();
}

TEST(Rasterizer, anyBandHeightGivesTheSameBits) {
    const Recording recording = busyRecording({211, 253});
    const Rasterizer rasterizer(recording);
    const Bitmap whole = rasterize(recording, 1);
    for (const int height : {1, 2, 3, 7, 16, 64, 253}) {
        Bitmap bands(recording.size());
        for (int y = 0; y < bands.height(); y += height) {
            const int count = std::min(height, bands.height() - y);
            rasterizer.rows(y, count, bands.bytes().subspan(bands.stride() * static_cast<std::size_t>(y)));
        }
        EXPECT_EQ(bands, whole) << "bands of " << height;
    }
}

TEST(Rasterizer, anyNumberOfThreadsGivesTheSameBits) {
    const Recording recording = busyRecording({211, 253});
    const Bitmap one = rasterize(recording, 1);
    for (const int threads : {0, 2, 3, 5, 16}) {
        EXPECT_EQ(rasterize(recording, threads), one) << threads << " threads";
    }
}

TEST(Rasterizer, shuffledBandsOnSeveralThreadsGiveTheSameBits) {
    const Recording recording = busyRecording({211, 253});
    const Rasterizer rasterizer(recording);
    const Bitmap whole = rasterize(recording, 1);
    std::vector<int> order(static_cast<std::size_t>(whole.height()));
    std::iota(order.begin(), order.end(), 0);
    std::shuffle(order.begin(), order.end(), std::mt19937(3));
    Bitmap shuffled(recording.size());
    const auto draw = [&](std::size_t from, std::size_t step) {
        for (std::size_t i = from; i < order.size(); i += step) {
            rasterizer.rows(order[i], 1,
                            shuffled.bytes().subspan(shuffled.stride() * static_cast<std::size_t>(order[i])));
        }
    };
    {
        std::jthread first(draw, 0, 3);
        std::jthread second(draw, 1, 3);
        std::jthread third(draw, 2, 3);
    }
    EXPECT_EQ(shuffled, whole);
}

TEST(Rasterizer, whatOpaqueLayersHideNeedNotBeDrawn) {
    // The same draws one after the other, each over the last one's pixels, hide nothing from each other.
    const Recording recording = busyRecording({211, 253});
    Recording withOpaqueLayers(recording.size());
    for (const LayerDraw& draw : recording.draws()) {
        withOpaqueLayers.add(draw);
    }
    LayerDraw card;
    card.shape = {makeRect(60.3, 50, 90, 120), 12};
    card.fill = Color::white();
    withOpaqueLayers.add(card);
    Image below;
    for (const LayerDraw& draw : withOpaqueLayers.draws()) {
        BitmapContext context({211, 253});
        context.drawImage(below, makeRect(0, 0, 211, 253));
        context.drawLayer(draw);
        below = Image::fromBitmap(rasterize(context.recording()));
    }
    EXPECT_EQ(rasterize(withOpaqueLayers), *below.bitmap());
}

TEST(Rasterizer, rowsReplaceWhatIsThere) {
    const Rasterizer rasterizer(Recording(PixelSize{5, 2}));
    std::vector<std::uint8_t> rows(5 * 2 * 4, 77);
    rasterizer.rows(0, 2, rows);
    EXPECT_EQ(rows, std::vector<std::uint8_t>(5 * 2 * 4, 0));
}

TEST(Rasterizer, aCanvasThatIsThereAlreadyIsReplaced) {
    const Recording recording = busyRecording({211, 253});
    const Bitmap fresh = rasterize(recording);
    for (const int threads : {1, 3}) {
        Bitmap used(recording.size());
        std::fill(used.bytes().begin(), used.bytes().end(), std::uint8_t{77});
        rasterizeOnto(used, recording, threads);
        EXPECT_EQ(used, fresh);
    }
    Bitmap empty;
    rasterizeOnto(empty, Recording(PixelSize{}));
    EXPECT_TRUE(empty.size().isEmpty());
}

TEST(Rasterizer, opaqueLayersStayOpaqueAtTheirSeams) {
    Recording recording(canvas);
    recording.add(fittedLayer(screenshot(), {{-20, -20}, {240, -30}, {-30, 280}, {230, 270}}));
    const Bitmap result = rasterize(recording);
    EXPECT_TRUE(recording.provesOpaque());
    EXPECT_TRUE(result.isOpaque());
}

TEST(Rasterizer, layersThatCoverNothingAreNotDecoded) {
    class NeverDecoded final : public ImageSource {
    public:
        [[nodiscard]] PixelSize pixelSize() const override { return {100, 100}; }
        [[nodiscard]] bool isKnownOpaque() const override { return true; }
        [[nodiscard]] SharedBitmap bitmap() const override {
            ADD_FAILURE() << "decoded";
            return nullptr;
        }
    };
    const Image image(std::make_shared<NeverDecoded>());
    BitmapContext context({100, 100});
    context.drawImage(image, makeRect(100, 0, 50, 50));
    context.drawImage(image, makeRect(0, 0, 0, 50));
    LayerDraw invisible = fittedLayer(image, turnedQuad({50, 50}, {50, 50}, 20));
    invisible.opacity = 0;
    context.drawLayer(invisible);
    EXPECT_EQ(rasterize(context.recording()), Bitmap({100, 100}));
}

} // namespace
} // namespace quillomat
