// The estimate is never below what a render takes, and says why it grows.
#include "cli/RenderMemory.h"

#include "Command.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace quillomat {
namespace {

constexpr std::uint64_t mebibyte = std::uint64_t{1} << 20;

RenderPlan::Picture pictureOf(PixelSize size, std::uint64_t documentBytes = mebibyte / 2) {
    RenderPlan::Picture picture;
    picture.header.size = size;
    picture.documentBytes = documentBytes;
    return picture;
}

/// A phone's screenshot in a frame as large as the canvas.
RenderPlan phone(int side) {
    RenderPlan plan;
    plan.canvas = {side, side};
    plan.screens.push_back({pictureOf({1290, 2796}), {side / 3, side * 2 / 3}});
    RenderPlan::Picture frame = pictureOf(plan.canvas);
    frame.header.mayBeInRuns = true;
    plan.overlays.push_back({frame, plan.canvas});
    return plan;
}

RenderPlan phoneOverPhotograph(int side) {
    RenderPlan plan = phone(side);
    RenderPlan::Picture photograph = pictureOf({4000, 3000});
    photograph.header.isKnownOpaque = true;
    photograph.header.isHalvedWhileDecoding = true;
    plan.background = {photograph, {500, 0, 3000, 3000}, plan.canvas, false};
    return plan;
}

TEST(RenderMemory, countsNoCanvas) {
    const RenderPlan small = phone(1500);
    RenderPlan large = small;
    large.canvas = {9000, 9000};
    EXPECT_LT(mostBytesOfRender(large), mostBytesOfRender(small) + std::uint64_t{9000} * 9000);
}

TEST(RenderMemory, countsWhatIsCutAndNotTheWholePhotograph) {
    const RenderPlan cut = phoneOverPhotograph(1500);
    RenderPlan whole = cut;
    whole.background->cut = {0, 0, 4000, 3000};
    EXPECT_EQ(mostBytesOfRender(whole) - mostBytesOfRender(cut), std::uint64_t{1000} * 3000 * 4);
}

TEST(RenderMemory, countsTheWholePictureWhereTheFormatCannotCut) {
    const RenderPlan cutWhileDecoding = phoneOverPhotograph(1500);
    RenderPlan cutAfterwards = cutWhileDecoding;
    cutAfterwards.background->picture.header.decoding.part = std::uint64_t{4000} * 3000 * 4;
    EXPECT_GT(mostBytesOfRender(cutAfterwards), mostBytesOfRender(cutWhileDecoding) + 30 * mebibyte);
}

TEST(RenderMemory, countsNoMoreOfABackgroundInRowsThanAFewBands) {
    const RenderPlan whole = phoneOverPhotograph(1500);
    RenderPlan inRows = whole;
    inRows.background->picture.header.mayBeInRows = true;
    EXPECT_LT(mostBytesOfRender(inRows), mostBytesOfRender(whole) - 25 * mebibyte);
    RenderPlan shrunkFar = inRows;
    shrunkFar.background->picture.header.isHalvedWhileDecoding = false;
    shrunkFar.background->drawn = {300, 300};
    EXPECT_GT(mostBytesOfRender(shrunkFar), mostBytesOfRender(whole));
}

TEST(RenderMemory, countsAHalvedCutOnlyWhereItsEdgesFallOnEvenPixels) {
    RenderPlan even = phoneOverPhotograph(600);
    RenderPlan odd = even;
    odd.background->cut.x = 501;
    EXPECT_EQ(mostBytesOfRender(odd) - mostBytesOfRender(even), std::uint64_t{3000} * 3000 * 4 * 3 / 4);
    even.background->picture.header.isHalvedWhileDecoding = false;
    EXPECT_EQ(mostBytesOfRender(odd), mostBytesOfRender(even));
}

TEST(RenderMemory, countsAFrameInRunsOnlyWhereItLiesOnTheCanvassPixels) {
    const RenderPlan onPixels = phone(3000);
    RenderPlan scaled = onPixels;
    scaled.overlays.front().drawn = {2999, 3000};
    EXPECT_GT(mostBytesOfRender(scaled), mostBytesOfRender(onPixels) + 20 * mebibyte);
    RenderPlan interlaced = onPixels;
    interlaced.overlays.front().picture.header.mayBeInRuns = false;
    EXPECT_GT(mostBytesOfRender(interlaced), mostBytesOfRender(onPixels) + 20 * mebibyte);
}

TEST(RenderMemory, countsTheHalvesOfAPictureThatIsShrunkFar) {
    const RenderPlan plain = phone(1500);
    RenderPlan shrunk = plain;
    shrunk.screens.front().screenshot.header.size = {1290 * 4, 2796 * 4};
    const std::uint64_t pixels = std::uint64_t{1290} * 2796 * 4;
    EXPECT_EQ(mostBytesOfRender(shrunk) - mostBytesOfRender(plain), pixels * (16 * 2 - 1));
}

TEST(RenderMemory, doesNotAddWhatIsGoneBeforeTheNextStage) {
    RenderPlan plan = phoneOverPhotograph(3000);
    const std::uint64_t before = mostBytesOfRender(plan);
    plan.background->picture.header.decoding = {mebibyte, mebibyte};
    EXPECT_EQ(mostBytesOfRender(plan), before) << "decoding takes less than writing";
    plan.background->picture.header.decoding = {400 * mebibyte, 400 * mebibyte};
    EXPECT_LT(mostBytesOfRender(plan), before + 400 * mebibyte);
    plan.background->isBlurred = true;
    plan.background->picture.header.decoding = {};
    EXPECT_LT(mostBytesOfRender(plan), before - 30 * mebibyte) << "a blurred background does not stay";
}

TEST(RenderMemory, growsWithEachSetting) {
    const RenderPlan plain = phoneOverPhotograph(3000);
    const auto with = [&](auto change) {
        RenderPlan plan = plain;
        change(plan);
        return mostBytesOfRender(plan);
    };
    EXPECT_GT(with([](RenderPlan& plan) { plan.smallestFile = true; }), mostBytesOfRender(plain));
    EXPECT_GT(with([](RenderPlan& plan) { plan.threads = 8; }), mostBytesOfRender(plain));
    EXPECT_GT(with([](RenderPlan& plan) { plan.keepsRecording = true; }), mostBytesOfRender(plain));
    EXPECT_GT(with([](RenderPlan& plan) { plan.intermediate = {100, 100}; }), mostBytesOfRender(plain));
    EXPECT_GT(with([](RenderPlan& plan) { plan.screens.push_back(plan.screens.front()); }), mostBytesOfRender(plain));
}

// Against the program ----------------------------------------------------------------------------------------------

class MeasuredRenderMemory : public testing::CommandTest {
protected:
    std::string out = folder.path("out.png");
    const std::string samples = QUILLOMAT_SOURCE_DIR "/resources/samples/";

