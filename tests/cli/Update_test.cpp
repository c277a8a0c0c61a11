// `update` against a maker's server, whole and in every way broken.
#include "Site.h"

#include <sys/stat.h>

namespace quillomat {
namespace {

using testing::isOneComplaint;
using testing::Ran;

constexpr const char* catalogueOnShort = "short /quillomat/updates/main.json";
constexpr const char* catalogueOnLong = "long /quillomat/updates/main.json";

// The whole road, over the server's configuration that makers are given ---------------------------------------------

class LiveRoadTest : public testing::SiteTest {
protected:
    [[nodiscard]] testing::Words neededPrograms() const override { return {"openssl", "nginx"}; }

    Ran installed(testing::Words words) const {
        words.insert(words.end(), {"--server", server->shortHost(), "--cacert", testing::sharedAuthority().file()});
        return run(std::move(words));
    }
    void start() {
        server = std::make_unique<testing::NginxServer>(folder.path("site"), testing::sharedCertificate());
        ASSERT_TRUE(server->isReady()) << server->errors();
    }

    std::unique_ptr<testing::NginxServer> server;
};

TEST_F(LiveRoadTest, publishUpdateRenderImportDelete) {
    makerImports("holiday", "Ada");
    ASSERT_EQ(publish({"--row", "Community"}).status, 0);
    ASSERT_NO_FATAL_FAILURE(start());

    EXPECT_EQ(installed({"update", "--check"}).out, "local 1.0, published 1.1: an update is available\n");
    EXPECT_TRUE(namesIn(documents).empty()) << "a comparison stores nothing";

    const Ran update = installed({"update"});
    EXPECT_EQ(update.status, 0);
    EXPECT_EQ(update.out, "updated from 1.0 to 1.1: 1 pictures fetched, 10 skipped, 0 failed\n");
    EXPECT_EQ(update.err, "");
    EXPECT_EQ(namesIn(documents), (testing::Words{"holiday.png", "main.json"}));
    EXPECT_NE(installed({"list"}).out.find("Community\tholiday.png\t60 x 80\t1 screen\t\n"), std::string::npos);

    const std::string shot = addPicture("shot.png", 30, 65);
    EXPECT_EQ(installed({"render", "holiday", "-s", shot, "-b", shot, "-o", folder.path("out.png")}).status, 0)
        << "a published frame takes a background, whoever made it";
    EXPECT_EQ(sizeOf(folder.path("out.png")), (PixelSize{60, 80}));

    import("mine", "Bo");
    EXPECT_TRUE(installed({"list"}).out.ends_with("Imported\tmine.png\t60 x 80\t1 screen\tBo\n"));
    EXPECT_EQ(installed({"delete", "mine"}).status, 0);
    EXPECT_EQ(installed({"delete", "holiday"}).status, 1) << "what was published is no import";
    EXPECT_EQ(namesIn(documents), (testing::Words{"holiday.png", "main.json"}));

    EXPECT_EQ(installed({"update"}).out, "local 1.1, published 1.1: nothing to do\n");
}

TEST_F(LiveRoadTest, jsonOfComparisonAndUpdate) {
    makerImports("holiday", "Ada");
    ASSERT_EQ(publish().status, 0);
    ASSERT_NO_FATAL_FAILURE(start());
    EXPECT_EQ(installed({"update", "--check", "--json"}).json(), Value::object({{"local", Value::string("1.0")},
                                                                                {"published", Value::string("1.1")},
                                                                                {"available", Value::boolean(true)}}));
    const Value update = installed({"update", "--json"}).json();
    EXPECT_EQ(update["published"], Value::string("1.1"));
    EXPECT_EQ(update["pictures"],
              Value::object(
                  {{"fetched", Value::integer(1)}, {"skipped", Value::integer(10)}, {"failed", Value::integer(0)}}));
    EXPECT_EQ(installed({"update", "--json"}).json(), Value::object({{"local", Value::string("1.1")},
                                                                     {"published", Value::string("1.1")},
                                                                     {"available", Value::boolean(false)}}));
}

TEST_F(LiveRoadTest, aDamagedStoredCatalogueHealsByUpdating) {
    ASSERT_EQ(publish().status, 0);
    ASSERT_NO_FATAL_FAILURE(start());
    folder.add("documents/main.json", "{damaged");
    EXPECT_EQ(installed({"list"}).out, "");
    EXPECT_EQ(installed({"update", "--check", "--json"}).json()["local"], Value::null());
    EXPECT_EQ(installed({"update"}).status, 0);
    EXPECT_NE(installed({"list"}).out.find("Phones\tupright.png"), std::string::npos);
}

TEST_F(LiveRoadTest, aRepublishedPictureArrivesWithTheNextUpdate) {
    makerImports("holiday", "Ada");
    ASSERT_EQ(publish().status, 0);
    ASSERT_NO_FATAL_FAILURE(start());
    ASSERT_EQ(installed({"update"}).status, 0);
    addPicture("maker/documents/holiday.png", 60, 80, {9, 9, 9, 255});
    ASSERT_EQ(publish().status, 0);
    EXPECT_EQ(installed({"update"}).out, "updated from 1.1 to 1.2: 1 pictures fetched, 10 skipped, 0 failed\n");
    EXPECT_EQ(folder.contentOf("documents/holiday.png"), folder.contentOf("maker/documents/holiday.png"));
}

TEST_F(LiveRoadTest, anAuthorityThatIsNotTrustedIsSaid) {
    ASSERT_EQ(publish().status, 0);
    ASSERT_NO_FATAL_FAILURE(start());
    const Ran ran = run({"update", "--server", server->shortHost()});
    EXPECT_EQ(ran.status, 1);
    EXPECT_TRUE(isOneComplaint(ran.err)) << ran.err;
    EXPECT_NE(ran.err.find("certificate"), std::string::npos) << ran.err;
    EXPECT_TRUE(namesIn(documents).empty());
}

TEST_F(LiveRoadTest, onlyUpdateSpeaksToTheNetwork) {
    ASSERT_EQ(publish().status, 0);
    const testing::Certificate certificate = testing::sharedCertificate();
    testing::FaultySite site(certificate, folder, "site");
    ASSERT_TRUE(site.isReady());
    import("mine");
    const std::string shot = addPicture("shot.png", 30, 65);
    for (const testing::Words& words : {testing::Words{"list"},
                                        {"show", "upright"},
                                        {"render", "upright", "-s", shot, "-o", folder.path("o.png")},
                                        {"import", "--replace", folder.path("mine/mine.cfg")},
                                        {"delete", "mine"},
                                        {"publish", folder.path("other")}}) {
        testing::Words all = words;
        all.insert(all.end(), {"--server", site.host(), "--cacert", testing::sharedAuthority().file()});
        EXPECT_EQ(run(all).status, 0) << words[0];
    }
    EXPECT_EQ(site.requests(), "");
}

// Faults -----------------------------------------------------------------------------------------------------------

class UpdateFaultsTest : public testing::SiteTest {
protected:
    void SetUp() override {
        SiteTest::SetUp();
        if (IsSkipped() || HasFatalFailure()) {
            return;
        }
        makerImports("holiday", "Ada");
        makerImports("weekend", "Ada");
        ASSERT_EQ(publish().status, 0);
        site = std::make_unique<testing::FaultySite>(testing::sharedCertificate(), folder, "site");
        ASSERT_TRUE(site->isReady());
    }
    Ran update(const testing::RunSettings& settings = {}) const {
        return run({"update", "--server", site->host(), "--cacert", testing::sharedAuthority().file()}, settings);
    }
    /// Plans a fault of the first answer to one request.
    void plan(const std::string& request, const std::string& fault) const {
        site->plan("{\"" + request + "\": [\"" + fault + "\", \"good\"]}");
    }
    /// With the server in order again, one update repairs everything.
    void expectHealing() const {
        site->plan("{}");
        const Ran ran = update();
        EXPECT_EQ(ran.status, 0) << ran.err;
        expectWhole();
    }
    void expectWhole() const {
        EXPECT_EQ(testing::contentOfFile(documents + "/main.json"),
                  folder.contentOf("site/quillomat/updates/main.json"));
        for (const char* name : {"holiday.png", "weekend.png"}) {
            EXPECT_EQ(testing::contentOfFile(documents + "/" + name),
                      folder.contentOf(std::string("maker/documents/") + name))
                << name;
        }
        EXPECT_NE(run({"list"}).out.find("More\tholiday.png\t"), std::string::npos);
    }
    /// The application starts and shows the catalogue it has.
    void expectStillGood() const { EXPECT_NE(run({"list"}).out.find("Phones\tupright.png\t"), std::string::npos); }

