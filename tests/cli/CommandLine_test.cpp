// What every command has in common: how it is called, where it speaks, how it ends.
#include "Command.h"

namespace quillomat {
namespace {

using testing::isOneComplaint;
using testing::Ran;

class CommandLineTest : public testing::CommandTest {
protected:
    void expectUsage(const testing::Words& words, const std::string& complaint) const {
        const Ran ran = run(words);
        EXPECT_EQ(ran.status, 2);
        EXPECT_EQ(ran.out, "");
        EXPECT_EQ(ran.err, "quillomat: " + complaint + "\n");
    }
    static constexpr const char* seeHelp = " (see quillomat --help)";
    static std::string seeHelpOf(const std::string& command) { return " (see quillomat " + command + " --help)"; }
};

TEST_F(CommandLineTest, aWordThatIsNoCommandIsNamed) {
    expectUsage({"frobnicate"}, std::string("frobnicate: no such command") + seeHelp);
}

TEST_F(CommandLineTest, aCommandThatIsNearlyRightIsSuggested) {
    expectUsage({"lits"}, "lits: no such command; did you mean list?");
    expectUsage({"rendr"}, "rendr: no such command; did you mean render?");
}

TEST_F(CommandLineTest, withoutACommandOneIsAskedFor) {
    expectUsage({}, std::string("usage: a command is required") + seeHelp);
}

TEST_F(CommandLineTest, anUnknownOptionIsNamed) {
    expectUsage({"--nope", "list"}, "--nope: no such option" + seeHelpOf("list"));
    expectUsage({"list", "--nope"}, "--nope: no such option" + seeHelpOf("list"));
}

TEST_F(CommandLineTest, oneWordTooManyIsNamed) {
    expectUsage({"list", "more"}, "more: one word too many for list" + seeHelpOf("list"));
}

TEST_F(CommandLineTest, whatACommandNeedsIsNamed) {
    expectUsage({"show"}, "show: MOCKUP is required" + seeHelpOf("show"));
    expectUsage({"render", "upright"}, "render: --screenshot is required" + seeHelpOf("render"));
    expectUsage({"publish"}, "publish: DIR is required" + seeHelpOf("publish"));
}

TEST_F(CommandLineTest, anOptionOfEveryCommandIsDescribedInTheirCommonHelp) {
    const std::string complaint = std::string("--memory: expected a size such as 512MiB") + seeHelp;
    expectUsage({"list", "--memory", "0"}, complaint);
    expectUsage({"--memory", "0", "list"}, complaint);
    const std::string help = run({"list", "--help"}).out;
    EXPECT_NE(help.find("quillomat --help"), std::string::npos) << help;
}

TEST_F(CommandLineTest, theScreenScaleIsANumberThatMakesSense) {
    for (const char* scale : {"nan", "inf", "-1", "0", "9", "two", "1x", ""}) {
        const Ran ran = run({"--screen-scale", scale, "list"});
        EXPECT_EQ(ran.status, 2) << scale;
        EXPECT_TRUE(isOneComplaint(ran.err)) << scale;
    }
    EXPECT_EQ(run({"--screen-scale", "2.5", "list"}).status, 0);
}

TEST_F(CommandLineTest, aCeilingIsASizeWithOrWithoutAUnit) {
    for (const char* size : {"-4", "0", "5xb", "MiB", "99999999999999999999", "17179869184G", "1 2", "1.5G"}) {
        const Ran ran = run({"--memory", size, "list"});
        EXPECT_EQ(ran.status, 2) << size;
        EXPECT_TRUE(isOneComplaint(ran.err)) << size;
    }
    for (const char* size : {"1000000", "512MiB", "512m", "1G", "2gb", "900 "}) {
        EXPECT_EQ(run({"--memory", size, "list"}).status, std::string(size) == "900 " ? 2 : 0) << size;
    }
}

TEST_F(CommandLineTest, globalOptionsStandBeforeOrAfterTheCommand) {
    const testing::Words place{"--documents", documents, "--resources", resources};
    testing::Words before = place;
    before.insert(before.end(), {"--json", "list"});
    testing::Words after{"list", "--json"};
    after.insert(after.end(), place.begin(), place.end());
    const Ran first = runProgram(folder, before);
    const Ran second = runProgram(folder, after);
    EXPECT_EQ(first.status, 0);
    EXPECT_FALSE(first.out.empty());
    EXPECT_EQ(first.out, second.out);
}

TEST_F(CommandLineTest, helpAndVersionGoToStandardOutput) {
    for (const testing::Words& words :
         {testing::Words{"--help"}, {"--version"}, {"render", "--help"}, {"update", "-h"}}) {
        const Ran ran = run(words);
        EXPECT_EQ(ran.status, 0);
        EXPECT_FALSE(ran.out.empty());
        EXPECT_EQ(ran.err, "");
    }
    EXPECT_TRUE(run({"--version"}).out.starts_with("quillomat 1"));
}

TEST_F(CommandLineTest, thereIsNoHelpForACommandThatIsNone) {
    expectUsage({"frobnicate", "--help"}, std::string("frobnicate: no such command") + seeHelp);
    expectUsage({"rendr", "-h"}, "rendr: no such command; did you mean render?");
}

TEST_F(CommandLineTest, helpNamesOptionsByPlainWords) {
    const std::string help = run({"--help"}).out;
    EXPECT_NE(help.find("--memory SIZE  "), std::string::npos) << help;
    EXPECT_NE(help.find("--screen-scale N  "), std::string::npos) << help;
    EXPECT_EQ(help.find(':' + std::string("SIZE")), std::string::npos) << help;
}

TEST_F(CommandLineTest, complaintsStayOnStandardErrorWithJsonToo) {
    const Ran ran = run({"show", "nobody", "--json"});
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.out, "");
    EXPECT_TRUE(isOneComplaint(ran.err));
}

TEST_F(CommandLineTest, logLinesGoToStandardErrorWhenAskedFor) {
    const Ran quiet = run({"render", "upright", "-s", picture("quarters.jpg"), "-o", "-"});
    EXPECT_EQ(quiet.status, 0);
    EXPECT_EQ(quiet.err, "");
    const Ran verbose = run({"-v", "render", "upright", "-s", picture("quarters.jpg"), "-o", "-"});
    EXPECT_EQ(verbose.status, 0);
    EXPECT_NE(verbose.err.find("AuthTest PHAuthorizationStatusAuthorized\n"), std::string::npos);
    EXPECT_NE(verbose.err.find("SSTest 1\n"), std::string::npos);
    EXPECT_EQ(verbose.out, quiet.out);
}

TEST_F(CommandLineTest, noColoursAndNoProgressOffATerminal) {
    const Ran ran = run({"list"});
    EXPECT_EQ(ran.out.find('\x1b'), std::string::npos);
    EXPECT_EQ(ran.err, "");
}

TEST_F(CommandLineTest, aFullDiskBehindStandardOutputIsAFailure) {
    const Ran ran = run({"list"}, {.output = "/dev/full"});
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.err, "quillomat: standard output: no space left on device\n");
    EXPECT_EQ(run({"render", "upright", "-s", picture("quarters.jpg"), "-o", "-"}, {.output = "/dev/full"}).err,
              "quillomat: standard output: no space left on device\n");
}

