// Against a server that misbehaves in every way we could think of.
#include "platform/network/CurlWebClient.h"

#include "WebServers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>

namespace quillomat {
namespace {

using ::testing::Not;
using ::testing::StartsWith;

struct Servers {
    testing::TemporaryFolder folder;
    testing::TestAuthority authority{folder.path()};
    testing::MisbehavingServer server{authority.issue("server", testing::allTestHosts)};
};

class FaultsTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        for (const char* variable : {"https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"}) {
            ::unsetenv(variable);
        }
        if (missing().empty()) {
            servers = new Servers;
        }
    }
    static void TearDownTestSuite() {
        delete servers;
        servers = nullptr;
    }
    static std::string missing() { return testing::missingForServers({"openssl", "python3"}); }

    void SetUp() override {
        if (!missing().empty()) {
            GTEST_SKIP() << missing();
        }
        ASSERT_TRUE(servers->server.isReady());
        options.caCertificate = servers->authority.file();
        options.totalLimit = std::chrono::seconds(4);
        options.connectLimit = std::chrono::seconds(2);
        options.patience = std::chrono::seconds(1);
        options.sizeLimit = 4 << 20;
        options.holdOff = std::chrono::seconds(0);
    }

    std::string url(const std::string& path, const std::string& host = "localhost") const {
        return "https://" + host + ":" + std::to_string(servers->server.port()) + path;
    }
    /// The document as text, or the reason why there is none in parentheses.
    std::string fetch(const std::string& path) {
        const auto bytes = client().dataWithContentsOfUrl(url(path));
        return bytes ? std::string(reinterpret_cast<const char*>(bytes->data()), bytes->size())
                     : "(" + client().lastFailure() + ")";
    }
    bool arrives(const std::string& path) {
        const std::string text = fetch(path);
        return text.empty() || text.front() != '(';
    }
    /// Whatever gives up then, gives up for that limit's sake, however busy the machine is.
    void onlyTheConnectLimitCounts() {
        options.totalLimit = std::chrono::seconds(60);
        options.patience = std::chrono::seconds(60);
    }
    CurlWebClient& client() {
        if (!client_) {
            client_ = std::make_unique<CurlWebClient>(options);
        }
        return *client_;
    }
    static std::string document() {
        std::string text;
        for (int i = 0; i < 50; ++i) {
            text += R"({"version": "2.0"})";
        }
        return text;
    }

    CurlOptions options;
    static Servers* servers;

private:
    std::unique_ptr<CurlWebClient> client_;
};

Servers* FaultsTest::servers = nullptr;

TEST_F(FaultsTest, aDocumentArrivesInEveryLegalForm) {
    for (const char* path : {"/good", "/good-gzip", "/good-chunked", "/good-then-reset", "/good-then-silent"}) {
        EXPECT_EQ(fetch(path), document()) << path;
    }
}

TEST_F(FaultsTest, whatIsNoCatalogueStillIsADocument) {
    EXPECT_EQ(fetch("/garbage").size(), 256U);
    EXPECT_EQ(fetch("/html"), "<html>please log in</html>");
}

TEST_F(FaultsTest, aDocumentCutShortIsNothing) {
    for (const char* path : {"/truncated", "/truncated-chunks", "/last-chunk-missing", "/truncated-gzip",
                             "/dropped-without-length", "/reset", "/closed-at-once"}) {
        EXPECT_FALSE(arrives(path)) << path;
    }
}

TEST_F(FaultsTest, aDocumentOfTheWrongLengthIsNothing) {
    EXPECT_EQ(fetch("/longer-than-announced"), "(longer than announced)");
    EXPECT_EQ(fetch("/two-lengths"), "(its announced lengths contradict each other)");
    EXPECT_FALSE(arrives("/negative-length"));
    EXPECT_FALSE(arrives("/length-of-no-number"));
}

TEST_F(FaultsTest, aDocumentWhoseEndCannotBeToldFromALossIsNothing) {
    EXPECT_EQ(fetch("/without-length"), "(its length is not announced)");
    EXPECT_EQ(fetch("/dropped-without-length"), "(its length is not announced)");
}

