#include "app/AppDelegate.h"

#include <gtest/gtest.h>

namespace quillomat::testing {
namespace {

TEST(AppDelegate, didFinishLaunchingAnswersYesAndMakesNoWindow) {
    AppDelegate delegate;
    EXPECT_TRUE(delegate.applicationDidFinishLaunchingWithOptions());
    EXPECT_FALSE(delegate.window());
}

TEST(AppDelegate, holdsTheWindowItIsGiven) {
    AppDelegate delegate;
    const auto window = std::make_shared<Window>();
    delegate.setWindow(window);
    EXPECT_EQ(delegate.window(), window);
    EXPECT_EQ(window.use_count(), 2);
    delegate.setWindow(nullptr);
    EXPECT_FALSE(delegate.window());
}

} // namespace
} // namespace quillomat::testing
