#include "platform/views/NavigationController.h"

#include "Screens.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace quillomat;
using quillomat::testing::PlainScreen;
using quillomat::testing::Stage;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

class Navigating : public ::testing::Test {
protected:
    Stage stage;
    std::shared_ptr<PlainScreen> root = stage.screen();
    std::shared_ptr<PlainScreen> gallery = stage.screen();
    std::shared_ptr<PlainScreen> editor = stage.screen();
};

} // namespace

TEST_F(Navigating, rootLoadsItsViewAndKnowsItsStack) {
    NavigationController stack(root);
    EXPECT_EQ(root->loads, 1);
    EXPECT_EQ(root->navigationController(), &stack);
    EXPECT_EQ(stack.top(), root);
    EXPECT_EQ(stack.root(), root);
}

TEST_F(Navigating, screenLoadsItsViewDuringThePush) {
    NavigationController stack(root);
    const ViewController* top = nullptr;
    gallery->onLoad = [&](PlainScreen& self) { top = self.navigationController()->top().get(); };
    stack.push(gallery);
    EXPECT_EQ(gallery->loads, 1);
    EXPECT_EQ(top, gallery.get());
    EXPECT_THAT(stack.stack(), ElementsAre(root, gallery));
}

TEST_F(Navigating, screenOnTheStackIsNotPushedAgain) {
    NavigationController stack(root);
    stack.push(gallery);
    stack.push(gallery);
    stack.push(root);
    stack.push(nullptr);
    EXPECT_THAT(stack.stack(), ElementsAre(root, gallery));
}

TEST_F(Navigating, popTakesTheTopAndNeverTheRoot) {
    NavigationController stack(root);
    stack.push(gallery);
    stack.pop();
    EXPECT_THAT(stack.stack(), ElementsAre(root));
    EXPECT_EQ(gallery->navigationController(), nullptr);
    stack.pop();
    EXPECT_THAT(stack.stack(), ElementsAre(root));
    EXPECT_EQ(root->navigationController(), &stack);
}

TEST_F(Navigating, popToRootDiscardsEveryScreenBetween) {
    NavigationController stack(root);
    stack.push(gallery);
    stack.push(editor);
    const std::weak_ptr<PlainScreen> between = gallery;
    gallery.reset();
    stack.popToRoot();
    EXPECT_THAT(stack.stack(), ElementsAre(root));
    EXPECT_TRUE(between.expired());
    EXPECT_EQ(editor->navigationController(), nullptr);
}

TEST_F(Navigating, rootIsNotLoadedAgainOnReturn) {
    NavigationController stack(root);
    stack.push(gallery);
    stack.popToRoot();
    EXPECT_EQ(root->loads, 1);
}

TEST_F(Navigating, hostHearsOfEveryChangeOnce) {
    NavigationController stack(root);
    std::vector<std::size_t> heights;
    stack.stackChanged = [&] { heights.push_back(stack.stack().size()); };
    stack.push(gallery);
    stack.push(editor);
    stack.popToRoot();
    stack.popToRoot();
    stack.pop();
    stack.push(gallery);
    stack.pop();
    EXPECT_THAT(heights, ElementsAre(2U, 3U, 1U, 2U, 1U));
}

TEST_F(Navigating, screenMayPushAnotherWhileItLoads) {
    NavigationController stack(root);
    gallery->onLoad = [&](PlainScreen& self) { self.navigationController()->push(editor); };
    stack.push(gallery);
    EXPECT_THAT(stack.stack(), ElementsAre(root, gallery, editor));
}

TEST_F(Navigating, screenTakesAlongWhatItPresents) {
    NavigationController stack(root);
    stack.push(gallery);
    const auto alert = stage.alert("a"), waiting = stage.alert("waiting");
    gallery->present(alert);
    gallery->present(waiting);
    gallery->answerAlert(alert->id(), 0);
    stack.pop();
    EXPECT_EQ(gallery->presented(), nullptr);
    EXPECT_FALSE(gallery->isDismissing());
    gallery->dismissalEnded(alert->id());
    EXPECT_EQ(gallery->presented(), nullptr);
    EXPECT_THAT(stage.happened, IsEmpty());
}

TEST_F(Navigating, nothingThatWaitedComesUpOnAPoppedScreen) {
    NavigationController stack(root);
    stack.push(gallery);
    const auto leave = std::make_shared<AlertController>("leave", "", AlertStyle::alert);
    leave->addAction("Ok", ActionStyle::normal, [&] { stack.popToRoot(); });
    gallery->present(leave);
    gallery->present(stage.alert("waiting"));
    gallery->answerAlert(leave->id(), 0);
    gallery->dismissalEnded(leave->id());
    EXPECT_EQ(gallery->presented(), nullptr);
}

TEST_F(Navigating, hostHearsThatAPoppedScreensAlertHasGone) {
    NavigationController stack(root);
    stack.push(gallery);
    gallery->present(stage.alert("a"));
    int changes = 0;
    gallery->presentationChanged = [&] { ++changes; };
    stack.pop();
    EXPECT_EQ(changes, 1);
}

TEST_F(Navigating, presentationOfTheRootStaysWhenOthersLeave) {
    NavigationController stack(root);
    const auto alert = stage.alert("a");
    root->present(alert);
    stack.push(gallery);
    stack.popToRoot();
    EXPECT_EQ(root->presented(), alert);
}

TEST_F(Navigating, alertsHandlerMayLeaveToTheRootAndEndItsOwnScreen) {
    NavigationController stack(root);
    stack.push(gallery);
    stack.push(editor);
    const auto thanks = std::make_shared<AlertController>("Screenshot", "", AlertStyle::alert);
    const std::weak_ptr<PlainScreen> weak = editor;
    thanks->addAction("Thanks!", ActionStyle::normal, [weak] {
        const auto self = weak.lock();
        self->dismiss();
        self->navigationController()->popToRoot();
    });
    PlainScreen& raw = *editor;
    raw.present(thanks);
    raw.present(stage.alert("waiting"));
    editor.reset();
    raw.answerAlert(thanks->id(), 0);
    raw.dismissalEnded(thanks->id());
    EXPECT_TRUE(weak.expired());
    EXPECT_THAT(stack.stack(), ElementsAre(root));
    EXPECT_THAT(stage.happened, IsEmpty());
}

TEST_F(Navigating, screensOutliveTheirStackWithoutDanglingIntoIt) {
    {
        NavigationController stack(root);
        stack.push(gallery);
    }
    EXPECT_EQ(root->navigationController(), nullptr);
    EXPECT_EQ(gallery->navigationController(), nullptr);
}