    std::unique_ptr<testing::FaultySite> site;
};

TEST_F(UpdateFaultsTest, withoutFaultsEverythingArrives) {
    EXPECT_EQ(update().out, "updated from 1.0 to 1.1: 2 pictures fetched, 10 skipped, 0 failed\n");
    expectWhole();
    // Compared, fetched for its pictures, the pictures, stored; and compared again.
    EXPECT_EQ(site->requests(), std::string(catalogueOnShort) + "\n" + catalogueOnShort +
                                    "\nshort /quillomat/updates/images/holiday.png\n"
                                    "short /quillomat/updates/images/weekend.png\n" +
                                    catalogueOnLong + "\n" + catalogueOnShort + "\n");
}

TEST_F(UpdateFaultsTest, progressShowsOnATerminalAlone) {
    const testing::Terminal terminal;
    EXPECT_EQ(update({.errors = terminal.name()}).status, 0);
    EXPECT_EQ(terminal.text(), "\rpictures: 1 of 2\rpictures: 2 of 2\r\n");
}

TEST_F(UpdateFaultsTest, aCatalogueThatDoesNotArriveIsSaidAndNothingChanges) {
    for (const char* fault : {"/404", "/500", "/empty", "/truncated", "/truncated-gzip", "/reset", "/closed-at-once",
                              "/longer-than-announced", "/not-http", "/redirect-to-http", "/redirect-loop",
                              "/without-length", "/gigabytes", "/endless-head", "/no-content"}) {
        SCOPED_TRACE(fault);
        site->plan(std::string("{\"") + catalogueOnShort + "\": [\"" + fault + "\"]}");
        const Ran ran = update();
        EXPECT_EQ(ran.status, 1);
        EXPECT_EQ(ran.out, "");
        EXPECT_TRUE(isOneComplaint(ran.err)) << ran.err;
        EXPECT_TRUE(
            ran.err.starts_with("quillomat: " + site->host() + ": the published catalogue could not be fetched: "))
            << ran.err;
        EXPECT_FALSE(ran.err.ends_with(": \n")) << "the reason is named";
        EXPECT_TRUE(namesIn(documents).empty());
        EXPECT_LT(ran.peakKilobytes, 300 * 1024);
    }
    expectHealing();
}

TEST_F(UpdateFaultsTest, aCatalogueThatIsNoneIsSaid) {
    for (const char* fault : {"/garbage", "/html"}) {
        SCOPED_TRACE(fault);
        site->plan(std::string("{\"") + catalogueOnShort + "\": [\"" + fault + "\"]}");
        const Ran ran = update();
        EXPECT_EQ(ran.status, 1);
        EXPECT_TRUE(isOneComplaint(ran.err)) << ran.err;
        EXPECT_NE(ran.err.find("what arrived is no catalogue"), std::string::npos) << ran.err;
        EXPECT_TRUE(namesIn(documents).empty());
    }
    expectHealing();
}

TEST_F(UpdateFaultsTest, aCatalogueWithoutAVersionIsNothingToDo) {
    folder.add("site/other.json", "{\"version\": 7}");
    site->plan(std::string("{\"") + catalogueOnShort + "\": [\"file:other.json\"]}");
    const Ran ran = update();
    EXPECT_EQ(ran.status, 0);
    EXPECT_EQ(ran.out, "local 1.0, published none: nothing to do\n");
}

TEST_F(UpdateFaultsTest, aSilentServerHoldsTheCommandForSecondsOnly) {
    const auto begin = std::chrono::steady_clock::now();
    site->plan(std::string("{\"") + catalogueOnShort + "\": [\"/silent\"]}");
    const Ran ran = update();
    EXPECT_EQ(ran.status, 1);
    EXPECT_TRUE(isOneComplaint(ran.err)) << ran.err;
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(15));
    expectStillGood();
}

TEST_F(UpdateFaultsTest, aTrickleHoldsTheCommandForSecondsOnly) {
    const auto begin = std::chrono::steady_clock::now();
    site->plan(std::string("{\"") + catalogueOnShort + "\": [\"/slow\"]}");
    EXPECT_EQ(update().status, 1);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
}

TEST_F(UpdateFaultsTest, nobodyThereIsSaidAtOnce) {
    const std::string nobody = "quillomat.localhost:" + std::to_string(testing::freePort());
    const Ran ran = run({"update", "--server", nobody});
    EXPECT_EQ(ran.status, 1);
    EXPECT_TRUE(ran.err.starts_with("quillomat: " + nobody + ": the published catalogue could not be fetched: "))
        << ran.err;
    EXPECT_TRUE(isOneComplaint(ran.err));
}

TEST_F(UpdateFaultsTest, aCertificateForAnotherHostIsRefused) {
    const testing::FaultySite other(testing::sharedAuthority().issue("other", "DNS:elsewhere.localhost"), folder,
                                    "site");
    const Ran ran = run({"update", "--server", other.host(), "--cacert", testing::sharedAuthority().file()});
    EXPECT_EQ(ran.status, 1);
    EXPECT_TRUE(isOneComplaint(ran.err)) << ran.err;
    EXPECT_EQ(other.requests(), "");
}

TEST_F(UpdateFaultsTest, aPictureThatDoesNotArriveIsNamedAndTheRestIsStored) {
    for (const char* fault : {"/404", "/500", "/empty", "/truncated", "/reset", "/endless-500"}) {
        SCOPED_TRACE(fault);
        documents = folder.path("documents" + std::string(fault).substr(1));
        site->plan("{\"short /quillomat/updates/images/holiday.png\": [\"" + std::string(fault) + "\"]}");
        const Ran ran = update();
        EXPECT_EQ(ran.status, 1);
        EXPECT_EQ(ran.out, "updated from 1.0 to 1.1: 1 pictures fetched, 10 skipped, 1 failed\n");
        EXPECT_TRUE(ran.err.starts_with("quillomat: warning: holiday.png: ")) << ran.err;
        EXPECT_TRUE(ran.err.ends_with("quillomat: " + site->host() + ": 1 pictures did not arrive\n")) << ran.err;
        EXPECT_EQ(namesIn(documents), (testing::Words{"main.json", "weekend.png"}));
        expectStillGood();
    }
}

TEST_F(UpdateFaultsTest, aCatalogueThatDoesNotArriveInTheEndLeavesTheStoredOne) {
    for (const char* fault : {"/404", "/truncated", "/empty", "/closed-at-once"}) {
        SCOPED_TRACE(fault);
        site->plan(std::string("{\"") + catalogueOnLong + "\": [\"" + fault + "\"]}");
        const Ran ran = update();
        EXPECT_EQ(ran.status, 1);
        EXPECT_TRUE(isOneComplaint(ran.err)) << ran.err;
        EXPECT_TRUE(ran.err.starts_with("quillomat: www." + site->host() + ": ")) << ran.err;
        EXPECT_FALSE(exists(documents + "/main.json"));
        expectStillGood();
    }
    expectHealing();
}

TEST_F(UpdateFaultsTest, whatArrivesInTheEndIsStoredAsItIsAndHealsByTheNextUpdate) {
    plan(catalogueOnLong, "/html");
    const Ran ran = update();
    EXPECT_EQ(ran.status, 1);
    EXPECT_TRUE(isOneComplaint(ran.err)) << ran.err;
    EXPECT_EQ(testing::contentOfFile(documents + "/main.json"), "<html>please log in</html>");
    expectHealing();
}

TEST_F(UpdateFaultsTest, hostileNamesAreNeitherFetchedNorWritten) {
    folder.add(
        "site/hostile.json",
        R"({"version": "9", "otaImages": ["../escaped.png", "/tmp/escaped.png", "a/b.png", "..", "", "with space.png",
                   "nul\u0000.png", 5, null, ["x"], "holiday.png"], "tableItems": []})");
    site->plan(std::string("{\"") + catalogueOnShort + "\": [\"file:hostile.json\"], \"" + catalogueOnLong +
               "\": [\"file:hostile.json\"]}");
    const Ran ran = update();
    EXPECT_EQ(ran.status, 1);
    EXPECT_TRUE(ran.out.starts_with("updated from 1.0 to 9: 1 pictures fetched, 0 skipped, 10 failed")) << ran.out;
    EXPECT_EQ(namesIn(documents), (testing::Words{"holiday.png", "main.json"}));
    EXPECT_FALSE(exists(folder.path("escaped.png")));
    EXPECT_EQ(site->requests().find("escaped"), std::string::npos);
}