// Folders ----------------------------------------------------------------------------------------------------------

TEST_F(CommandLineTest, theDocumentsDirectoryIsMadeWhenItIsNeeded) {
    documents = folder.path("a/b/documents");
    EXPECT_EQ(run({"list"}).status, 0);
    EXPECT_TRUE(std::filesystem::is_directory(documents));
}

TEST_F(CommandLineTest, theUsersOwnDocumentsDirectoryFollowsTheEnvironment) {
    const auto list = [&](const testing::RunSettings& settings) {
        EXPECT_EQ(runProgram(folder, {"list", "--resources", resources}, settings).status, 0);
    };
    list({.environment = {{"XDG_DATA_HOME", folder.path("data")}}});
    EXPECT_TRUE(std::filesystem::is_directory(folder.path("data/quillomat")));
    list({.environment = {{"XDG_DATA_HOME", "relative/does/not/count"}}});
    EXPECT_TRUE(std::filesystem::is_directory(folder.path("home/.local/share/quillomat")));
}

TEST_F(CommandLineTest, theRootFolderIsNoDocumentsDirectory) {
    for (const char* root : {"/", "//", "/.", "/tmp/.."}) {
        documents = root;
        const Ran ran = run({"list"});
        EXPECT_EQ(ran.status, 1) << root;
        EXPECT_TRUE(isOneComplaint(ran.err)) << ran.err;
    }
}

TEST_F(CommandLineTest, aFileInPlaceOfTheDocumentsDirectoryIsAFailure) {
    for (const std::string& place : {folder.add("file", "x"), folder.path("file") + "/below"}) {
        documents = place;
        const Ran ran = run({"list"});
        EXPECT_EQ(ran.status, 1);
        EXPECT_TRUE(isOneComplaint(ran.err)) << ran.err;
    }
    EXPECT_EQ(folder.contentOf("file"), "x");
}

TEST_F(CommandLineTest, resourcesThatAreNotThereAreAFailure) {
    std::filesystem::create_symlink(folder.path("nowhere"), folder.path("dangling"));
    for (const std::string& place : {folder.path("nowhere"), folder.path("dangling"), folder.add("file", "x")}) {
        resources = place;
        const Ran ran = run({"list"});
        EXPECT_EQ(ran.status, 1);
        EXPECT_TRUE(isOneComplaint(ran.err)) << ran.err;
        EXPECT_NE(ran.err.find(place), std::string::npos) << ran.err;
    }
}

TEST_F(CommandLineTest, withoutAReadableCatalogueTheListIsEmptyAndNoMockupIsKnown) {
    for (const char* broken : {"", "{", "[1, 2]", "null", "\"text\"", R"({"tableItems": 7})"}) {
        resources = folder.path("broken");
        folder.add("broken/main.json", broken);
        const Ran list = run({"list"});
        EXPECT_EQ(list.status, 0) << broken;
        EXPECT_EQ(list.out + list.err, "") << broken;
        const Ran render = run({"render", "upright", "-s", picture("quarters.jpg"), "-o", folder.path("out.png")});
        EXPECT_EQ(render.status, 1) << broken;
        EXPECT_EQ(render.err, "quillomat: upright: no such mockup\n") << broken;
        EXPECT_FALSE(exists(folder.path("out.png")));
    }
}

} // namespace
} // namespace quillomat
