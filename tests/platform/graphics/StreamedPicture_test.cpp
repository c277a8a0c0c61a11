#include "platform/graphics/raster/StreamedPicture.h"

#include "Photographs.h"
#include "codecs/ColorProfiles.h"
#include "codecs/TestPictures.h"
#include "platform/graphics/Cropping.h"
#include "platform/graphics/DrawnPictures.h"
#include "platform/graphics/PngWriter.h"
#include "platform/graphics/Rasterizer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <numeric>
#include <random>
#include <thread>

namespace quillomat::testing {
namespace {

bool isStreamed(const Recording& recording) {
    const auto streams = withStreamedPictures(recording).streams;
    return std::any_of(streams.begin(), streams.end(), [](const auto& stream) { return stream != nullptr; });
}

/// The first rows of bands, in some order.
using Order = std::vector<int>;

Order ascending(int height, int bandRows) {
    Order order;
    for (int y = 0; y < height; y += bandRows) {
        order.push_back(y);
    }
    return order;
}

Order shuffled(Order order) {
    std::shuffle(order.begin(), order.end(), std::mt19937(11));
    return order;
}

struct Drawn {
    Bitmap bitmap;
    bool isWhole = false;
    std::size_t mostBytes = 0;
};

/// Every row once, by threads that take the next band of the order each time.
Drawn drawnOnce(const Recording& recording, const Order& order, int bandRows, int threads) {
    const Rasterizer rasterizer(recording, RowUse::once, threads);
    Drawn drawn{Bitmap(recording.size()), false, 0};
    const std::size_t stride = drawn.bitmap.stride();
    const std::span<std::uint8_t> pixels = drawn.bitmap.bytes();
    std::atomic<std::size_t> next = 0;
    const auto work = [&] {
        for (std::size_t i = next++; i < order.size(); i = next++) {
            const int count = std::min(bandRows, recording.size().height - order[i]);
            rasterizer.rows(
                order[i], count,
                pixels.subspan(stride * static_cast<std::size_t>(order[i]), stride * static_cast<std::size_t>(count)));
        }
    };
    {
        std::vector<std::jthread> helpers;
        for (int i = 1; i < threads; ++i) {
            helpers.emplace_back(work);
        }
        work();
    }
    drawn.isWhole = rasterizer.finish();
    drawn.mostBytes = rasterizer.mostBytesOfStreams();
    return drawn;
}

void expectTheBitsOfTheWholePicture(const Recording& recording) {
    ASSERT_TRUE(isStreamed(recording));
    const Bitmap whole = rasterize(recording, 1);
    const int height = recording.size().height;
    for (const int bandRows : {1, 7, 32, height}) {
        const Order order = ascending(height, bandRows);
        for (const int threads : {1, 2, 4}) {
            for (const bool isShuffled : {false, true}) {
                const Drawn drawn = drawnOnce(recording, isShuffled ? shuffled(order) : order, bandRows, threads);
                EXPECT_TRUE(drawn.isWhole);
                EXPECT_EQ(drawn.bitmap, whole)
                    << "bands of " << bandRows << (isShuffled ? ", shuffled, " : ", ") << threads << " threads";
            }
        }
    }
}

TEST(StreamedPicture, stretchedPicturesHaveTheBitsOfTheWholeOne) {
    const Image picture = photograph({333, 251});
    for (const PixelSize canvas : {PixelSize{190, 140}, PixelSize{332, 250}, PixelSize{501, 380}, PixelSize{90, 500},
                                   PixelSize{640, 130}, PixelSize{7, 5}}) {
        SCOPED_TRACE(std::to_string(canvas.width) + " x " + std::to_string(canvas.height));
        expectTheBitsOfTheWholePicture(backgroundOf(picture, canvas));
    }
}

TEST(StreamedPicture, copiedPicturesHaveTheBitsOfTheWholeOne) {
    const Image picture = photograph({333, 251});
    expectTheBitsOfTheWholePicture(backgroundOf(picture, {333, 251}));
    expectTheBitsOfTheWholePicture(backgroundOf(picture, {200, 300}, makeRect(-50, 20, 333, 251)));
}

TEST(StreamedPicture, picturesBeyondTheCanvasAndShortOfItHaveTheBitsOfTheWholeOne) {
    const Image picture = photograph({333, 251});
    for (const Rect& rect : {makeRect(-100.3, -80.7, 500, 400), makeRect(30.25, 20.5, 100.5, 77),
                             makeRect(-300, -300, 400, 410), makeRect(20, 150, 170, 300)}) {
        expectTheBitsOfTheWholePicture(backgroundOf(picture, {211, 190}, rect));
    }
}

TEST(StreamedPicture, cutsHaveTheBitsOfTheWholeOne) {
    const Image picture = photograph({333, 251});
    for (const PixelRect& cut : {PixelRect{41, 0, 251, 251}, PixelRect{0, 26, 333, 200}, PixelRect{100, 100, 61, 33},
                                 PixelRect{332, 250, 1, 1}, PixelRect{16, 8, 300, 240}}) {
        expectTheBitsOfTheWholePicture(backgroundOf(croppedImage(picture, cut), {140, 150}));
        expectTheBitsOfTheWholePicture(backgroundOf(croppedImage(picture, cut), {311, 299}));
    }
}

TEST(StreamedPicture, picturesReducedWhileTheyAreDecodedHaveTheBitsOfTheReduction) {
    const Image cut = croppedImage(photograph({640, 480}), {80, 0, 480, 480});
    for (const int side : {239, 119, 55}) {
        expectTheBitsOfTheWholePicture(backgroundOf(cut, {side, side}));
    }
}

TEST(StreamedPicture, everySamplingOfTheColoursHasTheBitsOfTheWholeOne) {
    for (const JpegKind& kind :
         {JpegKind{.across = 1, .down = 1}, JpegKind{.across = 2, .down = 1}, JpegKind{.across = 1, .down = 2},
          JpegKind{.across = 4, .down = 1}, JpegKind{.isGray = true}, JpegKind{.hasInks = true},
          JpegKind{.isProgressive = true}, JpegKind{.restartRows = 2}}) {
        const Image picture = photograph({333, 251}, kind);
        expectTheBitsOfTheWholePicture(backgroundOf(croppedImage(picture, {50, 9, 217, 200}), {150, 140}));
        expectTheBitsOfTheWholePicture(backgroundOf(croppedImage(picture, {50, 9, 217, 200}), {217, 200}));
    }
}

TEST(StreamedPicture, profilesAreApplied) {
    const Image wide = photograph({120, 90}, {.profile = profileOf(1.8)});
    EXPECT_NE(*wide.bitmap(), *photograph({120, 90}).bitmap());
    expectTheBitsOfTheWholePicture(backgroundOf(wide, {80, 70}));
    expectTheBitsOfTheWholePicture(backgroundOf(wide, {150, 140}));
}

TEST(StreamedPicture, layersAboveAreDrawnOverIt) {
    BitmapContext context({211, 253});
    context.drawImage(photograph({333, 251}), makeRect(0, 0, 211, 253));
    context.drawLayer(
        fittedLayer(Image::fromBitmap(screenshotLike({160, 200})), {{30, 22}, {180, 30}, {45, 225}, {176, 212}}));
    context.drawImage(photograph({100, 50}), makeRect(20, 180.5, 150, 60));
    expectTheBitsOfTheWholePicture(context.recording());
}

TEST(StreamedPicture, whatNeedsThePictureOtherwiseIsDecodedWhole) {
    const Image picture = photograph({333, 251});
    const PixelSize canvas{100, 90};
    EXPECT_TRUE(isStreamed(backgroundOf(picture, canvas)));

    Recording twice = backgroundOf(picture, canvas);
    twice.add(twice.draws().front());
    EXPECT_FALSE(isStreamed(twice)) << "drawn twice";

    const auto changed = [&](auto change) {
        LayerDraw draw = backgroundOf(picture, canvas).draws().front();
        change(draw);
        return recordingOf(canvas, draw);
    };
    EXPECT_FALSE(isStreamed(changed([](LayerDraw& draw) { draw.filter = PictureFilter::area; })));
    EXPECT_FALSE(isStreamed(changed([](LayerDraw& draw) { draw.map.m[1] = 0.1; }))) << "sheared";
    EXPECT_FALSE(isStreamed(changed([](LayerDraw& draw) {
        draw.map = Homography::fromAffine({1, 0, 0, -1, 0, 90});
    }))) << "upside down";
    EXPECT_FALSE(isStreamed(backgroundOf(picture, {333, 10}))) << "halved beforehand";
    EXPECT_FALSE(isStreamed(backgroundOf(Image::fromBitmap(photographLike({333, 251})), canvas))) << "decoded";
    const SharedBitmap held = picture.bitmap();
    EXPECT_FALSE(isStreamed(backgroundOf(picture, {300, 250}))) << "held by somebody";
    EXPECT_TRUE(isStreamed(backgroundOf(picture, canvas))) << "held as pixels, wanted as planes";
    EXPECT_FALSE(isStreamed(backgroundOf(imageFromBytes(fixture("quarters.webp")).value(), canvas)));
}

TEST(StreamedPicture, turnedPhotographsAreDecodedWhole) {
    const std::vector<Image> images = photographInEachOrientation();
    if (images.empty()) {
        GTEST_SKIP() << "no pictures of every orientation";
    }
    for (std::size_t i = 0; i < images.size(); ++i) {
        EXPECT_EQ(isStreamed(backgroundOf(images[i], {300, 300})), i == 0) << "orientation " << i + 1;
    }
}

/// Drawn in order by one thread, no more is kept than its bands need.
TEST(StreamedPicture, fewRowsAreKept) {
    const Image picture = photograph({400, 1200});
    constexpr int bandRows = 16;
    struct Case {
        PixelSize canvas;
        std::size_t mostBytes;
    };
    for (const Case& now : {Case{{400, 1200}, 400 * 4 * bandRows}, // the picture's rows
                            Case{{350, 1000}, 350 * 4 * bandRows}, // the canvas's
                            Case{{800, 2400}, 400 * 4 * (bandRows / 2 + 4)}}) {
        const Order order = ascending(now.canvas.height, bandRows);
        const std::size_t kept = drawnOnce(backgroundOf(picture, now.canvas), order, bandRows, 1).mostBytes;
        EXPECT_GT(kept, 0U);
        EXPECT_LE(kept, now.mostBytes) << now.canvas.height << " rows";
    }
}

std::shared_ptr<raster::StreamedPicture> streamOf(const Image& picture, PixelSize canvas) {
    auto rows = picture.source()->rowsOfAtLeast({0, 0, picture.pixelSize().width, picture.pixelSize().height},
                                                picture.pixelSize());
    return raster::StreamedPicture::make(std::move(rows), backgroundOf(picture, canvas).draws().front(), canvas,
                                         raster::bestKernels());
}

TEST(StreamedPicture, aLimitedNumberOfRowsIsDecodedAhead) {
    const Image picture = photograph({1024, 4096}); // 16 MiB
    constexpr std::size_t rowBytes = 1024 * 4;
    constexpr std::size_t limit = (std::size_t{4} << 20) + 16 * rowBytes;
    const std::atomic<bool> isEnough = false;
    const auto stream = streamOf(picture, {1024, 4096});
    stream->runAhead(isEnough);
    EXPECT_GT(stream->mostBytes(), limit / 2);
    EXPECT_LE(stream->mostBytes(), limit);
    // Threads that share the rows go on with it between them.
    stream->claim(0, 16);
    for (int y = 16; y < 4096; y += 16) {
        stream->runAhead(isEnough);
        stream->claim(y, 16);
        stream->release(y - 16, 16);
    }
    stream->release(4080, 16);
    EXPECT_TRUE(stream->finish());
    EXPECT_LE(stream->mostBytes(), limit);
}

TEST(StreamedPicture, nothingIsDecodedAheadWhereThatIsEnough) {
    const Image picture = photograph({64, 640});
    const auto stream = streamOf(picture, {64, 640});
    const std::atomic<bool> isEnough = true;
    stream->runAhead(isEnough);
    EXPECT_EQ(stream->mostBytes(), 0U);
    stream->claim(0, 20);
    EXPECT_EQ(stream->mostBytes(), 20U * 64 * 4);
}

TEST(StreamedPicture, rowsThatWereDecodedAheadAreNotDecodedWhenTheyAreClaimed) {
    const Image picture = photograph({64, 640});
    const auto stream = streamOf(picture, {64, 640});
    const std::atomic<bool> isEnough = false;
    stream->runAhead(isEnough);
    const std::size_t ahead = stream->mostBytes();
    EXPECT_EQ(ahead, 640U * 64 * 4) << "there is room for all of it";
    for (int y = 0; y < 640; y += 20) {
        stream->claim(y, 20);
        stream->release(y, 20);
    }
    EXPECT_EQ(stream->mostBytes(), ahead);
    EXPECT_TRUE(stream->finish());
}

TEST(StreamedPicture, rowsAboveThePartThatShowsAreNotKept) {
    const Image picture = photograph({300, 2000});
    const Recording recording = backgroundOf(picture, {300, 100}, makeRect(0, -1900, 300, 2000));
    EXPECT_LE(drawnOnce(recording, ascending(100, 10), 10, 1).mostBytes, 300U * 4 * 32);
}

Bytes damagedAt(Bytes document, std::size_t place) {
    // Bytes that are no code: a marker where none may be.
    document[place] = std::byte{0xff};
    document[place + 1] = std::byte{0xd9};
    return document;
}

TEST(StreamedPicture, damageIsNoticedWhereverItIs) {
    const Bytes document = jpegOf(photographLike({333, 251}));
    for (std::size_t place = 700; place + 2 < document.size(); place += document.size() / 37) {
        for (const PixelSize canvas : {PixelSize{333, 251}, PixelSize{120, 100}}) {
            const Image image = imageFromBytes(damagedAt(document, place)).value();
            const Recording recording = backgroundOf(image, canvas);
            for (const int threads : {1, 3}) {
                EXPECT_FALSE(drawnOnce(recording, ascending(canvas.height, 16), 16, threads).isWhole) << place;
            }
        }
    }
}

TEST(StreamedPicture, damageBelowTheLastRowThatShowsIsNoticed) {
    const Bytes document = jpegOf(photographLike({333, 251}));
    const Image image = imageFromBytes(damagedAt(document, document.size() - 200)).value();
    const Recording recording = backgroundOf(image, {333, 50}, makeRect(0, 0, 333, 251));
    ASSERT_TRUE(isStreamed(recording));
    EXPECT_FALSE(drawnOnce(recording, ascending(50, 10), 10, 1).isWhole);
}

TEST(StreamedPicture, aDamagedBackgroundLeavesTheDocumentAndTheReasonOfAWholeOne) {
    const Bytes document = jpegOf(photographLike({333, 251}));
    const Image image = imageFromBytes(damagedAt(document, document.size() / 2)).value();
    BitmapContext context({120, 100});
    context.drawImage(image, makeRect(0, 0, 120, 100));
    context.drawImage(Image::fromBitmap(screenshotLike({50, 40})), makeRect(10, 10, 50, 40));
    ASSERT_EQ(image.bitmap(), nullptr);
    ASSERT_FALSE(isStreamed(context.recording())) << "known to be damaged";
    const Bytes without = *encodePng(context.makeImage());

    const Image fresh = imageFromBytes(damagedAt(document, document.size() / 2)).value();
    BitmapContext again({120, 100});
    again.drawImage(fresh, makeRect(0, 0, 120, 100));
    again.drawImage(Image::fromBitmap(screenshotLike({50, 40})), makeRect(10, 10, 50, 40));
    const Result<Bytes> png = encodePng(again.makeImage());
    ASSERT_TRUE(png);
    EXPECT_TRUE(*png == without);
    EXPECT_EQ(fresh.source()->failure(), image.source()->failure());
    EXPECT_EQ(fresh.source()->failure(), "truncated JPEG");
}

TEST(StreamedPicture, documentsAreTheSameOnAnyNumberOfThreads) {
    const Image picture = photograph({700, 900});
    const Image composed = imageOfRecording(backgroundOf(croppedImage(picture, {0, 100, 700, 700}), {500, 500}));
    const Bytes one = *encodePng(composed, PngEffort::fast, 1);
    EXPECT_EQ(*decodeImage(one), *composed.bitmap());
    for (const int threads : {2, 3, 8}) {
        EXPECT_EQ(*encodePng(composed, PngEffort::fast, threads), one) << threads << " threads";
    }
}

} // namespace
} // namespace quillomat::testing
