// Maps that no layout should make and some will: the picture may be anything, the program stays whole.
#include "DrawnPictures.h"
#include "PictureComparison.h"
#include "platform/graphics/Rasterizer.h"
#include "platform/graphics/ReferenceRenderer.h"

#include <gtest/gtest.h>

#include <chrono>
#include <limits>
#include <random>

namespace quillomat {
namespace {

const PixelSize canvas{120, 90};
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

Image picture() {
    static const Image image = Image::fromBitmap(screenshotLike({64, 48}));
    return image;
}

/// Draws into a buffer with guard bytes about it.
Bitmap drawnInside(const Recording& recording) {
    const Rasterizer rasterizer(recording);
    const std::size_t size = recording.size().area() * 4;
    std::vector<std::uint8_t> guarded(size + 128, 0xA5);
    rasterizer.rows(0, recording.size().height, std::span(guarded).subspan(64, size));
    for (std::size_t i = 0; i < 64; ++i) {
        EXPECT_EQ(guarded[i], 0xA5);
        EXPECT_EQ(guarded[size + 64 + i], 0xA5);
    }
    Bitmap bitmap(recording.size());
    std::copy_n(guarded.begin() + 64, size, bitmap.bytes().begin());
    return bitmap;
}

Bitmap drawnQuad(const Quad& quad, double radius = 0) {
    return drawnInside(recordingOf(canvas, fittedLayer(picture(), quad, radius)));
}

TEST(HostileMaps, collapsedQuadsDrawNothing) {
    EXPECT_EQ(drawnQuad({{50, 50}, {50, 50}, {50, 50}, {50, 50}}), Bitmap(canvas));
    EXPECT_EQ(drawnQuad({{10, 50}, {90, 50}, {10, 50}, {90, 50}}), Bitmap(canvas));
    EXPECT_EQ(drawnQuad({{10, 10}, {10, 10}, {80, 80}, {80, 80}}, 10), Bitmap(canvas));
}

TEST(HostileMaps, collinearCornersAreHarmless) {
    (void)drawnQuad({{10, 10}, {50, 10}, {90, 10}, {60, 70}});
    (void)drawnQuad({{10, 10}, {90, 10}, {10, 70}, {50, 40}}, 12);
}

TEST(HostileMaps, crossedQuadsDrawThePartInFrontOfTheViewer) {
    // Left and right sides cross: the map's w changes sign inside the layer.
    const Quad crossed{{20, 10}, {100, 10}, {100, 80}, {20, 80}};
    const Recording recording = recordingOf(canvas, fittedLayer(picture(), crossed));
    const Bitmap drawn = drawnInside(recording);
    const Bitmap expected = renderReference(recording);
    int disagreeing = 0;
    for (std::size_t i = 3; i < drawn.bytes().size(); i += 4) {
        disagreeing += std::abs(drawn.bytes()[i] - expected.bytes()[i]) > 3 ? 1 : 0;
    }
    EXPECT_EQ(disagreeing, 0);
}

TEST(HostileMaps, horizonCrossingLayersAreCutBeforeTheyTurnInsideOut) {
    LayerDraw draw;
    draw.map = Homography{{1, 0, -0.02, 0, 1, 0, 20, 20, 1}}; // w = 0 at x = 50
    draw.shape = {makeRect(0, 0, 100, 30), 8};
    draw.fill = Color::black();
    const Recording recording = recordingOf(canvas, draw);
    EXPECT_TRUE(picturesAgree(renderReference(recording), drawnInside(recording), {2, 1, 0.01, 50}));
    draw.picture = picture();
    draw.pictureRect = draw.shape.rect;
    (void)drawnInside(recordingOf(canvas, draw));
}

TEST(HostileMaps, everythingBehindTheViewerDrawsNothing) {
    LayerDraw draw;
    draw.map = Homography{{1, 0, 0, 0, 1, 0, 0, 0, -1}};
    draw.shape = {makeRect(0, 0, 100, 80), 0};
    draw.fill = Color::black();
    EXPECT_EQ(drawnInside(recordingOf(canvas, draw)), Bitmap(canvas));
}

TEST(HostileMaps, numbersThatAreNoneDrawNothing) {
    for (const double bad : {notANumber, infinity, -infinity}) {
        for (std::size_t entry = 0; entry < 9; ++entry) {
            LayerDraw draw = fittedLayer(picture(), turnedQuad({60, 45}, {60, 40}, 10));
            draw.map.m[entry] = bad;
            EXPECT_EQ(drawnInside(recordingOf(canvas, draw)), Bitmap(canvas)) << entry;
        }
        LayerDraw draw;
        draw.fill = Color::black();
        draw.shape.rect = makeRect(bad, 0, 10, 10);
        EXPECT_EQ(drawnInside(recordingOf(canvas, draw)), Bitmap(canvas));
        draw.shape.rect = makeRect(0, 0, bad, 10);
        EXPECT_EQ(drawnInside(recordingOf(canvas, draw)), Bitmap(canvas));
        draw.shape = {makeRect(0, 0, 10, 10), bad};
        (void)drawnInside(recordingOf(canvas, draw));
        draw.shape.radius = 0;
        draw.picture = picture();
        draw.pictureRect = makeRect(0, bad, 10, bad);
        (void)drawnInside(recordingOf(canvas, draw));
        draw.borderWidth = bad;
        draw.borderColor = Color::black();
        draw.opacity = bad;
        (void)drawnInside(recordingOf(canvas, draw));
        draw.opacity = 1;
        draw.clips.push_back({Homography{{bad, 0, 0, 0, 1, 0, 0, 0, 1}}, draw.shape});
        EXPECT_EQ(drawnInside(recordingOf(canvas, draw)), Bitmap(canvas));
    }
}

TEST(HostileMaps, hugeMapsCostNoMoreThanTheCanvas) {
    const auto start = std::chrono::steady_clock::now();
    for (const double huge : {1e6, 1e9, 1e15, 1e100, 1e300}) {
        (void)drawnQuad({{-huge, -huge}, {huge, -huge}, {-huge, huge}, {huge, huge}}, 30);
        (void)drawnQuad({{-huge, -huge * 0.9}, {huge, -huge}, {-huge, huge * 0.7}, {huge * 0.8, huge}}, huge / 3);
        LayerDraw draw;
        draw.map = Homography::fromAffine({huge, 0, 0, 1 / huge, 0, 0});
        draw.shape = {makeRect(0, 0, 100, 30), 8};
        draw.picture = picture();
        draw.pictureRect = makeRect(-huge, -huge, huge, huge);
        (void)drawnInside(recordingOf(canvas, draw));
    }
    // Generous: a cost that grew with the map would be hours.
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
}

TEST(HostileMaps, tinyPicturesOfHugeOnesAreAveraged) {
    Bitmap checks({512, 512});
    for (int y = 0; y < 512; ++y) {
        for (int x = 0; x < 512; ++x) {
            std::fill_n(checks.row(y) + x * 4, 3, static_cast<std::uint8_t>((x ^ y) & 1 ? 255 : 0));
            checks.row(y)[x * 4 + 3] = 255;
        }
    }
    const Image image = Image::fromBitmap(std::move(checks));
    for (const double degrees : {0.0, 20.0}) {
        const Bitmap drawn =
            drawnInside(recordingOf(canvas, fittedLayer(image, turnedQuad({60, 45}, {9, 9}, degrees))));
        const std::uint8_t* center = drawn.row(45) + 60 * 4;
        EXPECT_NEAR(center[0], 128, 4);
        EXPECT_EQ(center[3], 255);
    }
}

TEST(HostileMaps, randomMapsStayInside) {
    std::mt19937 random(17);
    std::uniform_real_distribution<double> unit(-1, 1);
    const auto wild = [&] { return unit(random) * std::pow(10, unit(random) * 6); };
    for (int i = 0; i < 400; ++i) {
        LayerDraw draw;
        for (double& entry : draw.map.m) {
            entry = random() % 5 == 0 ? 0 : wild();
        }
        draw.shape = {makeRect(wild(), wild(), wild(), wild()), wild()};
        draw.picture = picture();
        draw.pictureRect = random() % 2 == 0 ? draw.shape.rect : makeRect(wild(), wild(), wild(), wild());
        draw.filter = random() % 2 == 0 ? PictureFilter::area : PictureFilter::smooth;
        draw.borderWidth = wild();
        draw.borderColor = {unit(random), unit(random), unit(random), unit(random)};
        draw.opacity = wild();
        if (random() % 2 == 0) {
            draw.fill = Color{unit(random), unit(random), unit(random), unit(random)};
        }
        if (random() % 2 == 0) {
            draw.clips.push_back({draw.map, {makeRect(wild(), wild(), wild(), wild()), wild()}});
        }
        (void)drawnInside(recordingOf(canvas, draw));
    }
}

TEST(HostileMaps, picturesThatBreakThePremultipliedRuleStayInRange) {
    Bitmap broken({4, 4});
    std::fill(broken.bytes().begin(), broken.bytes().end(), std::uint8_t{255});
    for (std::size_t i = 3; i < broken.bytes().size(); i += 4) {
        broken.bytes()[i] = 10;
    }
    const Image image = Image::fromBitmap(std::move(broken));
    Recording recording(canvas);
    LayerDraw paper;
    paper.shape = {makeRect(0, 0, 120, 90), 0};
    paper.fill = Color::white();
    recording.add(paper);
    recording.add(fittedLayer(image, turnedQuad({60, 45}, {60, 40}, 10)));
    const Bitmap drawn = drawnInside(recording);
    EXPECT_EQ(drawn.row(45)[60 * 4], 255) << "saturates";
}

} // namespace
} // namespace quillomat
