#include "platform/foundation/NumericOrder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quillomat {
namespace {

void expectLater(std::string_view later, std::string_view earlier) {
    EXPECT_EQ(compareNumerically(later, earlier), std::weak_ordering::greater) << later << " after " << earlier;
    EXPECT_EQ(compareNumerically(earlier, later), std::weak_ordering::less) << earlier << " before " << later;
}

TEST(NumericOrder, digitRunsCompareByTheirValue) {
    expectLater("1.10", "1.9");
    expectLater("10", "9");
    expectLater("3", "2.9");
    expectLater("2.0.1", "2.0");
    expectLater("version 12b", "version 12a");
}

TEST(NumericOrder, equalVersionsAreEquivalent) {
    EXPECT_EQ(compareNumerically("2.0", "2.0"), std::weak_ordering::equivalent);
    EXPECT_EQ(compareNumerically("", ""), std::weak_ordering::equivalent);
}

TEST(NumericOrder, leadingZerosDoNotCount) {
    EXPECT_EQ(compareNumerically("1.07", "1.7"), std::weak_ordering::equivalent);
    EXPECT_EQ(compareNumerically("000", "0"), std::weak_ordering::equivalent);
    expectLater("1.010", "1.9");
    expectLater("01b", "1a");
}

TEST(NumericOrder, runsLongerThanAnyIntegerStillCompareByValue) {
    const std::string nines(5000, '9');
    const std::string power = "1" + std::string(5000, '0');
    expectLater("v" + power, "v" + nines);
    expectLater(power.substr(0, 5000) + "1", power);
    EXPECT_EQ(compareNumerically("0000" + power, power), std::weak_ordering::equivalent);
}

TEST(NumericOrder, otherCharactersCompareByCodePoint) {
    expectLater("b", "a");
    expectLater("a", "B");
    expectLater("\xC3\xA9", "z");
    expectLater("\xF0\x9F\x93\xB1", "\xEF\xBF\xBD");
    expectLater("a", "9");
    expectLater("1.", "1-");
}

TEST(NumericOrder, aLongerTextIsLaterThanItsBeginning) {
    expectLater("1.9 beta", "1.9");
    expectLater("1", "");
    expectLater("0", "");
}

TEST(NumericOrder, isAnOrder) {
    const std::vector<std::string> ascending{"",  "-",  "0",   "0a", "1",  "1.2", "1.10",
                                             "2", "10", "10a", "a",  "a2", "a10", "b"};
    for (std::size_t i = 0; i < ascending.size(); ++i) {
        for (std::size_t j = 0; j < ascending.size(); ++j) {
            EXPECT_EQ(compareNumerically(ascending[i], ascending[j]), i <=> j)
                << ascending[i] << " and " << ascending[j];
        }
    }
}

} // namespace
} // namespace quillomat
