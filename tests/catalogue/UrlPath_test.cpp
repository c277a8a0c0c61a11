#include "catalogue/UrlPath.h"

#include <gtest/gtest.h>

namespace quillomat::testing {
namespace {

TEST(NeedsNoEscaping, namesOfPlainLettersDigitsAndMarksStandAsTheyAre) {
    for (const char* name : {"phone.png", "phone-large_2~x.png", "A9!$&'()*+,;=:@.png", "a%20b.png", "a?b#c.png", ""}) {
        EXPECT_TRUE(needsNoEscaping(name)) << name;
    }
}

TEST(NeedsNoEscaping, everyOtherCharacterNeedsIt) {
    for (const char* name : {"a b", "a\tb", "a\x01", "a\x7f", "\xC3\xBC", "a\"b", "<",  ">",   "[",   "]",   "{",
                             "}",   "|",    "\\",    "^",     "`",        "%",    "%4", "%zz", "a%2", "%%20"}) {
        EXPECT_FALSE(needsNoEscaping(name)) << name;
    }
}

TEST(NeedsNoEscaping, looksNoFurtherThanTheNamesEnd) {
    EXPECT_FALSE(needsNoEscaping(std::string_view("%412").substr(0, 2)));
}

} // namespace
} // namespace quillomat::testing