TEST_F(UpdateFaultsTest, aLongListOfHostileNamesGivesFewLines) {
    std::string names;
    for (int i = 0; i < 5000; ++i) {
        names += "\"../" + std::to_string(i) + ".png\", ";
    }
    folder.add("site/hostile.json", "{\"version\": \"9\", \"otaImages\": [" + names + "\"..\"]}");
    site->plan(std::string("{\"") + catalogueOnShort + "\": [\"file:hostile.json\"], \"" + catalogueOnLong +
               "\": [\"file:hostile.json\"]}");
    const Ran ran = update();
    EXPECT_EQ(ran.status, 1);
    EXPECT_LT(std::count(ran.err.begin(), ran.err.end(), '\n'), 15);
}

TEST_F(UpdateFaultsTest, aLinkInTheDocumentsDirectoryIsReplacedAndNotFollowed) {
    const std::string outside = folder.add("outside.png", "mine");
    std::filesystem::create_directories(documents);
    std::filesystem::create_symlink(outside, documents + "/holiday.png");
    EXPECT_EQ(update().status, 0);
    EXPECT_EQ(folder.contentOf("outside.png"), "mine");
    expectWhole();
}

TEST_F(UpdateFaultsTest, aFullDiskIsSaidAndCountsAsFailed) {
    // Room for the small pictures, not for the catalogue.
    const Ran ran = update({.fileSize = 3000});
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.out, "");
    EXPECT_NE(ran.err.find("could not be stored: file too large"), std::string::npos) << ran.err;
    EXPECT_FALSE(exists(documents + "/main.json"));
    expectStillGood();
    expectHealing();
}