TEST_F(FaultsTest, aCompressionNobodyAskedForIsNothing) {
    EXPECT_EQ(fetch("/unknown-compression"), "(in an unknown compression)");
    EXPECT_EQ(fetch("/no-gzip-at-all"), "(its compression is damaged)");
}

TEST_F(FaultsTest, anEmptyDocumentIsNothing) {
    EXPECT_EQ(fetch("/empty"), "(the document is empty)");
}

TEST_F(FaultsTest, anyStatusButTwoHundredIsNothing) {
    EXPECT_EQ(fetch("/404"), "(the server answered with status 404)");
    EXPECT_EQ(fetch("/500"), "(the server answered with status 500)");
    EXPECT_EQ(fetch("/no-content"), "(the server answered with status 204)");
    EXPECT_EQ(fetch("/partial"), "(the server answered with status 206)");
    EXPECT_EQ(fetch("/endless-500"), "(the server answered with status 500)");
}

TEST_F(FaultsTest, whatIsNoHttpIsNothing) {
    EXPECT_FALSE(arrives("/not-http"));
}

TEST_F(FaultsTest, aSilentServerIsGivenUpAfterAMoment) {
    options.totalLimit = std::chrono::seconds(60);
    for (const char* path : {"/silent", "/silent-after-head"}) {
        EXPECT_THAT(fetch(path), StartsWith("(operation too slow.")) << path;
    }
}

TEST_F(FaultsTest, aServerThatDripsIsGivenUpAfterAMoment) {
    options.totalLimit = std::chrono::seconds(60);
    for (const char* path : {"/slow", "/slow-head"}) {
        EXPECT_THAT(fetch(path), StartsWith("(operation too slow.")) << path;
    }
}

TEST_F(FaultsTest, aServerThatNeverSpeaksTlsIsGivenUpWithinTheConnectLimit) {
    onlyTheConnectLimitCounts();
    EXPECT_EQ(
        client().dataWithContentsOfUrl("https://localhost:" + std::to_string(servers->server.mutePort()) + "/good"),
        std::nullopt);
    EXPECT_EQ(client().lastFailure(), "SSL connection timeout");
}

TEST_F(FaultsTest, aHostThatDoesNotAnswerIsGivenUpWithinTheConnectLimit) {
    // A network set aside for documentation: packets there get lost or are refused.
    onlyTheConnectLimitCounts();
    EXPECT_EQ(client().dataWithContentsOfUrl("https://192.0.2.1/good"), std::nullopt);
    EXPECT_THAT(client().lastFailure(), Not(StartsWith("operation ")));
}

TEST_F(FaultsTest, nobodyListeningIsNothingAtOnce) {
    EXPECT_EQ(client().dataWithContentsOfUrl("https://localhost:" + std::to_string(testing::freePort()) + "/good"),
              std::nullopt);
    EXPECT_NE(client().lastFailure(), "");
}

TEST_F(FaultsTest, aSilentHostCostsAListOfPicturesOneWaitAndNotOneEach) {
    options.holdOff = std::chrono::seconds(60);
    EXPECT_THAT(fetch("/silent"), StartsWith("(operation too slow."));
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(fetch("/silent"), "(the host could not be reached a moment ago)");
    }
    // The other name of the same maker is another host.
    EXPECT_NE(client().dataWithContentsOfUrl(url("/good", "www.quillomat.localhost")), std::nullopt)
        << client().lastFailure();
}

TEST_F(FaultsTest, aHostThatWasSilentIsAskedAgainAfterAWhile) {
    options.holdOff = std::chrono::milliseconds(300);
    EXPECT_FALSE(arrives("/silent"));
    EXPECT_FALSE(arrives("/good"));
    std::this_thread::sleep_for(std::chrono::milliseconds(350));
    EXPECT_EQ(fetch("/good"), document());
}

TEST_F(FaultsTest, aRefusedDocumentDoesNotHoldOffTheNextOne) {
    options.holdOff = std::chrono::seconds(60);
    for (const char* path : {"/404", "/truncated", "/reset", "/endless", "/not-http"}) {
        EXPECT_FALSE(arrives(path)) << path;
        EXPECT_EQ(fetch("/good"), document()) << "after " << path;
    }
}

