// `render`: what it takes, where the picture goes, and what it refuses.
#include "Command.h"
#include "platform/foundation/TemporaryFiles.h"

#include <filesystem>
#include <fstream>

#include <sys/stat.h>

namespace quillomat {
namespace {

using testing::isOneComplaint;
using testing::pixelOf;
using testing::Ran;
using testing::Rgba;

class RenderTest : public testing::CommandTest {
protected:
    std::string shot = addPicture("shot.png", 30, 65, {200, 30, 30, 255});
    std::string out = folder.path("out.png");

    /// Runs `render` with `-o` and expects it to work.
    void render(testing::Words words) const {
        words.insert(words.begin(), "render");
        words.insert(words.end(), {"-o", out});
        const Ran ran = run(words);
        EXPECT_EQ(ran.status, 0);
        EXPECT_EQ(ran.out, "");
        EXPECT_EQ(ran.err, "");
    }
    void expectFailure(testing::Words words, int status, const std::string& complaint) const {
        words.insert(words.begin(), "render");
        words.insert(words.end(), {"-o", out});
        const Ran ran = run(words);
        EXPECT_EQ(ran.status, status);
        EXPECT_EQ(ran.out, "");
        EXPECT_EQ(ran.err, "quillomat: " + complaint + "\n");
        EXPECT_FALSE(exists(out));
    }
    /// Left half red, right half blue, with a stripe above and below that the centred cut takes away.
    std::string addWideBackground() const {
        return addPicture("wide.png", 300, 100, [](int x, int) {
            return x < 100 || x >= 200 ? Rgba{0, 0, 255, 255} : Rgba{255, 200, 0, 255};
        });
    }
};

TEST_F(RenderTest, aScreenshotBecomesAMockupOfTheCanvassSize) {
    render({"upright", "-s", shot});
    EXPECT_EQ(sizeOf(out), (PixelSize{480, 480}));
    EXPECT_EQ(pixelOf(out, 240, 240), (Rgba{200, 30, 30, 255})) << "the screenshot on the screen";
    EXPECT_EQ(pixelOf(out, 2, 2)[3], 0) << "and nothing beside the device";
}

TEST_F(RenderTest, theBestFileIsSmallerAndShowsTheSame) {
    const std::string drawn = addPicture("drawn.png", 90, 195, [](int x, int y) {
        return Rgba{static_cast<std::uint8_t>(x * y), static_cast<std::uint8_t>(y), 90, 255};
    });
    render({"upright", "-s", drawn});
    const auto fast = imageFromFile(SystemFileManager(), out);
    const std::size_t fastSize = testing::contentOfFile(out).size();
    render({"upright", "-s", drawn, "--best"});
    const auto best = imageFromFile(SystemFileManager(), out);
    ASSERT_TRUE(fast && best);
    EXPECT_EQ(*fast->bitmap(), *best->bitmap());
    EXPECT_LT(testing::contentOfFile(out).size(), fastSize);
}

TEST_F(RenderTest, jsonNamesThePictureAndItsSize) {
    const Ran ran = run({"render", "upright", "-s", shot, "-o", out, "--json"});
    EXPECT_EQ(ran.status, 0);
    const Value report = ran.json();
    EXPECT_EQ(report["output"], Value::string(out));
    EXPECT_EQ(report["width"], Value::integer(480));
    EXPECT_EQ(report["height"], Value::integer(480));
    EXPECT_TRUE(report.contains("milliseconds"));
    EXPECT_EQ(report.count(), 4U);
}

TEST_F(RenderTest, dashIsStandardInputAndStandardOutput) {
    render({"upright", "-s", shot});
    const Ran piped = run({"render", "upright", "-s", "-", "-o", "-"}, {.input = testing::contentOfFile(shot)});
    EXPECT_EQ(piped.status, 0);
    EXPECT_EQ(piped.err, "");
    EXPECT_EQ(piped.out, testing::contentOfFile(out));
}

TEST_F(RenderTest, brokenStandardInputIsNamed) {
    const Ran ran = run({"render", "upright", "-s", "-", "-o", out}, {.input = "no picture"});
    EXPECT_EQ(ran.status, 1);
    EXPECT_TRUE(ran.err.starts_with("quillomat: standard input: ")) << ran.err;
    EXPECT_TRUE(isOneComplaint(ran.err));
    EXPECT_FALSE(exists(out));
}

TEST_F(RenderTest, jsonAndAPictureDoNotShareStandardOutput) {
    const Ran ran = run({"render", "upright", "-s", shot, "-o", "-", "--json"});
    EXPECT_EQ(ran.status, 2);
    EXPECT_EQ(ran.out, "");
    EXPECT_TRUE(isOneComplaint(ran.err));
}

TEST_F(RenderTest, anExistingOutputIsReplaced) {
    folder.add("out.png", "old");
    render({"upright", "-s", shot});
    EXPECT_EQ(sizeOf(out), (PixelSize{480, 480}));
}

TEST_F(RenderTest, aFailureLeavesAnExistingOutputAsItWas) {
    folder.add("out.png", "old");
    EXPECT_EQ(run({"render", "upright", "-s", folder.path("nowhere.png"), "-o", out}).status, 1);
    EXPECT_EQ(folder.contentOf("out.png"), "old");
}

TEST_F(RenderTest, aFullDiskLeavesNothingHalfWritten) {
    folder.add("there/out.png", "old");
    const Ran ran = run({"render", "upright", "-s", shot, "-o", folder.path("there/out.png")}, {.fileSize = 2000});
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.err, "quillomat: " + folder.path("there/out.png") + ": file too large\n");
    EXPECT_EQ(folder.contentOf("there/out.png"), "old");
    EXPECT_EQ(namesIn(folder.path("there")), testing::Words{"out.png"});
}

TEST_F(RenderTest, aBackgroundThatBreaksOffLeavesNothingHalfWritten) {
    const std::string whole = std::string(QUILLOMAT_SOURCE_DIR) + "/resources/samples/background.jpg";
    const std::string broken = folder.path("broken.jpg");
    const std::string bytes = testing::contentOfFile(whole);
    std::ofstream(broken, std::ios::binary) << bytes.substr(0, bytes.size() / 2);
    expectFailure({"upright", "-s", shot, "-b", broken}, 1, broken + ": truncated JPEG");
    render({"upright", "-s", shot, "-b", whole});
    for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
        EXPECT_FALSE(isTemporaryFileName(entry.path().filename().string())) << entry.path();
    }
}