    MeasuredRenderMemory() { resources = QUILLOMAT_SOURCE_DIR "/resources"; }

    /// What the refusal under a ceiling that no render keeps to says; 0 where it says nothing.
    [[nodiscard]] std::uint64_t estimateOf(testing::Words words) const {
        words.insert(words.end(), {"--memory", "20MiB"});
        const std::string complaint = run(words).err;
        const std::string before = "needs up to ";
        const auto at = complaint.find(before);
        return at == std::string::npos ? 0 : std::stoull(complaint.substr(at + before.size())) * mebibyte;
    }

    void expectCovered(testing::Words words) const {
        words.insert(words.begin(), "render");
        words.insert(words.end(), {"-o", out});
        SCOPED_TRACE(::testing::PrintToString(words));
        const std::uint64_t estimate = estimateOf(words);
        const testing::Ran ran = run(words);
        ASSERT_EQ(ran.status, 0) << ran.err;
        const std::uint64_t peak = static_cast<std::uint64_t>(ran.peakKilobytes) * 1024;
        EXPECT_GE(estimate, peak);
        // Where nothing is measured in time there is nothing to compare with.
        EXPECT_LT(estimate, std::max(peak * 5 / 2, 100 * mebibyte));
    }
};

TEST_F(MeasuredRenderMemory, isCoveredForTheCatalogue) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers have memory of their own";
#endif
    const std::string shot = samples + "screenshot.png";
    const std::string background = samples + "background.jpg";
    expectCovered({"phone-tilted", "-s", shot});
    expectCovered({"phone-tilted", "-s", shot, "-b", background, "--glare"});
    expectCovered({"phone-tilted", "-s", shot, "-b", background, "--blur"});
    expectCovered({"phone-tilted", "-s", shot, "-b", shot});
    expectCovered({"phone-tilted", "-s", shot, "--screen-scale", "2"});
    expectCovered({"phone-sand", "-s", shot});
    expectCovered({"phone-sand-large", "-s", shot, "-b", background});
    expectCovered({"phones-crossed", "-s", shot, "-s", samples + "screenshot-2.png", "-b", background});
    expectCovered({"watch", "-s", samples + "screenshot-wide.png", "-b", background, "--best"});
}

} // namespace
} // namespace quillomat