TEST_F(FaultsTest, aSteadyStreamWithoutEndStopsAtTheTotalLimit) {
    // No pause of a busy machine is to pass for a slow server here: only the total limit can end it.
    options.patience = std::chrono::seconds(60);
    options.totalLimit = std::chrono::seconds(2);
    EXPECT_THAT(fetch("/steady-but-endless"), StartsWith("(operation timed out after "));
}

TEST_F(FaultsTest, aFloodStopsAtTheSizeLimit) {
    for (const char* path : {"/endless", "/endless-chunks", "/gigabytes", "/gzip-bomb"}) {
        EXPECT_EQ(fetch(path), "(larger than 4194304 bytes)") << path;
    }
}

TEST_F(FaultsTest, anAnnouncementOfGigabytesIsRefusedBeforeTheyCome) {
    // The server announces a hundred bytes and sends none of them.
    options.sizeLimit = 2;
    EXPECT_EQ(fetch("/silent-after-head"), "(larger than 2 bytes)");
}

TEST_F(FaultsTest, endlessHeadersAreGivenUp) {
    for (const char* path : {"/endless-head", "/endless-line"}) {
        EXPECT_FALSE(arrives(path)) << path;
        EXPECT_THAT(client().lastFailure(), Not(StartsWith("operation t"))) << path;
    }
}

TEST_F(FaultsTest, redirectsAreFollowedWithinHttps) {
    EXPECT_EQ(fetch("/redirect"), document());
    EXPECT_EQ(fetch("/redirect-relative"), document());
}

TEST_F(FaultsTest, redirectsElsewhereAreNothing) {
    for (const char* path : {"/redirect-to-http", "/redirect-to-file", "/redirect-loop", "/redirect-to-another-host"}) {
        EXPECT_FALSE(arrives(path)) << path;
    }
}

TEST_F(FaultsTest, aRedirectLoopEndsAfterAFewRequests) {
    const int before = std::stoi(fetch("/count"));
    EXPECT_FALSE(arrives("/redirect-loop"));
    EXPECT_EQ(std::stoi(fetch("/count")) - before, 1 + 4);
}

TEST_F(FaultsTest, aNameThatNeedsEscapingSendsNothing) {
    const int before = std::stoi(fetch("/count"));
    EXPECT_EQ(fetch("/my phone.png"), "(not a valid https address)");
    EXPECT_EQ(fetch("/a\r\nX: y"), "(not a valid https address)");
    EXPECT_EQ(std::stoi(fetch("/count")) - before, 1);
}

TEST_F(FaultsTest, certificatesOfOtherHostsTimesAndAuthoritiesAreRefused) {
    const testing::TestAuthority other(servers->folder.path(), "other");
    const std::pair<const char*, testing::Certificate> wrong[] = {
        {"other host", servers->authority.issue("elsewhere", "DNS:elsewhere.example")},
        {"ended", servers->authority.issue("ended", testing::allTestHosts, -1)},
        {"other authority", other.issue("foreign", testing::allTestHosts)}};
    for (const auto& [what, certificate] : wrong) {
        const testing::MisbehavingServer server(certificate);
        ASSERT_TRUE(server.isReady()) << what;
        EXPECT_EQ(client().dataWithContentsOfUrl("https://localhost:" + std::to_string(server.port()) + "/good"),
                  std::nullopt)
            << what;
        EXPECT_NE(client().lastFailure().find("certificate"), std::string::npos)
            << what << ": " << client().lastFailure();
    }
}

TEST_F(FaultsTest, plainHttpIsNeverSpoken) {
    EXPECT_EQ(client().dataWithContentsOfUrl("http://localhost:" + std::to_string(servers->server.port()) + "/good"),
              std::nullopt);
    EXPECT_EQ(client().lastFailure(), "not a valid https address");
}

TEST_F(FaultsTest, aClientWorksOnAfterEveryFault) {
    for (const char* path :
         {"/reset", "/longer-than-announced", "/truncated", "/404", "/endless", "/closed-at-once", "/not-http"}) {
        EXPECT_FALSE(arrives(path)) << path;
        EXPECT_EQ(fetch("/good"), document()) << "after " << path;
    }
}

} // namespace
} // namespace quillomat
