#include "cli/Names.h"

#include <gtest/gtest.h>

namespace quillomat {
namespace {

TEST(NamesTest, distanceCountsInsertionsDeletionsReplacementsAndSwaps) {
    EXPECT_EQ(editDistance("", ""), 0U);
    EXPECT_EQ(editDistance("phone", "phone"), 0U);
    EXPECT_EQ(editDistance("", "abc"), 3U);
    EXPECT_EQ(editDistance("phone", "phones"), 1U);
    EXPECT_EQ(editDistance("phone", "hpone"), 1U);
    EXPECT_EQ(editDistance("kitten", "sitting"), 3U);
}

TEST(NamesTest, nearestNamesComeNearestFirstAndEachOnce) {
    const std::vector<std::string> names{"tablet.png", "phone.png", "phone-large.png", "phone.png", "watch.png"};
    EXPECT_EQ(nearestNames("phome.png", names), (std::vector<std::string>{"phone.png", "tablet.png", "watch.png"}));
}

TEST(NamesTest, fewerCandidatesGiveFewerNames) {
    EXPECT_EQ(nearestNames("x", {"y"}), std::vector<std::string>{"y"});
    EXPECT_TRUE(nearestNames("x", {}).empty());
}

TEST(NamesTest, pngIsAddedOnlyWhereItIsMissing) {
    EXPECT_EQ(withPngExtension("phone"), "phone.png");
    EXPECT_EQ(withPngExtension("phone.png"), "phone.png");
    EXPECT_EQ(withPngExtension("phone.cfg"), "phone.cfg.png");
}

} // namespace
} // namespace quillomat
