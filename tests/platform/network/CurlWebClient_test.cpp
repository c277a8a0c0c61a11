#include "platform/network/CurlWebClient.h"

#include <gtest/gtest.h>

#include <string>

namespace quillomat {
namespace {

TEST(HttpsUrl, isValidWhenItNeedsNoEscaping) {
    for (const char* url : {"https://quillomat.invalid/quillomat/updates/main.json", "https://www.quillomat.invalid",
                            "https://localhost:8443/a/b.png", "https://[::1]:8443/a", "https://host/a%20b.png",
                            "https://host/?q=1#f", "https://host/-._~!$&'()*+,;=:@"}) {
        EXPECT_TRUE(isValidHttpsUrl(url)) << url;
    }
}

TEST(HttpsUrl, isInvalidWhenACharacterNeedsEscaping) {
    const std::string images = "https://host/quillomat/updates/images/";
    for (const std::string& name :
         {std::string("my phone.png"), std::string("tab\t.png"), std::string("line\n.png"),
          std::string("\r\nX-Injected: 1"), std::string("caf\xC3\xA9.png"), std::string("\x7F.png"),
          std::string("a\"b"), std::string("a<b"), std::string("a>b"), std::string("a\\b"), std::string("a^b"),
          std::string("a`b"), std::string("a{b}"), std::string("a|b"), std::string("a[1]"), std::string("100%.png"),
          std::string("%2"), std::string("%zz.png"), std::string("a\0b", 3)}) {
        EXPECT_FALSE(isValidHttpsUrl(images + name)) << name;
    }
}

TEST(HttpsUrl, isInvalidWithAnotherSchemeOrNoHost) {
    for (const char* url :
         {"", "https://", "https:///a", "https://:443/a", "https:/host", "http://host/a", "file:///etc/passwd",
          "HTTPS://host/a", "//host/a", "host/a", " https://host/a", "https://ho st/a", "ftp://host/a"}) {
        EXPECT_FALSE(isValidHttpsUrl(url)) << url;
    }
    EXPECT_FALSE(isValidHttpsUrl("https://host/" + std::string(100000, 'a')));
}

TEST(CurlWebClient, aHostThatCannotExistFailsAtOnce) {
    CurlWebClient client;
    EXPECT_EQ(client.dataWithContentsOfUrl("https://quillomat.invalid/quillomat/updates/main.json"), std::nullopt);
    EXPECT_EQ(client.dataWithContentsOfUrl("https://www.quillomat.invalid:8443/a"), std::nullopt);
    EXPECT_EQ(client.lastFailure(), "the host does not exist");
}

TEST(CurlWebClient, aNameThatNeedsEscapingIsRefusedBeforeAnythingIsSent) {
    CurlWebClient client;
    EXPECT_EQ(client.dataWithContentsOfUrl("https://localhost/my phone.png"), std::nullopt);
    EXPECT_EQ(client.lastFailure(), "not a valid https address");
}

} // namespace
} // namespace quillomat
