// `render --dump` and `replay`: the same picture from one file; and golden recordings and pictures of sample renders.
//
// A change that is meant to alter what is drawn renews the golden files, which are then looked at:
//     QUILLOMAT_RENEW_GOLDEN=1 build/test/tests/cli_commands_test --gtest_filter='Golden*'
#include "Command.h"
#include "PictureComparison.h"
#include "platform/graphics/RecordingFile.h"

namespace quillomat {
namespace {

using testing::contentOfFile;
using testing::isOneComplaint;
using testing::Ran;
using testing::Rgba;

std::span<const std::byte> bytesOf(const std::string& text) {
    return std::as_bytes(std::span(text));
}

class ReplayTest : public testing::CommandTest {
protected:
    std::string shot = addPicture("shot.png", 60, 130, [](int x, int y) {
        return Rgba{static_cast<std::uint8_t>(x * 4), static_cast<std::uint8_t>(y), static_cast<std::uint8_t>(x ^ y),
                    255};
    });
    std::string wide = addPicture("wide.png", 300, 100, [](int x, int y) {
        return Rgba{static_cast<std::uint8_t>(x), static_cast<std::uint8_t>(200 - y), 90, 255};
    });
    std::string out = folder.path("out.png");
    std::string recording = folder.path("drawn.rec");
    std::string again = folder.path("again.png");