TEST_F(RenderTest, anOutputThatCannotBeWrittenIsNamed) {
    std::filesystem::create_directory(folder.path("directory"));
    for (const std::string& bad : {folder.path("directory"), folder.path("nowhere/out.png"), shot + "/out.png"}) {
        const Ran ran = run({"render", "upright", "-s", shot, "-o", bad});
        EXPECT_EQ(ran.status, 1);
        EXPECT_TRUE(isOneComplaint(ran.err)) << ran.err;
        EXPECT_TRUE(ran.err.starts_with("quillomat: " + bad + ": ")) << ran.err;
    }
}

TEST_F(RenderTest, aLinkIsFollowedAndStays) {
    const std::string target = folder.add("target.png", "old");
    std::filesystem::create_symlink(target, folder.path("link.png"));
    EXPECT_EQ(run({"render", "upright", "-s", shot, "-o", folder.path("link.png")}).status, 0);
    EXPECT_TRUE(std::filesystem::is_symlink(folder.path("link.png")));
    EXPECT_EQ(sizeOf(target), (PixelSize{480, 480}));
}

TEST_F(RenderTest, aPipeIsWrittenIntoAndStays) {
    const std::string pipe = folder.path("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    // Open for both, so that nobody waits for anybody, with room for the whole picture.
    const int reader = ::open(pipe.c_str(), O_RDWR | O_NONBLOCK);
    ASSERT_GE(::fcntl(reader, F_SETPIPE_SZ, 1 << 20), 1 << 20);
    EXPECT_EQ(run({"render", "upright", "-s", shot, "-o", pipe}).status, 0);
    std::string arrived(1 << 20, '\0');
    arrived.resize(static_cast<std::size_t>(std::max<ssize_t>(::read(reader, arrived.data(), arrived.size()), 0)));
    ::close(reader);
    EXPECT_TRUE(std::filesystem::is_fifo(pipe));
    render({"upright", "-s", shot});
    EXPECT_EQ(arrived, testing::contentOfFile(out));
}

TEST_F(RenderTest, missingPngIsAddedAndUnknownNamesGetTheThreeNearest) {
    render({"upright.png", "-s", shot});
    const std::string withEnding = testing::contentOfFile(out);
    render({"upright", "-s", shot});
    EXPECT_EQ(testing::contentOfFile(out), withEnding);
    std::filesystem::remove(out);
    expectFailure({"dou", "-s", shot}, 1, "dou: no such mockup; did you mean duo.png, pair.png or tall.png?");
}

// Screens ----------------------------------------------------------------------------------------------------------

TEST_F(RenderTest, twoScreenshotsFillTwoScreensInTheirOrder) {
    const std::string blue = addPicture("blue.png", 30, 65, {20, 40, 220, 255});
    render({"duo", "-s", shot, "-s", blue});
    EXPECT_EQ(sizeOf(out), (PixelSize{520, 480}));
    EXPECT_EQ(pixelOf(out, 170, 220), (Rgba{200, 30, 30, 255}));
    EXPECT_EQ(pixelOf(out, 340, 260), (Rgba{20, 40, 220, 255}));
}

TEST_F(RenderTest, theNumberOfScreenshotsIsTheNumberOfScreens) {
    expectFailure({"duo", "-s", shot}, 1, "duo.png: takes two screenshots, not 1");
    expectFailure({"upright", "-s", shot, "-s", shot}, 1, "upright.png: takes one screenshot, not 2");
    EXPECT_EQ(run({"render", "duo", "-s", shot, "-s", shot, "-s", shot}).status, 2);
}

TEST_F(RenderTest, aLargeNameTakesItsPictureWithoutTheMarker) {
    render({"pair-large", "-s", shot});
    EXPECT_EQ(sizeOf(out), (PixelSize{480, 480}));
    render({"pair", "-s", shot});
    EXPECT_EQ(sizeOf(out), (PixelSize{240, 240}));
}

TEST_F(RenderTest, aVeryTallScreenIsRenderedAtHalfSizeAndSaysSoInTheLog) {
    const Ran ran = run({"-v", "render", "tall", "-s", shot, "-o", out});
    EXPECT_EQ(ran.status, 0);
    EXPECT_NE(ran.err.find("RESET OVER A BUNCH\n"), std::string::npos);
    EXPECT_EQ(sizeOf(out), (PixelSize{2520, 3440}));
}

// Background -------------------------------------------------------------------------------------------------------

TEST_F(RenderTest, aBackgroundIsCutAroundItsCentreToTheCanvassShape) {
    render({"upright", "-s", shot, "-b", addWideBackground()});
    for (const int x : {1, 478}) {
        EXPECT_EQ(pixelOf(out, x, 1), (Rgba{255, 200, 0, 255})) << "the middle third, undistorted";
    }
    EXPECT_EQ(pixelOf(out, 240, 240), (Rgba{200, 30, 30, 255}));
}

TEST_F(RenderTest, aCropIsUsedAsGiven) {
    render({"upright", "-s", shot, "-b", addWideBackground(), "--crop", "0,0,100,100"});
    EXPECT_EQ(pixelOf(out, 478, 1), (Rgba{0, 0, 255, 255}));
}

TEST_F(RenderTest, aCropOfAnotherShapeIsStretchedWithAWarning) {
    const std::string wide = addWideBackground();
    const Ran ran = run({"render", "upright", "-s", shot, "-b", wide, "--crop", "0,0,300,100", "-o", out});
    EXPECT_EQ(ran.status, 0);
    EXPECT_EQ(ran.err,
              "quillomat: warning: " + wide + ": the crop has another shape than the canvas and is stretched to it\n");
    EXPECT_EQ(pixelOf(out, 1, 1), (Rgba{0, 0, 255, 255}));
    EXPECT_EQ(pixelOf(out, 478, 1), (Rgba{0, 0, 255, 255}));
}

TEST_F(RenderTest, aCropThatLeavesThePictureIsRefused) {
    const std::string wide = addWideBackground();
    expectFailure({"upright", "-s", shot, "-b", wide, "--crop", "201,0,100,100"}, 1,
                  wide + ": the crop does not lie inside its 300 x 100 pixels");
    for (const char* crop : {"1,2,3", "a,b,c,d", "0,0,0,5", "-1,0,5,5", "0,0,5,5,5", "0,0,99999999999,5", ""}) {
        const Ran ran = run({"render", "upright", "-s", shot, "-b", wide, "--crop", crop, "-o", out});
        EXPECT_EQ(ran.status, 2) << crop;
        EXPECT_TRUE(isOneComplaint(ran.err)) << ran.err;
    }
}

TEST_F(RenderTest, cropAndBlurNeedABackground) {
    expectFailure({"upright", "-s", shot, "--blur"}, 2, "render: --blur needs a background (-b)");
    expectFailure({"upright", "-s", shot, "--crop", "0,0,5,5"}, 2, "render: --crop needs a background (-b)");
}

TEST_F(RenderTest, blurSoftensTheBackground) {
    const std::string edge = addPicture("edge.png", 200, 200, [](int x, int) {
        return x < 20 ? Rgba{255, 255, 255, 255} : Rgba{0, 0, 0, 255};
    });
    render({"upright", "-s", shot, "-b", edge});
    const Rgba sharp = pixelOf(out, 42, 5);
    render({"upright", "-s", shot, "-b", edge, "--blur"});
    const Rgba soft = pixelOf(out, 42, 5);
    EXPECT_GE(sharp[0], 250) << "the edge is at 48";
    EXPECT_GT(soft[0], 160);
    EXPECT_LT(soft[0], 240);
}

TEST_F(RenderTest, withoutABackgroundTheSurroundingsAreTransparent) {
    render({"upright", "-s", shot});
    EXPECT_EQ(pixelOf(out, 1, 1), (Rgba{0, 0, 0, 0}));
}

// Glare ------------------------------------------------------------------------------------------------------------

TEST_F(RenderTest, glareIsDrawnWhenAskedFor) {
    render({"upright", "-s", shot});
    const std::string plain = testing::contentOfFile(out);
    render({"upright", "-s", shot, "--glare"});
    EXPECT_NE(testing::contentOfFile(out), plain);
}

TEST_F(RenderTest, glareForAMockupWithoutOneIsRefused) {
    expectFailure({"tilted", "-s", shot, "--glare"}, 1, "tilted.png: has no glare picture");
}

// Imports ----------------------------------------------------------------------------------------------------------

TEST_F(RenderTest, anImportedMockupIsRenderedWithAndWithoutAnAuthor) {
    import("credited", "Ada");
    import("plain", "");
    render({"credited", "-s", shot});
    EXPECT_EQ(sizeOf(out), (PixelSize{60, 80}));
    EXPECT_EQ(pixelOf(out, 30, 40), (Rgba{200, 30, 30, 255}));
    EXPECT_EQ(pixelOf(out, 2, 2), (Rgba{40, 200, 60, 255}));
    const std::string credited = testing::contentOfFile(out);
    render({"plain", "-s", shot});
    EXPECT_EQ(testing::contentOfFile(out), credited);
}

TEST_F(RenderTest, anImportWithAnAuthorTakesNoBackgroundAndNoGlare) {
    import("credited", "Ada");
    expectFailure({"credited", "-s", shot, "-b", shot}, 1,
                  "credited.png: an imported mockup with an author takes no background");
    expectFailure({"credited", "-s", shot, "--glare"}, 1,
                  "credited.png: an imported mockup with an author takes no glare");
}

TEST_F(RenderTest, anImportWithoutAnAuthorTakesABackground) {
    import("plain", "");
    const std::string clear = addPicture("mine/clear.png", 60, 80, Rgba{0, 0, 0, 0});
    std::filesystem::copy_file(clear, documents + "/plain.png", std::filesystem::copy_options::overwrite_existing);
    render({"plain", "-s", shot, "-b", addPicture("teal.png", 50, 50, {0, 120, 120, 255})});
    EXPECT_EQ(pixelOf(out, 2, 2), (Rgba{0, 120, 120, 255}));
}

TEST_F(RenderTest, anImportNamedLikeABuiltInChangesTheDefinitionAndNotThePicture) {
    import("upright", "");
    render({"upright", "-s", shot});
    EXPECT_EQ(sizeOf(out), (PixelSize{60, 80}));
    EXPECT_NE(pixelOf(out, 2, 2), (Rgba{40, 200, 60, 255})) << "the resources' picture comes first";
}

// Settings ---------------------------------------------------------------------------------------------------------

TEST_F(RenderTest, theScreenScaleChangesIntermediatePicturesAndNotTheCanvas) {
    const std::string fine = addPicture("fine.png", 700, 1500, [](int x, int y) {
        return (x / 2 + y / 2) % 2 == 0 ? Rgba{255, 255, 255, 255} : Rgba{0, 0, 0, 255};
    });
    render({"tilted", "-s", fine});
    const std::string plain = testing::contentOfFile(out);
    render({"tilted", "-s", fine, "--screen-scale", "0.25"});
    EXPECT_EQ(sizeOf(out), (PixelSize{480, 480}));
    EXPECT_NE(testing::contentOfFile(out), plain);
}

TEST_F(RenderTest, theCeilingIsHeldAndNamed) {
    const Ran ran = run({"render", "tall", "-s", shot, "-o", out, "--memory", "20MiB"});
    EXPECT_EQ(ran.status, 1);
    EXPECT_TRUE(ran.err.starts_with("quillomat: tall.png: needs up to ")) << ran.err;
    EXPECT_TRUE(ran.err.ends_with(" MiB, over the ceiling of 20 MiB (see --memory)\n")) << ran.err;
    EXPECT_FALSE(exists(out));
    render({"tall", "-s", shot});
}

TEST_F(RenderTest, aMissingFramePictureIsNamed) {
    import("plain", "");
    std::filesystem::remove(documents + "/plain.png");
    folder.add("documents/main.json", R"({"tableItems": [{"typeLabel": "R"}], "viewInfo":
        {"R": {"images": ["gone-large.png"]}, "Imported": {"images": []}},
        "editInfo": {"gone-large.png": {"finalFrameWidth": 9, "finalFrameHeight": 9}}})");
    expectFailure({"gone-large", "-s", shot}, 1, "gone-large.png: its frame picture gone.png is missing");
}

