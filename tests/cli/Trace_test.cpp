// `--trace`: what the stages of a command are, where they are written, and what becomes of it when that fails.
#include "Command.h"
#include "TraceDocument.h"

namespace quillomat {
namespace {

using testing::Ran;
using testing::readTrace;
using testing::Rgba;
using testing::TraceDocument;

class TraceTest : public testing::CommandTest {
protected:
    std::string shot = addPicture("shot.png", 30, 65, {200, 30, 30, 255});
    std::string out = folder.path("out.png");
    std::string trace = folder.path("trace.json");
};

TEST_F(TraceTest, aRenderShowsItsStages) {
    const std::string wide = addPicture("wide.png", 300, 100, Rgba{20, 30, 200, 255});
    const Ran ran = run({"render", "upright", "-s", shot, "-b", wide, "-o", out, "--trace", trace});
    EXPECT_EQ(ran.status, 0) << ran.err;
    EXPECT_EQ(ran.out + ran.err, "");
    EXPECT_TRUE(exists(out));
    const TraceDocument document = readTrace(testing::contentOfFile(trace));
    for (const char* stage : {"command", "load catalogue", "read file", "record composition", "decode picture", "plan",
                              "draw rows", "straighten", "filter", "deflate", "write PNG", "flush file"}) {
        EXPECT_GE(document.count(stage), 1U) << stage;
    }
    EXPECT_GE(document.count("decode picture"), 3U) << "screenshot, background, frame";
    EXPECT_TRUE(document.isWellNested());
    EXPECT_TRUE(document.threadNames.contains("main"));
}

TEST_F(TraceTest, thePictureIsTheSameAsWithout) {
    EXPECT_EQ(run({"render", "upright", "-s", shot, "-o", out}).status, 0);
    EXPECT_FALSE(exists(trace)) << "nothing is written when nobody asks";
    const std::string traced = folder.path("traced.png");
    EXPECT_EQ(run({"--trace", trace, "render", "upright", "-s", shot, "-o", traced}).status, 0);
    EXPECT_EQ(testing::contentOfFile(traced), testing::contentOfFile(out));
}

TEST_F(TraceTest, aCommandThatFailsIsTracedTooAndFails) {
    const Ran ran = run({"render", "upright", "-s", folder.path("missing.png"), "-o", out, "--trace", trace});
    EXPECT_EQ(ran.status, 1);
    EXPECT_TRUE(testing::isOneComplaint(ran.err)) << ran.err;
    EXPECT_EQ(readTrace(testing::contentOfFile(trace)).count("command"), 1U);
}

TEST_F(TraceTest, aTraceThatCannotBeWrittenIsAFailureInOneLine) {
    const std::string nowhere = folder.path("no/such/folder/trace.json");
    const Ran ran = run({"list", "--trace", nowhere});
    EXPECT_EQ(ran.status, 1);
    EXPECT_TRUE(ran.err.starts_with("quillomat: " + nowhere + ": ")) << ran.err;
    EXPECT_TRUE(testing::isOneComplaint(ran.err)) << ran.err;
    const Ran directory = run({"list", "--trace", folder.path()});
    EXPECT_EQ(directory.status, 1);
    EXPECT_EQ(directory.err, "quillomat: " + folder.path() + ": is a directory\n");
}

TEST_F(TraceTest, aFormerTraceIsReplacedWhole) {
    folder.add("trace.json", std::string(1 << 20, 'x'));
    EXPECT_EQ(run({"list", "--trace", trace}).status, 0);
    EXPECT_EQ(readTrace(testing::contentOfFile(trace)).count("command"), 1U);
}

TEST_F(TraceTest, standardOutputIsForResults) {
    const Ran ran = run({"list", "--trace", "-"});
    EXPECT_EQ(ran.status, 2);
    EXPECT_EQ(ran.err, "quillomat: --trace: expected a file\n");
}

} // namespace
} // namespace quillomat
