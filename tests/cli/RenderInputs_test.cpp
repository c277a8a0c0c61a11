// The pictures people have: large screenshots, photographs that lie on their side, other colour spaces and formats.
#include "Command.h"

#include "PictureComparison.h"
#include "TinyPng.h"

namespace quillomat {
namespace {

using testing::pixelOf;
using testing::Ran;
using testing::Rgba;

class RenderInputsTest : public testing::CommandTest {
protected:
    /// Renders and gives the pixel at a quarter of the screen of "upright": left or right, above or below.
    [[nodiscard]] Rgba quarter(bool isRight, bool isBelow) const {
        return pixelOf(folder.path("out.png"), isRight ? 290 : 190, isBelow ? 330 : 140);
    }
    void render(const std::string& shot) const {
        const Ran ran = run({"render", "upright", "-s", shot, "-o", folder.path("out.png")});
        EXPECT_EQ(ran.status, 0);
        EXPECT_EQ(ran.err, "");
    }
    static void expectNear(Rgba actual, Rgba expected, int tolerance) {
        for (std::size_t i = 0; i < 4; ++i) {
            EXPECT_NEAR(actual[i], expected[i], tolerance) << "channel " << i;
        }
    }
    /// Red and green above, blue and nearly white below: the picture of the fixtures.
    void expectQuarters(int tolerance) const {
        expectNear(quarter(false, false), {230, 40, 40, 255}, tolerance);
        expectNear(quarter(true, false), {40, 200, 60, 255}, tolerance);
        expectNear(quarter(false, true), {40, 60, 220, 255}, tolerance);
        expectNear(quarter(true, true), {240, 240, 240, 255}, tolerance);
    }
    static std::string corpora() {
        const char* place = std::getenv("QUILLOMAT_CORPORA");
        return place != nullptr ? place : std::string(QUILLOMAT_SOURCE_DIR) + "/../shared/corpora";
    }
};

TEST_F(RenderInputsTest, aPhonesScreenshotInPng) {
    render(addPicture("shot.png", 1290, 2796, [](int x, int y) {
        return y < 1398 ? (x < 645 ? Rgba{230, 40, 40, 255} : Rgba{40, 200, 60, 255})
                        : (x < 645 ? Rgba{40, 60, 220, 255} : Rgba{240, 240, 240, 255});
    }));
    expectQuarters(0);
}

TEST_F(RenderInputsTest, jpegWebpHeicAndAvif) {
    for (const char* name : {"quarters.jpg", "quarters.webp", "quarters.heic", "quarters.avif"}) {
        SCOPED_TRACE(name);
        render(picture(name));
        expectQuarters(12);
    }
}

TEST_F(RenderInputsTest, displayP3BecomesTheSameColours) {
    for (const char* name : {"quarters-display-p3.heic", "quarters-display-p3.webp"}) {
        SCOPED_TRACE(name);
        render(picture(name));
        EXPECT_NE(quarter(true, true), (Rgba{0, 0, 0, 0}));
        const Rgba white = quarter(true, true);
        EXPECT_NEAR(white[0], white[1], 4) << "grey stays grey";
        EXPECT_NEAR(white[1], white[2], 4);
        const Rgba red = quarter(false, false);
        EXPECT_GE(red[0], 230) << "a wide red is at least as strong in the narrower space";
        EXPECT_LE(red[1], 48);
    }
}

TEST_F(RenderInputsTest, aPictureThatIsTurnedByItsDataIsUpright) {
    for (const char* name : {"turned-exif-with-header.webp", "turned-exif-without-header.webp"}) {
        SCOPED_TRACE(name);
        render(picture(name));
        expectQuarters(12);
    }
}

TEST_F(RenderInputsTest, aPhonesPhotographIsUprightInAllOrientations) {
    const std::string folderOfPhotos = corpora() + "/exif-orientation";
    if (!exists(folderOfPhotos)) {
        GTEST_SKIP() << "no photographs at " << folderOfPhotos;
    }
    Bitmap upright;
    for (const char* number : {"1", "3", "6", "8"}) {
        SCOPED_TRACE(number);
        render(folderOfPhotos + "/Portrait_" + number + ".jpg");
        const std::string text = testing::contentOfFile(folder.path("out.png"));
        const auto mockup = decodeImage(std::as_bytes(std::span(text.data(), text.size())));
        ASSERT_TRUE(mockup);
        if (upright.size().isEmpty()) {
            upright = *mockup;
        }
        // Each is a JPEG of its own, so that only their noise may differ.
        EXPECT_GT(differenceBetween(upright, *mockup).psnr, 30);
    }
}

TEST_F(RenderInputsTest, aPictureIsKnownByItsContentAndNotByItsName) {
    render(folder.add("heic-called.png", testing::contentOfFile(picture("quarters.heic"))));
    expectQuarters(12);
}

TEST_F(RenderInputsTest, halfTransparentScreenshotsLetTheBackgroundThrough) {
    const std::string clear = addPicture("clear.png", 40, 80, Rgba{0, 0, 0, 0});
    const std::string teal = addPicture("teal.png", 50, 50, Rgba{0, 120, 120, 255});
    const Ran ran = run({"render", "upright", "-s", clear, "-b", teal, "-o", folder.path("out.png")});
    EXPECT_EQ(ran.status, 0);
    expectNear(quarter(false, false), {0, 0, 0, 255}, 0); // black stands behind every screenshot
}

} // namespace
} // namespace quillomat