TEST_F(RenderTest, aFramePictureThatCannotBeUsedIsNamedWithTheReason) {
    import("plain", "");
    folder.add("documents/plain.png", "no picture");
    const Ran ran = run({"render", "plain", "-s", shot, "-o", out});
    EXPECT_EQ(ran.status, 1);
    EXPECT_TRUE(isOneComplaint(ran.err)) << ran.err;
    EXPECT_TRUE(ran.err.starts_with("quillomat: plain.png: its frame picture plain.png: ")) << ran.err;
}

// Pictures folder --------------------------------------------------------------------------------------------------

TEST_F(RenderTest, withoutAnOutputThePictureGoesToThePicturesFolder) {
    const testing::RunSettings settings{.environment = {{"XDG_PICTURES_DIR", folder.path("pictures")}}};
    const Ran first = run({"render", "upright", "-s", shot}, settings);
    const Ran second = run({"render", "upright", "-s", shot}, settings);
    EXPECT_EQ(first.status, 0);
    const auto names = namesIn(folder.path("pictures"));
    ASSERT_EQ(names.size(), 2U) << "no picture is ever replaced";
    EXPECT_TRUE(names[0].starts_with("Mockup ") && names[0].ends_with(".png")) << names[0];
    EXPECT_EQ(first.out.substr(0, folder.path("pictures").size()), folder.path("pictures"));
    EXPECT_TRUE(exists(first.out.substr(0, first.out.size() - 1))) << first.out;
    EXPECT_NE(first.out, second.out);
}

TEST_F(RenderTest, withJsonThePicturesFoldersNameIsInTheReport) {
    const Ran ran = run({"render", "upright", "-s", shot, "--json"},
                        {.environment = {{"XDG_PICTURES_DIR", folder.path("pictures")}}});
    EXPECT_EQ(ran.json()["output"], Value::string(folder.path("pictures") + "/" + namesIn(folder.path("pictures"))[0]));
}

TEST_F(RenderTest, aPicturesFolderThatCannotBeMadeIsAFailure) {
    const Ran ran = run({"render", "upright", "-s", shot}, {.environment = {{"XDG_PICTURES_DIR", shot + "/below"}}});
    EXPECT_EQ(ran.status, 1);
    EXPECT_TRUE(isOneComplaint(ran.err)) << ran.err;
}

} // namespace
} // namespace quillomat