    void expectSameAgain(testing::Words words) const {
        words.insert(words.begin(), "render");
        words.insert(words.end(), {"-o", out, "--dump", recording});
        const Ran first = run(words);
        ASSERT_EQ(first.status, 0) << first.err;
        const Ran second = run({"replay", recording, "-o", again});
        ASSERT_EQ(second.status, 0) << second.err;
        EXPECT_EQ(second.out + second.err, "");
        EXPECT_EQ(contentOfFile(again), contentOfFile(out));
    }
};

TEST_F(ReplayTest, aReplayWritesTheSameBytes) {
    expectSameAgain({"upright", "-s", shot});
    expectSameAgain({"tilted", "-s", shot, "-b", wide});
    expectSameAgain({"duo", "-s", shot, "-s", shot, "-b", wide, "--crop", "10,5,200,90"});
}

TEST_F(ReplayTest, aPhotographReplaysTheSame) {
    // Decoded smaller where fewer pixels do, and cut while it is decoded.
    const std::string photograph = std::string(QUILLOMAT_SOURCE_DIR) + "/resources/samples/background.jpg";
    expectSameAgain({"tilted", "-s", shot, "-b", photograph});
    expectSameAgain({"tilted", "-s", shot, "-b", photograph, "--blur"});
}

TEST_F(ReplayTest, theBestFileReplaysAsTheBestFile) {
    ASSERT_EQ(run({"render", "tilted", "-s", shot, "--best", "-o", out, "--dump", recording}).status, 0);
    ASSERT_EQ(run({"replay", recording, "--best", "-o", again}).status, 0);
    EXPECT_EQ(contentOfFile(again), contentOfFile(out));
}

TEST_F(ReplayTest, itNeedsNothingButTheFile) {
    ASSERT_EQ(run({"render", "upright", "-s", shot, "-o", out, "--dump", recording}).status, 0);
    std::filesystem::remove(shot);
    const Ran ran = runProgram(folder, {"replay", "-", "-o", "-", "--documents", folder.path("none")},
                               {.input = contentOfFile(recording)});
    EXPECT_EQ(ran.status, 0) << ran.err;
    EXPECT_EQ(ran.out, contentOfFile(out));
    EXPECT_FALSE(exists(folder.path("none")));
}

TEST_F(ReplayTest, jsonNamesThePictureAndItsSize) {
    ASSERT_EQ(run({"render", "upright", "-s", shot, "-o", out, "--dump", recording}).status, 0);
    const Ran ran = run({"replay", recording, "-o", again, "--json"});
    EXPECT_EQ(ran.json()["output"], Value::string(again));
    EXPECT_EQ(ran.json()["width"], Value::integer(480));
    EXPECT_EQ(run({"replay", recording, "-o", "-", "--json"}).status, 2);
}

TEST_F(ReplayTest, whatIsNoRecordingIsRefusedInOneLine) {
    const std::string cut = folder.add("cut.rec", "QMRECORD\1\0\0\0");
    for (const std::string& file : {shot, cut, folder.path("missing.rec"), folder.path()}) {
        const Ran ran = run({"replay", file, "-o", again});
        EXPECT_EQ(ran.status, 1) << file;
        EXPECT_TRUE(isOneComplaint(ran.err)) << ran.err;
        EXPECT_TRUE(ran.err.starts_with("quillomat: " + file + ": ")) << ran.err;
        EXPECT_FALSE(exists(again));
    }
}

TEST_F(ReplayTest, aDamagedPictureInsideIsNamedAndNothingIsWritten) {
    ASSERT_EQ(run({"render", "upright", "-s", shot, "-o", out, "--dump", recording}).status, 0);
    std::string text = contentOfFile(recording);
    text[text.rfind("IDAT") + 40] ^= 0x55;
    const std::string damaged = folder.add("damaged.rec", text);
    const Ran ran = run({"replay", damaged, "-o", again});
    EXPECT_EQ(ran.status, 1);
    EXPECT_TRUE(isOneComplaint(ran.err)) << ran.err;
    EXPECT_FALSE(exists(again));
}

TEST_F(ReplayTest, aDumpThatCannotBeWrittenIsAFailureAndNoPictureIsLeft) {
    const std::string nowhere = folder.path("no/folder/drawn.rec");
    const Ran ran = run({"render", "upright", "-s", shot, "-o", out, "--dump", nowhere});
    EXPECT_EQ(ran.status, 1);
    EXPECT_TRUE(ran.err.starts_with("quillomat: " + nowhere + ": ")) << ran.err;
    EXPECT_FALSE(exists(out));
}

class Golden : public ReplayTest {
protected:
    /// Compares what is recorded line by line, and what is drawn within a level or two: the numbers that kernels
    /// round with may change, what a picture shows may not.
    void expectGolden(const std::string& name, testing::Words words) const {
        words.insert(words.begin(), "render");
        words.insert(words.end(), {"-o", out, "--dump", recording});
        const Ran ran = run(words);
        ASSERT_EQ(ran.status, 0) << ran.err;
        const std::string file = contentOfFile(recording);
        const auto read = readRecordingFile(bytesOf(file));
        ASSERT_TRUE(read) << read.reason();
        const std::string golden = std::string(QUILLOMAT_SOURCE_DIR) + "/tests/golden/" + name;
        if (std::getenv("QUILLOMAT_RENEW_GOLDEN") != nullptr) {
            std::ofstream(golden + ".txt") << describeRecording(*read);
            ASSERT_EQ(run({"replay", recording, "--best", "-o", golden + ".png"}).status, 0);
        }
        EXPECT_EQ(describeRecording(*read), contentOfFile(golden + ".txt"));
        const auto expected = decodeImage(bytesOf(contentOfFile(golden + ".png")));
        const auto actual = decodeImage(bytesOf(contentOfFile(out)));
        ASSERT_TRUE(expected && actual);
        EXPECT_TRUE(picturesAgree(*expected, *actual, {.largest = 6, .noticeable = 2, .share = 0.01, .leastPsnr = 48}));
    }
};

TEST_F(Golden, upright) {
    expectGolden("upright", {"upright", "-s", shot});
}

TEST_F(Golden, tiltedOverABackground) {
    expectGolden("tilted-over-a-background", {"tilted", "-s", shot, "-b", wide, "--crop", "10,0,100,100"});
}

TEST_F(Golden, twoScreensOverABlurredBackground) {
    expectGolden("two-screens-over-a-blurred-background", {"duo", "-s", shot, "-s", shot, "-b", wide, "--blur"});
}

} // namespace
} // namespace quillomat
