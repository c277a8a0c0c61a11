// Whatever is wrong with what comes in: one line, status 1, no output, and no more memory than was announced.
#include "Command.h"

namespace quillomat {
namespace {

using testing::isOneComplaint;
using testing::Ran;
using testing::Rgba;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr long programsOwnKilobytes = 600 * 1024;
#else
constexpr long programsOwnKilobytes = 120 * 1024;
#endif

class BadInputTest : public testing::CommandTest {
protected:
    std::string shot = addPicture("shot.png", 30, 65);
    std::string out = folder.path("out.png");

    void expectRefusal(const testing::Words& words, const std::string& start) const {
        const Ran ran = run(words, {.limit = std::chrono::seconds(20)});
        EXPECT_EQ(ran.status, 1) << ran.err;
        EXPECT_EQ(ran.out, "");
        EXPECT_TRUE(isOneComplaint(ran.err)) << ran.err;
        EXPECT_TRUE(ran.err.starts_with("quillomat: " + start)) << ran.err;
        EXPECT_FALSE(exists(out));
        EXPECT_LT(ran.peakKilobytes, programsOwnKilobytes);
    }
    void expectRefusedScreenshot(const std::string& path) const {
        SCOPED_TRACE(path);
        expectRefusal({"render", "upright", "-s", path, "-o", out}, path + ": ");
    }
    /// A catalogue of one mockup, "frame.png", with a definition of that text, over a 60 x 80 frame.
    void addMockup(const std::string& definition) {
        resources = folder.path("resources");
        addPicture("resources/images/frame.png", 60, 80, Rgba{0, 0, 0, 0});
        folder.add("resources/main.json",
                   R"({"version": "1", "tableItems": [{"typeLabel": "Row"}],
                       "viewInfo": {"Row": {"images": ["frame.png"]}, "Imported": {"images": []}},
                       "editInfo": {"frame.png": )" +
                       definition + "}}");
    }
    /// A definition with a canvas of that size and a screen at those corners: top left, top right, bottom left,
    /// bottom right, "x,y" each in JSON.
    static std::string definitionOf(const std::string& width, const std::string& height,
                                    const std::array<std::pair<const char*, const char*>, 4>& corners) {
        std::string text = "{\"finalFrameWidth\": " + width + ", \"finalFrameHeight\": " + height +
                           ", \"frameWidth\": 60, \"frameHeight\": 80, \"cornerRadius\": 0";
        const std::array names{"topLeft", "topRight", "bottomLeft", "bottomRight"};
        for (std::size_t i = 0; i < 4; ++i) {
            text += std::string(", \"F") + names[i] + "X\": " + corners[i].first + ", \"F" + names[i] +
                    "Y\": " + corners[i].second;
        }
        return text + "}";
    }
    static constexpr std::array<std::pair<const char*, const char*>, 4> screen{
        {{"0", "0"}, {"40", "0"}, {"0", "60"}, {"40", "60"}}};
    /// Whatever the corners are, the picture is made or refused, in time and in bounds.
    void expectEnd(const std::string& definition) {
        addMockup(definition);
        std::filesystem::remove(out);
        const Ran ran = run({"render", "frame", "-s", shot, "-o", out}, {.limit = std::chrono::seconds(20)});
        EXPECT_TRUE(ran.status == 0 || ran.status == 1) << definition << ran.err;
        EXPECT_EQ(exists(out), ran.status == 0);
        EXPECT_TRUE(ran.status == 0 ? ran.err.empty() : isOneComplaint(ran.err)) << ran.err;
        EXPECT_LT(ran.peakKilobytes, programsOwnKilobytes) << definition;
    }
    static std::string header(unsigned width, unsigned height) {
        const Bytes small = testing::tinyPng(1, 1);
        std::vector<std::uint8_t> body;
        testing::tiny_png_detail::appendBigEndian(body, width);
        testing::tiny_png_detail::appendBigEndian(body, height);
        body.insert(body.end(), {8, 6, 0, 0, 0});
        std::vector<std::uint8_t> text(8);
        std::transform(small.begin(), small.begin() + 8, text.begin(),
                       [](std::byte byte) { return std::to_integer<std::uint8_t>(byte); });
        testing::tiny_png_detail::appendChunk(text, "IHDR", body);
        testing::tiny_png_detail::appendChunk(text, "IDAT", testing::tiny_png_detail::storedZlib({0, 0, 0, 0, 0}));
        testing::tiny_png_detail::appendChunk(text, "IEND", {});
        return {text.begin(), text.end()};
    }
};

// Pictures ---------------------------------------------------------------------------------------------------------

TEST_F(BadInputTest, picturesThatCannotBeRead) {
    std::filesystem::create_directory(folder.path("directory"));
    std::filesystem::create_symlink(folder.path("loop"), folder.path("loop"));
    for (const std::string& path : {folder.path("nowhere.png"), folder.path("directory"), folder.path("loop"),
                                    std::string("/dev/zero"), folder.add("empty.png", "")}) {
        expectRefusedScreenshot(path);
    }
}

TEST_F(BadInputTest, picturesThatAreNone) {
    for (const std::string& path :
         {folder.add("text.png", "not a picture"), folder.add("zeros.png", std::string(100000, '\0')),
          folder.add("signature.png", "\x89PNG\r\n\x1a\n"), folder.add("frame.cfg", "{}")}) {
        expectRefusedScreenshot(path);
    }
}

TEST_F(BadInputTest, picturesThatAreCutShort) {
    for (const char* name : {"truncated-in-the-header.jpg", "truncated-in-the-scan.jpg", "truncated.heic",
                             "truncated.webp", "without-end-marker.jpg"}) {
        expectRefusedScreenshot(picture(name));
    }
    const std::string whole = testing::contentOfFile(resources + "/images/upright.png");
    for (const std::size_t length : {std::size_t{20}, std::size_t{60}, whole.size() / 2, whole.size() - 20}) {
        expectRefusedScreenshot(folder.add("cut.png", whole.substr(0, length)));
    }
}

TEST_F(BadInputTest, picturesThatAreTooLargeAreRefusedFromTheirHeader) {
    expectRefusedScreenshot(picture("announces-65000-a-side.jpg"));
    expectRefusedScreenshot(picture("zero-width.jpg"));
    for (const auto& [width, height] : {std::pair{30001U, 1U},
                                        {1U, 30001U},
                                        {20000U, 20000U},
                                        {0U, 5U},
                                        {0x7fffffffU, 0x7fffffffU},
                                        {0xffffffffU, 1U}}) {
        expectRefusedScreenshot(folder.add("large.png", header(width, height)));
    }
}

TEST_F(BadInputTest, aPictureThatAnnouncesMuchAndHoldsLittleTakesLittle) {
    // Below the limit, and 900 MB if it were believed at once.
    const std::string hollow = folder.add("hollow.png", header(15000, 15000));
    expectRefusal({"render", "upright", "-s", hollow, "-o", out, "--memory", "4GiB"}, hollow + ": ");
}

TEST_F(BadInputTest, damagedBackgroundsAreNamed) {
    const std::string bad = picture("truncated-in-the-scan.jpg");
    expectRefusal({"render", "upright", "-s", shot, "-b", bad, "-o", out}, bad + ": ");
}

TEST_F(BadInputTest, theSecondScreenshotIsNamedWhenItIsTheDamagedOne) {
    const std::string bad = picture("truncated.webp");
    expectRefusal({"render", "duo", "-s", shot, "-s", bad, "-o", out}, bad + ": ");
}

TEST_F(BadInputTest, aDamagedFramePictureIsSaid) {
    addMockup(definitionOf("60", "80", screen));
    const std::string whole = testing::contentOfFile(testing::fixturesPath("catalogue/images/upright.png"));
    folder.add("resources/images/frame.png", whole.substr(0, whole.size() / 2));
    expectRefusal({"render", "frame", "-s", shot, "-o", out}, "frame.png: ");
}

TEST_F(BadInputTest, namesWithControlCharactersStayOneLine) {
    expectRefusal({"render", "upright", "-s", folder.path("a\nb\x1b[31m.png"), "-o", out},
                  folder.path("a?b?[31m.png") + ": ");
}

// JSON -------------------------------------------------------------------------------------------------------------

TEST_F(BadInputTest, cataloguesThatAreNoneHaveNoMockups) {
    const std::string deep(100000, '[');
    const std::string deepObjects = [] {
        std::string text;
        for (int i = 0; i < 100000; ++i) {
            text += "{\"a\":";
        }
        return text;
    }();
    const std::string huge = "{\"version\": \"" + std::string(std::size_t{80} << 20, 'v') + "\"}";
    resources = folder.path("resources");
    for (const std::string& text :
         {std::string(), std::string("{"), std::string("nonsense"), deep, deepObjects, deep + std::string(100000, ']'),
          huge, std::string("\xff\xfe{}"), std::string("{\"editInfo\": [], \"viewInfo\": 3, \"tableItems\": \"x\"}")}) {
        folder.add("resources/main.json", text);
        expectRefusal({"render", "frame", "-s", shot, "-o", out}, "frame: no such mockup");
        const Ran list = run({"list"}, {.limit = std::chrono::seconds(20)});
        EXPECT_EQ(list.status, 0);
        EXPECT_EQ(list.out, "");
    }
}

TEST_F(BadInputTest, wrongTypesEverywhereAreNothing) {
    resources = folder.path("resources");
    folder.add("resources/main.json", R"({"version": {}, "tableItems": [1, null, [], {"typeLabel": 5}, "x"],
        "viewInfo": {"5": {"images": [7, null, {"a": 1}, [], "ok.png"]}, "Imported": {"images": []}},
        "editInfo": {"ok.png": "text", "7": 9}})");
    const Ran list = run({"list"});
    EXPECT_EQ(list.status, 0);
    EXPECT_NE(list.out.find("5\tok.png\t0 x 0\t1 screen"), std::string::npos) << list.out;
    expectRefusal({"render", "ok", "-s", shot, "-o", out}, "ok.png: ");
}

TEST_F(BadInputTest, aHugeNumberOfImportsIsStillAnswered) {
    for (int i = 0; i < 300; ++i) {
        folder.add("documents/frame" + std::to_string(i) + ".cfg", std::string(200, '['));
    }
    EXPECT_EQ(run({"list"}, {.limit = std::chrono::seconds(20)}).status, 0);
}

// Definitions ------------------------------------------------------------------------------------------------------

TEST_F(BadInputTest, canvasesWithoutExtentAreRefused) {
    for (const char* size : {"0", "-5", "null", "\"\"", "\"nan\"", "\"-\"", "[]", "{}", "true", "0.9"}) {
        SCOPED_TRACE(size);
        addMockup(definitionOf(size, "80", screen));
        const Ran ran = run({"render", "frame", "-s", shot, "-o", out});
        EXPECT_EQ(ran.status, std::string(size) == "true" ? ran.status : 1);
        EXPECT_TRUE(ran.status == 0 || ran.err == "quillomat: frame.png: its canvas has no extent\n") << ran.err;
        std::filesystem::remove(out);
    }
    addMockup("{}");
    expectRefusal({"render", "frame", "-s", shot, "-o", out}, "frame.png: its canvas has no extent");
}

TEST_F(BadInputTest, giganticCanvasesAreRefused) {
    for (const char* size : {"30001", "2147483647", "1e300", "99999999999999999999999", "\"4000000000\"", "17000"}) {
        SCOPED_TRACE(size);
        addMockup(definitionOf(size, size, screen));
        expectRefusal({"render", "frame", "-s", shot, "-o", out}, "frame.png: its canvas is over the limit");
    }
}

TEST_F(BadInputTest, aCanvasOverTheCeilingIsRefused) {
    addMockup(definitionOf("8000", "8000", screen));
    expectRefusal({"render", "frame", "-s", shot, "-b", shot, "-o", out, "--memory", "128MiB"},
                  "frame.png: needs up to ");
}

TEST_F(BadInputTest, absentNegativeAndEnormousCornersComeToAnEnd) {
    expectEnd(R"({"finalFrameWidth": 60, "finalFrameHeight": 80})");
    for (const char* value : {"-1", "-2147483648", "2147483647", "1e300", "\"inf\"", "\"nan\"", "\"0x7f\"",
                              "\"99999999999999\"", "[[]]", "100000"}) {
        SCOPED_TRACE(value);
        expectEnd(definitionOf("60", "80", {{{value, "0"}, {"40", "0"}, {"0", value}, {"40", "60"}}}));
        expectEnd(definitionOf("60", "80", {{{"0", "0"}, {value, "0"}, {"0", value}, {value, value}}}));
    }
}

TEST_F(BadInputTest, degenerateQuadsComeToAnEnd) {
    expectEnd(definitionOf("60", "80", {{{"5", "5"}, {"5", "5"}, {"5", "5"}, {"5", "5"}}}));
    expectEnd(definitionOf("60", "80", {{{"0", "0"}, {"20", "20"}, {"40", "40"}, {"60", "60"}}}));
    expectEnd(definitionOf("60", "80", {{{"0", "0"}, {"40", "0"}, {"0", "0"}, {"40", "0"}}}));
    expectEnd(definitionOf("60", "80", {{{"0", "0"}, {"40", "0"}, {"0", "60"}, {"0", "0"}}}));
}

TEST_F(BadInputTest, crossedQuadsComeToAnEnd) {
    expectEnd(definitionOf("60", "80", {{{"0", "0"}, {"40", "60"}, {"0", "60"}, {"40", "0"}}}));
    expectEnd(definitionOf("60", "80", {{{"40", "0"}, {"0", "0"}, {"0", "60"}, {"40", "60"}}}));
}

TEST_F(BadInputTest, quadsThatCrossTheHorizonComeToAnEnd) {
    expectEnd(definitionOf("60", "80", {{{"0", "0"}, {"40", "0"}, {"19", "60"}, {"20", "1"}}}));
    expectEnd(definitionOf("60", "80", {{{"0", "0"}, {"10", "10"}, {"10", "12"}, {"2000", "2000"}}}));
    expectEnd(definitionOf("60", "80", {{{"0", "0"}, {"40", "0"}, {"10", "20"}, {"11", "20"}}}));
}

TEST_F(BadInputTest, strangeRadiiFramesAndGlaresComeToAnEnd) {
    const std::string rest = definitionOf("60", "80", screen).substr(1);
    for (const char* extra : {"\"cornerRadius\": -5, ", "\"cornerRadius\": 2147483647, ", "\"noCorner\": {}, ",
                              "\"frameWidth\": -60, ", "\"frameWidth\": 1e300, ", "\"frameHeight\": 2147483647, ",
                              "\"overlay\": 7, ", "\"overlay\": \"../../frame.png\", "}) {
        SCOPED_TRACE(extra);
        expectEnd(std::string("{") + extra + rest);
    }
}

} // namespace
} // namespace quillomat
