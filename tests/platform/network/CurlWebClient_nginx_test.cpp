// Against a real nginx with the configuration that is handed out to makers.
#include "platform/network/CurlWebClient.h"

#include "WebServers.h"

#include <gtest/gtest.h>

#include <string>

namespace quillomat {
namespace {

/// Certificates and a server are made once for all tests of the file.
struct Maker {
    testing::TemporaryFolder folder;
    testing::TestAuthority authority{folder.path()};
    std::unique_ptr<testing::NginxServer> server;
    std::string catalogue = R"({"version": "1.10", "otaImages": ["phone.png"]})" + std::string(5000, ' ');

    Maker() {
        folder.add("root/quillomat/updates/main.json", catalogue);
        folder.add("root/quillomat/updates/images/phone.png", std::string(300000, 'p'));
        folder.add("root/quillomat/mockups/index.html", "<title>Mockups</title>");
        folder.add("root/quillomat/support/index.html", "<title>Support</title>");
        folder.add("root/quillomat/updates/images/empty.png", "");
        folder.add("root/secret.txt", "not published");
        server = std::make_unique<testing::NginxServer>(folder.path("root"),
                                                        authority.issue("server", testing::allTestHosts));
    }
};

class NginxTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        for (const char* variable : {"https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"}) {
            ::unsetenv(variable);
        }
        if (testing::missingForServers({"nginx", "openssl"}).empty()) {
            maker = new Maker;
        }
    }
    static void TearDownTestSuite() {
        delete maker;
        maker = nullptr;
    }
    void SetUp() override {
        const std::string missing = testing::missingForServers({"nginx", "openssl"});
        if (!missing.empty()) {
            GTEST_SKIP() << missing;
        }
        ASSERT_TRUE(maker->authority.isReady());
        ASSERT_TRUE(maker->server->isReady()) << maker->server->errors();
    }

    std::string fetch(CurlWebClient& client, const std::string& url) {
        const auto bytes = client.dataWithContentsOfUrl(url);
        return bytes ? std::string(reinterpret_cast<const char*>(bytes->data()), bytes->size())
                     : "(" + client.lastFailure() + ")";
    }
    std::string updates(const std::string& file) const {
        return "https://" + maker->server->shortHost() + "/quillomat/updates/" + file;
    }
    static CurlOptions trusting() {
        CurlOptions options;
        options.caCertificate = maker->authority.file();
        return options;
    }

    static Maker* maker;
};

Maker* NginxTest::maker = nullptr;

TEST_F(NginxTest, theCatalogueArrivesWholeUnderBothHostNames) {
    CurlWebClient client(trusting());
    EXPECT_EQ(fetch(client, updates("main.json")), maker->catalogue);
    EXPECT_EQ(fetch(client, "https://" + maker->server->longHost() + "/quillomat/updates/main.json"), maker->catalogue);
    EXPECT_EQ(client.lastFailure(), "");
}

TEST_F(NginxTest, aPictureArrivesWhole) {
    CurlWebClient client(trusting());
    EXPECT_EQ(fetch(client, updates("images/phone.png")), std::string(300000, 'p'));
}

TEST_F(NginxTest, theTwoPagesAreServed) {
    CurlWebClient client(trusting());
    const std::string host = "https://" + maker->server->shortHost();
    EXPECT_EQ(fetch(client, host + "/quillomat/mockups/"), "<title>Mockups</title>");
    EXPECT_EQ(fetch(client, host + "/quillomat/support"), "<title>Support</title>");
}

TEST_F(NginxTest, whatIsNotThereIsNothing) {
    CurlWebClient client(trusting());
    EXPECT_EQ(fetch(client, updates("images/other.png")), "(the server answered with status 404)");
    EXPECT_EQ(fetch(client, "https://" + maker->server->shortHost() + "/secret.txt"),
              "(the server answered with status 404)");
    EXPECT_EQ(fetch(client, updates("images/empty.png")), "(the document is empty)");
}

TEST_F(NginxTest, theSizeLimitCountsTheDocument) {
    CurlOptions options = trusting();
    options.sizeLimit = 300000;
    CurlWebClient enough(options);
    EXPECT_EQ(fetch(enough, updates("images/phone.png")).size(), 300000U);
    options.sizeLimit = 299999;
    CurlWebClient tooSmall(options);
    EXPECT_EQ(fetch(tooSmall, updates("images/phone.png")), "(larger than 299999 bytes)");
    options.sizeLimit = 1000;
    CurlWebClient unpacked(options);
    EXPECT_EQ(fetch(unpacked, updates("main.json")), "(larger than 1000 bytes)");
}

TEST_F(NginxTest, anAuthorityThatIsNotTrustedIsRefused) {
    CurlWebClient client;
    EXPECT_EQ(client.dataWithContentsOfUrl(updates("main.json")), std::nullopt);
    EXPECT_NE(client.lastFailure().find("certificate"), std::string::npos) << client.lastFailure();
}

TEST_F(NginxTest, aMissingAuthorityFileIsAFailureAndNotTheEndOfChecking) {
    CurlOptions options;
    options.caCertificate = maker->folder.path("nowhere.pem");
    CurlWebClient client(options);
    EXPECT_EQ(client.dataWithContentsOfUrl(updates("main.json")), std::nullopt);
    EXPECT_NE(client.lastFailure(), "");
}

TEST_F(NginxTest, aHostKnownBeforehandIsNotLookedUp) {
    CurlOptions options = trusting();
    const std::string port = std::to_string(maker->server->port());
    options.resolve = {"known.example:" + port + ":127.0.0.1"};
    CurlWebClient client(options);
    EXPECT_EQ(client.dataWithContentsOfUrl("https://known.example:" + port + "/quillomat/updates/main.json"),
              std::nullopt);
    // It was reached, and its certificate is for other names.
    EXPECT_NE(client.lastFailure().find("known.example"), std::string::npos) << client.lastFailure();
    EXPECT_NE(client.lastFailure().find("certificate"), std::string::npos) << client.lastFailure();
}

TEST_F(NginxTest, manyDocumentsComeOverOneClient) {
    CurlWebClient client(trusting());
    for (int i = 0; i < 50; ++i) {
        ASSERT_EQ(fetch(client, updates("main.json")), maker->catalogue);
        ASSERT_EQ(fetch(client, updates("images/other.png")), "(the server answered with status 404)");
        ASSERT_EQ(fetch(client, updates("images/phone.png")).size(), 300000U);
    }
}

} // namespace
} // namespace quillomat
