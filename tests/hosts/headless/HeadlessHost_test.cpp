#include "hosts/headless/HeadlessHost.h"

#include "FakePlatform.h"
#include "platform/views/GestureRecognizer.h"

#include <gtest/gtest.h>

namespace quillomat {
namespace {

struct NoStoryboard final : Storyboard {
    std::shared_ptr<ViewController> instantiate(const std::string&) override { return nullptr; }
};

struct HeadlessHostTest : ::testing::Test {
    testing::FakePlatform world;
    NoStoryboard storyboard;
    std::shared_ptr<ViewController> screen = std::make_shared<ViewController>(world.platform, storyboard);
    NavigationController navigation{screen};
    HeadlessHost host{navigation, world.queue};

    std::shared_ptr<AlertController> question(std::function<void()> yes) {
        auto alert = std::make_shared<AlertController>("Title", "Message", AlertStyle::alert);
        alert->addAction("No", ActionStyle::normal, {});
        alert->addAction("Yes", ActionStyle::normal, std::move(yes));
        return alert;
    }
};

TEST_F(HeadlessHostTest, pressingAnActionRunsItAfterTheAlertHasGone) {
    bool gone = false;
    screen->present(question([&] { gone = screen->presented() == nullptr; }));
    ASSERT_NE(host.alert(), nullptr);
    EXPECT_TRUE(host.press("Yes"));
    EXPECT_TRUE(gone);
    EXPECT_EQ(host.alert(), nullptr);
}

TEST_F(HeadlessHostTest, pressingWhatIsNotThereChangesNothing) {
    EXPECT_FALSE(host.press("Yes"));
    screen->present(question({}));
    EXPECT_FALSE(host.press("Maybe"));
    EXPECT_NE(host.alert(), nullptr);
}

TEST_F(HeadlessHostTest, textGoesIntoTheFirstField) {
    auto prompt = question({});
    prompt->addTextField("");
    screen->present(prompt);
    EXPECT_TRUE(host.press("Yes", "42"));
    EXPECT_EQ(prompt->textFields().front().text, "42");
}

TEST_F(HeadlessHostTest, aPickerThatIsCancelledGoes) {
    EXPECT_FALSE(host.cancelPicker());
    screen->present(std::make_shared<ImagePickerController>());
    EXPECT_FALSE(host.press("Yes")) << "a picker has no actions";
    EXPECT_TRUE(host.cancelPicker());
    EXPECT_EQ(screen->presented(), nullptr);
}

TEST_F(HeadlessHostTest, picksNeedTheirPicker) {
    EXPECT_FALSE(host.pick({}));
    EXPECT_FALSE(host.pickDocument("/a/file"));
}

TEST_F(HeadlessHostTest, barButtonsArePressedWhereTheyStand) {
    int presses = 0;
    EXPECT_FALSE(host.pressLeftBarButton());
    screen->navigationItem.leftBarButtonItem =
        BarButtonItem{"Options", BarButtonStyle::done, true, 12, [&] { ++presses; }};
    EXPECT_TRUE(host.pressLeftBarButton());
    EXPECT_FALSE(host.pressRightBarButton());
    EXPECT_EQ(presses, 1);
}

TEST_F(HeadlessHostTest, tapsAndDragsNeedInteraction) {
    int taps = 0;
    Point moved;
    const auto view = std::make_shared<View>(makeRect(0, 0, 20, 20));
    EXPECT_FALSE(host.tap(*view));
    view->addGestureRecognizer(std::make_shared<TapGestureRecognizer>([&](TapGestureRecognizer&) { ++taps; }));
    view->addGestureRecognizer(
        std::make_shared<PanGestureRecognizer>([&](PanGestureRecognizer& pan) { moved = pan.translation(); }));
    EXPECT_TRUE(host.tap(*view));
    EXPECT_TRUE(host.drag(*view, {3, 4}));
    EXPECT_EQ(taps, 1);
    EXPECT_EQ(moved, (Point{3, 4}));
    view->userInteractionEnabled = false;
    EXPECT_FALSE(host.tap(*view));
    EXPECT_FALSE(host.drag(*view, {1, 1}));
    EXPECT_EQ(taps, 1);
}

TEST_F(HeadlessHostTest, timePassesOnlyWhenToldTo) {
    bool ran = false;
    world.queue.after(std::chrono::seconds(2), [&] { ran = true; });
    host.advance(std::chrono::milliseconds(1999));
    EXPECT_FALSE(ran);
    host.advance(std::chrono::milliseconds(1));
    EXPECT_TRUE(ran);
}

} // namespace
} // namespace quillomat
