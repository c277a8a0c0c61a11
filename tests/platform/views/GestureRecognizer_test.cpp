#include "platform/views/GestureRecognizer.h"

#include "platform/views/View.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace quillomat;

namespace {

struct Tapped {
    std::shared_ptr<View> view = std::make_shared<View>(makeRect(0, 0, 10, 10));
    int taps = 0;
    std::shared_ptr<TapGestureRecognizer> tap =
        std::make_shared<TapGestureRecognizer>([this](TapGestureRecognizer&) { ++taps; });
};

} // namespace

TEST(TapGestureRecognizer, callsItsActionForTheViewItStandsOn) {
    const auto view = std::make_shared<View>();
    view->accessibilityIdentifier = "phone-large.png";
    std::string tapped;
    const auto tap = std::make_shared<TapGestureRecognizer>(
        [&](TapGestureRecognizer& sender) { tapped = sender.view()->accessibilityIdentifier; });
    view->addGestureRecognizer(tap);
    tap->recognize();
    EXPECT_EQ(tapped, "phone-large.png");
}

TEST(TapGestureRecognizer, needsAView) {
    Tapped t;
    t.tap->recognize();
    EXPECT_EQ(t.taps, 0);
    t.view->addGestureRecognizer(t.tap);
    t.tap->recognize();
    EXPECT_EQ(t.taps, 1);
    t.view.reset();
    EXPECT_EQ(t.tap->view(), nullptr);
    t.tap->recognize();
    EXPECT_EQ(t.taps, 1);
}

TEST(TapGestureRecognizer, viewWithoutInteractionIgnoresTaps) {
    Tapped t;
    t.view->addGestureRecognizer(t.tap);
    t.view->userInteractionEnabled = false;
    t.tap->recognize();
    EXPECT_EQ(t.taps, 0);
}

TEST(TapGestureRecognizer, movesFromViewToView) {
    Tapped t;
    const auto other = std::make_shared<View>();
    t.view->addGestureRecognizer(t.tap);
    t.view->addGestureRecognizer(t.tap);
    EXPECT_EQ(t.view->gestureRecognizers.size(), 1U);
    other->addGestureRecognizer(t.tap);
    EXPECT_TRUE(t.view->gestureRecognizers.empty());
    EXPECT_EQ(t.tap->view(), other);
    other->addGestureRecognizer(nullptr);
    EXPECT_EQ(other->gestureRecognizers.size(), 1U);
}

TEST(TapGestureRecognizer, actionMayDestroyViewAndRecognizer) {
    auto view = std::make_shared<View>();
    int taps = 0;
    auto tap = std::make_shared<TapGestureRecognizer>([&](TapGestureRecognizer& sender) {
        view.reset();
        ++taps;
        EXPECT_NE(sender.view(), nullptr);
    });
    view->addGestureRecognizer(tap);
    TapGestureRecognizer& sender = *tap;
    tap.reset();
    sender.recognize();
    EXPECT_EQ(taps, 1);
}

TEST(PanGestureRecognizer, translationAddsUpUntilItIsReset) {
    const auto view = std::make_shared<View>();
    std::vector<Point> seen;
    const auto pan = std::make_shared<PanGestureRecognizer>(
        [&](PanGestureRecognizer& sender) { seen.push_back(sender.translation()); });
    view->addGestureRecognizer(pan);
    pan->move({3, 4});
    pan->move({1, -2});
    pan->setTranslation({0, 0});
    pan->move({5, 5});
    EXPECT_THAT(seen, testing::ElementsAre(Point{3, 4}, Point{4, 2}, Point{5, 5}));
}

TEST(PanGestureRecognizer, viewWithoutInteractionIgnoresMoves) {
    const auto view = std::make_shared<View>();
    int moves = 0;
    const auto pan = std::make_shared<PanGestureRecognizer>([&](PanGestureRecognizer&) { ++moves; });
    view->addGestureRecognizer(pan);
    view->userInteractionEnabled = false;
    pan->move({3, 4});
    EXPECT_EQ(moves, 0);
    EXPECT_EQ(pan->translation(), (Point{0, 0}));
}
