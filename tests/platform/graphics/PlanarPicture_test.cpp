#include "platform/graphics/PlanarPicture.h"

#include "EveryTarget.h"
#include "Photographs.h"
#include "PictureComparison.h"
#include "codecs/ColorProfiles.h"
#include "codecs/TestPictures.h"
#include "platform/graphics/Cropping.h"
#include "platform/graphics/DrawnPictures.h"
#include "platform/graphics/Rasterizer.h"
#include "platform/graphics/ReferenceRenderer.h"
#include "platform/graphics/raster/PlanarStretch.h"

#include <gtest/gtest.h>

namespace quillomat::testing {
namespace {

std::shared_ptr<const PlanarPicture> planesDrawn(const Recording& recording, std::size_t draw = 0) {
    return withDecodedPictures(recording).draws()[draw].picture.source()->planes();
}

std::unique_ptr<PlaneReader> planesOf(const Image& image) {
    return image.source()->planesOfAtLeast({0, 0, image.pixelSize().width, image.pixelSize().height},
                                           image.pixelSize());
}

/// Two roundings of bytes and weights of 1/112 on either side.
constexpr PictureTolerance asGoodAsPixels{.largest = 3, .noticeable = 1, .share = 0.01, .leastPsnr = 53};

/// Drawn out of its planes the picture is what stretching its decoded pixels exactly would give.
void expectPlanesAreAsGoodAsPixels(const Image& image, PixelSize canvas, const Rect& rect) {
    const Recording recording = backgroundOf(image, canvas, rect);
    ASSERT_NE(planesDrawn(recording), nullptr);
    const Bitmap drawn = rasterize(recording);
    const Bitmap exact = renderReference(backgroundOf(Image::fromBitmap(*image.bitmap()), canvas, rect));
    EXPECT_TRUE(picturesAgree(exact, drawn, asGoodAsPixels));
}

void expectPlanesAreAsGoodAsPixels(const Image& image, PixelSize canvas) {
    expectPlanesAreAsGoodAsPixels(image, canvas, makeRect(0, 0, canvas.width, canvas.height));
}

TEST(PlanarPicture, everySamplingOfTheColoursIsAsGoodAsPixels) {
    for (const JpegKind& kind :
         {JpegKind{.across = 1, .down = 1}, JpegKind{.across = 2, .down = 1}, JpegKind{.across = 2, .down = 2},
          JpegKind{.across = 2, .down = 2, .isProgressive = true},
          JpegKind{.across = 2, .down = 2, .restartRows = 2}}) {
        SCOPED_TRACE(std::to_string(kind.across) + " x " + std::to_string(kind.down));
        for (const PixelSize size : {PixelSize{334, 252}, PixelSize{333, 251}, PixelSize{331, 257}}) {
            expectPlanesAreAsGoodAsPixels(photograph(size, kind), {201, 150});
            expectPlanesAreAsGoodAsPixels(photograph(size, kind), {120, 166});
        }
    }
}

TEST(PlanarPicture, cutsAtAnyPlaceAreAsGoodAsPixels) {
    for (const JpegKind& kind : {JpegKind{.across = 2, .down = 1}, JpegKind{}}) {
        const Image picture = photograph({333, 251}, kind);
        for (const PixelRect& cut : {PixelRect{41, 0, 251, 251}, PixelRect{40, 1, 250, 250}, PixelRect{0, 27, 333, 200},
                                     PixelRect{101, 101, 61, 33}, PixelRect{272, 218, 61, 33}}) {
            SCOPED_TRACE(std::to_string(cut.x) + ", " + std::to_string(cut.y));
            const Image part = croppedImage(picture, cut);
            expectPlanesAreAsGoodAsPixels(part, {cut.width * 3 / 5, cut.height * 3 / 5});
        }
    }
}

TEST(PlanarPicture, picturesBeyondTheCanvasAreAsGoodAsPixels) {
    expectPlanesAreAsGoodAsPixels(photograph({333, 251}), {150, 100}, makeRect(-20.3, -10.7, 201, 150.5));
    expectPlanesAreAsGoodAsPixels(photograph({333, 251}), {150, 130}, makeRect(-60, -30, 222, 160));
}

/// Reductions recover chroma as large as luma where they can.
TEST(PlanarPicture, reductionsAreThoseOfThePixels) {
    for (const JpegKind& kind : {JpegKind{.across = 1, .down = 1}, JpegKind{.across = 2, .down = 1}, JpegKind{}}) {
        const Image picture = photograph({640, 480}, kind);
        for (const int factor : {2, 4}) {
            const PixelSize least{640 / factor, 480 / factor};
            const auto planes = picture.source()->planarPartOfAtLeast({0, 0, 640, 480}, least);
            const SharedBitmap pixels = picture.source()->bitmapOfAtLeast(least);
            ASSERT_NE(planes, nullptr);
            ASSERT_EQ(planes->size(), least);
            ASSERT_EQ(pixels->size(), least);
            const PixelSize canvas{least.width / 2, least.height / 2};
            const Recording recording = backgroundOf(picture, canvas);
            ASSERT_EQ(planesDrawn(recording)->size(), least);
            const Bitmap exact = renderReference(backgroundOf(Image::fromBitmap(pixels), canvas));
            EXPECT_TRUE(picturesAgree(exact, rasterize(recording), asGoodAsPixels));
        }
    }
}

TEST(PlanarPicture, anEighthOfHalvedChromaIsLeftToThePixels) {
    const Image picture = photograph({640, 480}, {.across = 2, .down = 1});
    EXPECT_EQ(picture.source()->planesOfAtLeast({0, 0, 640, 480}, {80, 60}), nullptr);
    EXPECT_EQ(planesDrawn(backgroundOf(picture, {40, 30})), nullptr);
    EXPECT_NE(planesDrawn(backgroundOf(photograph({640, 480}), {40, 30})), nullptr) << "chroma as large as luma then";
}

TEST(PlanarPicture, anyPartOfARowIsThatOfTheWholeRow) {
    const Image picture = photograph({333, 251});
    const PixelSize canvas{200, 150};
    const Recording recording = backgroundOf(picture, canvas);
    raster::SamplerScratch scratch;
    onEveryTarget([&](const char* target) {
        const raster::PlanarSampler sampler(planesDrawn(recording), recording.draws().front(), {0, 0, 200, 150},
                                            raster::bestKernels());
        const raster::PlanarSampler shifted(planesDrawn(recording), recording.draws().front(), {37, 50, 190, 60},
                                            raster::bestKernels());
        for (const int y : {0, 51, 59, 149}) {
            std::vector<std::uint8_t> whole(800);
            sampler.row(y, 0, 200, whole.data(), scratch);
            for (const raster::Span& columns :
                 {raster::Span{0, 1}, {3, 20}, {37, 190}, {90, 91}, {130, 200}, {199, 200}}) {
                std::vector<std::uint8_t> part(static_cast<std::size_t>(columns.length()) * 4);
                const auto expectSame = [&](const raster::PlanarSampler& from) {
                    from.row(y, columns.left, columns.right, part.data(), scratch);
                    EXPECT_TRUE(std::equal(part.begin(), part.end(), whole.begin() + columns.left * 4))
                        << target << ", row " << y << ", " << columns.left << " to " << columns.right;
                };
                expectSame(sampler);
                if (columns.left >= 37 && columns.right <= 190 && y >= 50 && y < 60) {
                    expectSame(shifted);
                }
            }
        }
    });
}

TEST(PlanarPicture, whatIsNotStoredInPlanesOrMustBeConvertedIsDecodedToPixels) {
    for (const JpegKind& kind : {JpegKind{.across = 1, .down = 2}, JpegKind{.across = 4, .down = 1},
                                 JpegKind{.isGray = true}, JpegKind{.hasInks = true}}) {
        EXPECT_EQ(planesOf(photograph({120, 90}, kind)), nullptr);
    }
    EXPECT_EQ(planesOf(imageFromBytes(fixture("quarters.webp")).value()), nullptr);
    EXPECT_EQ(planesOf(Image::fromBitmap(photographLike({120, 90}))), nullptr);
    EXPECT_NE(planesOf(photograph({120, 90})), nullptr);
}

TEST(PlanarPicture, coloursOfAProfileAreConvertedAsPixels) {
    const Image wide = photograph({120, 90}, {.profile = profileOf(1.8)});
    EXPECT_EQ(planesOf(wide), nullptr);
    const Recording recording = backgroundOf(wide, {60, 45});
    EXPECT_EQ(planesDrawn(recording), nullptr);
    EXPECT_EQ(rasterize(recording), rasterize(backgroundOf(Image::fromBitmap(*wide.bitmap()), {60, 45})));
}

TEST(PlanarPicture, turnedPhotographsAreDecodedToPixels) {
    const std::vector<Image> images = photographInEachOrientation();
    if (images.empty()) {
        GTEST_SKIP() << "no pictures of every orientation";
    }
    for (std::size_t i = 0; i < images.size(); ++i) {
        EXPECT_EQ(planesOf(images[i]) != nullptr, i == 0) << "orientation " << i + 1;
    }
}

TEST(PlanarPicture, onlyPicturesDrawnMuchSmallerAreDrawnOutOfPlanes) {
    const Image picture = photograph({300, 240});
    const auto isPlanar = [](const Recording& recording) { return planesDrawn(recording) != nullptr; };
    EXPECT_TRUE(isPlanar(backgroundOf(picture, {200, 160})));
    EXPECT_FALSE(isPlanar(backgroundOf(picture, {201, 160})));
    EXPECT_FALSE(isPlanar(backgroundOf(picture, {200, 161})));
    EXPECT_FALSE(isPlanar(backgroundOf(picture, {300, 240})));
    EXPECT_FALSE(isPlanar(backgroundOf(picture, {400, 300}, makeRect(0, 0, 200, 160)))) << "a larger canvas";
    EXPECT_TRUE(isPlanar(backgroundOf(croppedImage(picture, {1, 1, 299, 239}), {60, 48})));
    EXPECT_FALSE(isPlanar(backgroundOf(croppedImage(picture, {1, 1, 299, 239}), {30, 24})))
        << "cut where it cannot be reduced, and halved beforehand therefore";
    const auto changed = [&](auto change) {
        LayerDraw draw = backgroundOf(picture, {100, 80}).draws().front();
        change(draw);
        return recordingOf({100, 80}, draw);
    };
    EXPECT_TRUE(isPlanar(changed([](LayerDraw&) {})));
    EXPECT_FALSE(isPlanar(changed([](LayerDraw& draw) { draw.filter = PictureFilter::area; })));
    EXPECT_FALSE(isPlanar(changed([](LayerDraw& draw) { draw.map.m[1] = 0.1; }))) << "sheared";
    EXPECT_FALSE(isPlanar(changed([](LayerDraw& draw) {
        draw.map = Homography::fromAffine({1, 0, 0, -1, 0, 80});
    }))) << "upside down";
}

TEST(PlanarPicture, eachDrawDecidesForItself) {
    const Image picture = photograph({300, 240});
    BitmapContext context({150, 120});
    context.drawImage(picture, makeRect(0, 0, 150, 120));
    context.drawImage(picture, makeRect(10, 10, 290, 230));
    context.drawImage(picture, makeRect(0, 0, 100, 80));
    EXPECT_NE(planesDrawn(context.recording(), 0), nullptr);
    EXPECT_EQ(planesDrawn(context.recording(), 1), nullptr);
    EXPECT_EQ(planesDrawn(context.recording(), 2), planesDrawn(context.recording(), 0)) << "decoded once";
    const Bitmap alone = rasterize(backgroundOf(picture, {150, 120}));
    BitmapContext first({150, 120});
    first.drawImage(picture, makeRect(0, 0, 150, 120));
    first.drawImage(picture, makeRect(150, 0, 300, 240)); // beside the canvas
    EXPECT_EQ(rasterize(first.recording()), alone);
}

TEST(PlanarPicture, planesAreKeptWhileSomebodyHoldsThem) {
    const Image picture = photograph({320, 240});
    const auto first = planesDrawn(backgroundOf(picture, {150, 110}));
    EXPECT_EQ(planesDrawn(backgroundOf(picture, {170, 120})), first);
    EXPECT_EQ(planesDrawn(backgroundOf(croppedImage(picture, {0, 0, 320, 240}), {170, 120})), first);
    EXPECT_NE(planesDrawn(backgroundOf(croppedImage(picture, {0, 0, 300, 240}), {150, 120})), first);
    EXPECT_NE(planesDrawn(backgroundOf(picture, {80, 60})), first) << "a reduction";
}

/// Whatever pixels of the picture somebody holds.
TEST(PlanarPicture, whatIsDrawnDoesNotDependOnWhatIsHeld) {
    const Image picture = photograph({320, 240});
    const Recording recording = backgroundOf(picture, {150, 110});
    const Bitmap drawn = rasterize(recording);
    const SharedBitmap held = picture.bitmap();
    EXPECT_EQ(rasterize(recording), drawn);
    const auto planes = picture.source()->planarPartOfAtLeast({0, 0, 320, 240}, {160, 120});
    EXPECT_EQ(rasterize(recording), drawn);
}

TEST(PlanarPicture, damageIsReportedAsForPixels) {
    const Bytes document = jpegOf(photographLike({333, 251}));
    for (std::size_t place = 700; place + 2 < document.size(); place += document.size() / 17) {
        Bytes damaged = document;
        damaged[place] = std::byte{0xff};
        damaged[place + 1] = std::byte{0xd9};
        const std::string reason = decodeImage(damaged).reason();
        ASSERT_FALSE(reason.empty());
        const Image image = imageFromBytes(damaged).value();
        const Recording recording = backgroundOf(image, {150, 110});
        EXPECT_EQ(planesDrawn(recording), nullptr);
        EXPECT_EQ(image.source()->failure(), reason);
        EXPECT_EQ(rasterize(recording), Bitmap({150, 110}));
        EXPECT_EQ(planesOf(image), nullptr) << "known to be damaged";
    }
}

TEST(PlanarPicture, rowsAboveAndBelowThePartAreNotKept) {
    const Image picture = photograph({64, 640});
    const auto planes = picture.source()->planarPartOfAtLeast({0, 200, 64, 100}, {64, 100});
    ASSERT_NE(planes, nullptr);
    int kept = 0;
    for (int y = 0; y < 640; ++y) {
        kept += planes->rows(Plane::luma)[y] != nullptr ? 1 : 0;
    }
    EXPECT_GE(kept, 100);
    EXPECT_LE(kept, 100 + 2 * 16);
    EXPECT_NE(planes->rows(Plane::luma)[200], nullptr);
    EXPECT_NE(planes->rows(Plane::redChroma)[99], nullptr);
    EXPECT_NE(planes->rows(Plane::blueChroma)[150], nullptr);
}

/// A narrow cut out of a wide picture takes no more memory than its pixels, and is drawn the same.
TEST(PlanarPicture, columnsFarBesideThePartAreNotKept) {
    for (const JpegKind& kind : {JpegKind{.across = 1, .down = 1}, JpegKind{.across = 2, .down = 1}, JpegKind{}}) {
        const Image picture = photograph({701, 120}, kind);
        for (const int left : {0, 1, 300, 301, 641}) {
            const Image part = croppedImage(picture, {left, 0, 60, 120});
            const Recording recording = backgroundOf(part, {31, 61});
            EXPECT_LE(planesDrawn(recording)->layout().size.width, 60 + 6);
            const auto reader = planesOf(part);
            const auto wide = std::make_shared<PlanarPicture>(reader->layout());
            while (wide->end() < 120) {
                ASSERT_TRUE(wide->append(*reader));
            }
            const raster::PlanarSampler sampler(wide, recording.draws().front(), {0, 0, 31, 61}, raster::bestKernels());
            raster::SamplerScratch scratch;
            Bitmap expected({31, 61});
            for (int y = 0; y < 61; ++y) {
                sampler.row(y, 0, 31, expected.row(y), scratch);
            }
            EXPECT_EQ(rasterize(recording), expected) << left;
        }
    }
}

} // namespace
} // namespace quillomat::testing