TEST_F(UpdateFaultsTest, aPictureThatCouldNotBeWrittenCountsAsFailed) {
    addPicture("maker/documents/holiday.png", 300, 300);
    ASSERT_EQ(publish().status, 0);
    folder.add("documents/holiday.png", "old");
    const Ran ran = update({.fileSize = 100000});
    EXPECT_EQ(ran.status, 1);
    EXPECT_TRUE(ran.err.starts_with("quillomat: warning: holiday.png: file too large\n")) << ran.err;
    EXPECT_NE(ran.out.find("1 pictures fetched, 10 skipped, 1 failed"), std::string::npos) << ran.out;
    EXPECT_EQ(folder.contentOf("documents/holiday.png"), "old") << "whole, or as it was";
}

TEST_F(UpdateFaultsTest, aPlaceThatCannotBeWrittenIsSaid) {
    std::filesystem::create_directories(documents + "/main.json/occupied");
    const Ran ran = update();
    EXPECT_EQ(ran.status, 1);
    EXPECT_NE(ran.err.find(documents + ": the published catalogue could not be stored: "), std::string::npos)
        << ran.err;
}

TEST_F(UpdateFaultsTest, killedAtEveryFetchItStartsAgainAndHeals) {
    const std::vector<std::pair<std::string, std::string>> moments{
        {catalogueOnShort, "[\"halt\"]"},
        {catalogueOnShort, "[\"good\", \"halt\"]"},
        {"short /quillomat/updates/images/holiday.png", "[\"halt\"]"},
        {"short /quillomat/updates/images/weekend.png", "[\"halt\"]"},
        {catalogueOnLong, "[\"halt\"]"},
        {catalogueOnShort, "[\"good\", \"good\", \"halt\"]"}};
    for (std::size_t moment = 0; moment < moments.size(); ++moment) {
        SCOPED_TRACE(moment);
        documents = folder.path("documents-" + std::to_string(moment));
        testing::FaultySite fresh(testing::sharedCertificate(), folder, "site");
        std::filesystem::remove(folder.path("site/requests.log"));
        fresh.plan("{\"" + moments[moment].first + "\": " + moments[moment].second + "}");
        const auto wanted = static_cast<std::ptrdiff_t>(moment) + 1;
        const auto isHalted = [&] {
            const std::string seen = fresh.requests();
            return std::count(seen.begin(), seen.end(), '\n') >= wanted;
        };
        const Ran ran = run({"update", "--server", fresh.host(), "--cacert", testing::sharedAuthority().file()},
                            {.killWhen = isHalted});
        EXPECT_EQ(ran.status, -1) << "it was killed";
        expectStillGood();
        fresh.plan("{}");
        const Ran again = run({"update", "--server", fresh.host(), "--cacert", testing::sharedAuthority().file()});
        EXPECT_EQ(again.status, 0) << again.err;
        expectWhole();
    }
}

TEST_F(UpdateFaultsTest, killedWhileItWritesItLeavesWholeFilesAndHeals) {
    addPicture("maker/documents/holiday.png", 1500, 1000);
    ASSERT_EQ(publish().status, 0);
    const std::string whole = folder.contentOf("maker/documents/holiday.png");
    for (int milliseconds = 40; milliseconds <= 200; milliseconds += 40) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
        update({.killWhen = [end] { return std::chrono::steady_clock::now() > end; }});
        EXPECT_TRUE(!exists(documents + "/holiday.png") || folder.contentOf("documents/holiday.png") == whole);
        expectStillGood();
    }
    update();
    expectWhole();
}

} // namespace
} // namespace quillomat
