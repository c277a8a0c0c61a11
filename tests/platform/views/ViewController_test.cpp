#include "platform/views/ViewController.h"

#include "Screens.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace quillomat;
using quillomat::testing::PlainScreen;
using quillomat::testing::Stage;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

class Presenting : public ::testing::Test {
protected:
    Stage stage;
    std::shared_ptr<PlainScreen> screen = stage.screen();

    void answerAndEnd(const std::shared_ptr<AlertController>& alert, std::size_t action) {
        screen->answerAlert(alert->id(), action);
        screen->dismissalEnded(alert->id());
    }
};

struct PickTaker final : ImagePickerDelegate, DocumentPickerDelegate {
    std::vector<PickedMedia> pictures;
    std::vector<std::string> paths;
    std::function<void()> then;
    void imagePickerControllerDidFinishPickingMediaWithInfo(ImagePickerController&, const PickedMedia& info) override {
        pictures.push_back(info);
        if (then)
            then();
    }
    void documentPickerDidPickDocumentAtURL(DocumentPickerController&, const std::string& path) override {
        paths.push_back(path);
        if (then)
            then();
    }
};

} // namespace

TEST(ViewControllerView, isMadeOnceAtTheFirstCall) {
    Stage stage;
    const auto screen = stage.screen();
    EXPECT_FALSE(screen->isViewLoaded());
    EXPECT_EQ(screen->loads, 0);
    const auto view = screen->view();
    EXPECT_EQ(view->frame(), makeRect(0, 0, 360, 740));
    EXPECT_EQ(screen->view(), view);
    EXPECT_EQ(screen->loads, 1);
}

TEST(ViewControllerView, mayBeAskedForWhileItLoads) {
    Stage stage;
    const auto screen = stage.screen();
    screen->onLoad = [](PlainScreen& self) { self.view()->addSubview(std::make_shared<View>()); };
    EXPECT_EQ(screen->view()->subviews().size(), 1U);
    EXPECT_EQ(screen->loads, 1);
}

TEST_F(Presenting, presentedThingStandsInFrontAtOnce) {
    const auto alert = stage.alert("a");
    screen->present(alert);
    EXPECT_EQ(screen->presented(), alert);
    EXPECT_FALSE(screen->isDismissing());
    screen->present(nullptr);
    EXPECT_EQ(screen->presented(), alert);
}

TEST_F(Presenting, handlerRunsOnlyAfterTheDismissalHasCompleted) {
    const auto alert = stage.alert("a");
    screen->present(alert);
    screen->answerAlert(alert->id(), 0);
    EXPECT_TRUE(screen->isDismissing());
    EXPECT_EQ(screen->presented(), alert);
    EXPECT_THAT(stage.happened, IsEmpty());
    screen->dismissalEnded(alert->id());
    EXPECT_EQ(screen->presented(), nullptr);
    EXPECT_FALSE(screen->isDismissing());
    EXPECT_THAT(stage.happened, ElementsAre("a ok"));
}

TEST_F(Presenting, nothingStandsInFrontWhileTheHandlerRuns) {
    auto alert = std::make_shared<AlertController>("a", "", AlertStyle::actionSheet);
    bool clear = false;
    alert->addAction("go", ActionStyle::normal,
                     [&] { clear = screen->presented() == nullptr && !screen->isDismissing(); });
    screen->present(alert);
    answerAndEnd(alert, 0);
    EXPECT_TRUE(clear);
}

TEST_F(Presenting, secondAnswerIsIgnored) {
    const auto alert = stage.alert("a");
    screen->present(alert);
    screen->answerAlert(alert->id(), 0);
    screen->answerAlert(alert->id(), 1);
    screen->dismissalEnded(alert->id());
    screen->dismissalEnded(alert->id());
    screen->answerAlert(alert->id(), 1);
    EXPECT_THAT(stage.happened, ElementsAre("a ok"));
}

TEST_F(Presenting, answersOfOtherAlertsAndUnknownActionsAreIgnored) {
    const auto alert = stage.alert("a");
    const auto other = stage.alert("b");
    screen->present(alert);
    screen->answerAlert(other->id(), 0);
    screen->answerAlert(alert->id(), 2);
    screen->dismissalEnded(alert->id()); // it is not leaving
    EXPECT_EQ(screen->presented(), alert);
    EXPECT_FALSE(screen->isDismissing());
    EXPECT_THAT(stage.happened, IsEmpty());
}

TEST_F(Presenting, actionWithoutHandlerOnlyDismisses) {
    auto alert = std::make_shared<AlertController>("a", "", AlertStyle::alert);
    alert->addAction("Dismiss", ActionStyle::cancel, {});
    screen->present(alert);
    answerAndEnd(alert, 0);
    EXPECT_EQ(screen->presented(), nullptr);
}

TEST_F(Presenting, answerFillsTheFirstTextField) {
    auto alert = std::make_shared<AlertController>("a", "", AlertStyle::alert);
    alert->addTextField("");
    std::string entered;
    alert->addAction("OK", ActionStyle::normal,
                     [&entered, fields = alert.get()] { entered = fields->textFields().front().text; });
    screen->present(alert);
    screen->answerAlert(alert->id(), 0, "30.7");
    screen->dismissalEnded(alert->id());
    EXPECT_EQ(entered, "30.7");
}

TEST_F(Presenting, laterPresentationsWaitInLine) {
    const auto a = stage.alert("a"), b = stage.alert("b"), c = stage.alert("c");
    screen->present(a);
    screen->present(b);
    screen->answerAlert(a->id(), 0);
    screen->present(c);
    EXPECT_EQ(screen->presented(), a);
    screen->dismissalEnded(a->id());
    EXPECT_EQ(screen->presented(), b);
    EXPECT_FALSE(screen->isDismissing());
    answerAndEnd(b, 1);
    EXPECT_EQ(screen->presented(), c);
    EXPECT_THAT(stage.happened, ElementsAre("a ok", "b no"));
}

TEST_F(Presenting, nothingIsPresentedTwiceAtATime) {
    const auto a = stage.alert("a"), b = stage.alert("b");
    for (const auto& alert : {a, a, b, b})
        screen->present(alert);
    answerAndEnd(a, 0);
    answerAndEnd(b, 0);
    EXPECT_EQ(screen->presented(), nullptr);
    EXPECT_THAT(stage.happened, ElementsAre("a ok", "b ok"));
}

TEST_F(Presenting, answerOfAWaitingAlertIsIgnored) {
    const auto a = stage.alert("a"), b = stage.alert("b");
    screen->present(a);
    screen->present(b);
    screen->answerAlert(b->id(), 0);
    answerAndEnd(a, 0);
    EXPECT_EQ(screen->presented(), b);
    EXPECT_THAT(stage.happened, ElementsAre("a ok"));
}

TEST_F(Presenting, handlerMayPresentAgain) {
    const auto question = std::make_shared<AlertController>("sheet", "", AlertStyle::actionSheet);
    const auto result = stage.alert("result");
    question->addAction("Delete Mockup", ActionStyle::normal, [&] { screen->present(result); });
    screen->present(question);
    answerAndEnd(question, 0);
    EXPECT_EQ(screen->presented(), result);
    answerAndEnd(result, 0);
    EXPECT_THAT(stage.happened, ElementsAre("result ok"));
}

TEST_F(Presenting, handlerThatPresentsAgainJoinsTheEndOfTheLine) {
    const auto first = std::make_shared<AlertController>("first", "", AlertStyle::alert);
    const auto waiting = stage.alert("waiting"), late = stage.alert("late");
    first->addAction("go", ActionStyle::normal, [&] { screen->present(late); });
    screen->present(first);
    screen->present(waiting);
    answerAndEnd(first, 0);
    EXPECT_EQ(screen->presented(), waiting);
    answerAndEnd(waiting, 0);
    EXPECT_EQ(screen->presented(), late);
}

TEST_F(Presenting, sameAlertMayComeUpAgainOnceItHasGone) {
    const auto alert = stage.alert("a");
    screen->present(alert);
    answerAndEnd(alert, 0);
    screen->present(alert);
    EXPECT_EQ(screen->presented(), alert);
    EXPECT_FALSE(screen->isDismissing());
    answerAndEnd(alert, 1);
    EXPECT_THAT(stage.happened, ElementsAre("a ok", "a no"));
}

TEST_F(Presenting, handlerThatDismissesDoesNotTakeAwayWhatWaits) {
    const auto blurQuestion = std::make_shared<AlertController>("Option", "", AlertStyle::alert);
    blurQuestion->addAction("No", ActionStyle::normal, [&] { screen->dismiss(stage.note("dismissed")); });
    const auto waiting = stage.alert("waiting");
    screen->present(blurQuestion);
    screen->present(waiting);
    answerAndEnd(blurQuestion, 0);
    EXPECT_EQ(screen->presented(), waiting);
    EXPECT_FALSE(screen->isDismissing());
    EXPECT_THAT(stage.happened, ElementsAre("dismissed"));
}

TEST_F(Presenting, dismissingNothingCompletesAtOnce) {
    screen->dismiss(stage.note("done"));
    screen->dismiss();
    EXPECT_THAT(stage.happened, ElementsAre("done"));
}

TEST_F(Presenting, dismissingCompletesWhenItHasGone) {
    const auto alert = stage.alert("a");
    screen->present(alert);
    screen->dismiss(stage.note("done"));
    EXPECT_TRUE(screen->isDismissing());
    EXPECT_THAT(stage.happened, IsEmpty());
    screen->answerAlert(alert->id(), 0); // already leaving
    screen->dismissalEnded(alert->id());
    EXPECT_THAT(stage.happened, ElementsAre("done"));
}

TEST_F(Presenting, completionsRunInTheOrderTheyWereAskedFor) {
    const auto alert = stage.alert("a");
    screen->present(alert);
    screen->answerAlert(alert->id(), 0);
    screen->dismiss(stage.note("first"));
    screen->dismiss();
    screen->dismiss(stage.note("second"));
    screen->dismissalEnded(alert->id());
    EXPECT_THAT(stage.happened, ElementsAre("a ok", "first", "second"));
}

TEST_F(Presenting, whatIsPresentedDuringADismissalComesUpWhenThatHasGone) {
    const auto picker = std::make_shared<ImagePickerController>();
    const auto alert = stage.alert("a");
    screen->present(picker);
    screen->dismiss();
    screen->present(alert);
    EXPECT_EQ(screen->presented(), picker);
    screen->dismissalEnded(picker->id());
    EXPECT_EQ(screen->presented(), alert);
}

TEST_F(Presenting, hostHearsOfEveryChange) {
    std::vector<std::string> seen;
    screen->presentationChanged = [&] {
        seen.push_back(!screen->presented() ? "gone" : screen->isDismissing() ? "leaving" : "up");
    };
    const auto a = stage.alert("a"), b = stage.alert("b");
    screen->present(a);
    screen->present(b);
    answerAndEnd(a, 0);
    screen->dismiss();
    screen->dismissalEnded(b->id());
    EXPECT_THAT(seen, ElementsAre("up", "leaving", "gone", "up", "leaving", "gone"));
}

TEST_F(Presenting, handlerMayDestroyTheScreen) {
    const auto alert = std::make_shared<AlertController>("a", "", AlertStyle::alert);
    const std::weak_ptr<PlainScreen> weak = screen;
    alert->addAction("go", ActionStyle::normal, [&] { screen.reset(); });
    PlainScreen& raw = *screen;
    raw.present(alert);
    raw.present(stage.alert("waiting"));
    raw.answerAlert(alert->id(), 0);
    raw.dismissalEnded(alert->id());
    EXPECT_TRUE(weak.expired());
}

TEST_F(Presenting, destroyedScreenRunsNoHandlers) {
    const auto alert = stage.alert("a");
    screen->present(alert);
    screen->answerAlert(alert->id(), 0);
    screen.reset();
    EXPECT_THAT(stage.happened, IsEmpty());
}

TEST_F(Presenting, alertIsReleasedWhenItHasGone) {
    auto alert = stage.alert("a");
    const std::weak_ptr<AlertController> weak = alert;
    const PresentationId id = alert->id();
    screen->present(std::exchange(alert, nullptr));
    screen->answerAlert(id, 0);
    screen->dismissalEnded(id);
    EXPECT_TRUE(weak.expired());
}

// Pickers -------------------------------------------------------------------------------------------------------------

TEST_F(Presenting, pickedPictureGoesToTheDelegateWhichDismisses) {
    const auto taker = std::make_shared<PickTaker>();
    taker->then = [&] { screen->dismiss(); };
    const auto picker = std::make_shared<ImagePickerController>();
    picker->delegate = taker;
    screen->present(picker);
    const Image picture = Image::fromBitmap(Bitmap({2, 3}));
    screen->answerImagePicker(picker->id(), {picture, {}});
    ASSERT_EQ(taker->pictures.size(), 1U);
    EXPECT_EQ(taker->pictures[0].originalImage, picture);
    EXPECT_FALSE(taker->pictures[0].editedImage);
    EXPECT_TRUE(screen->isDismissing());
}

TEST_F(Presenting, pickerDeliversOnce) {
    const auto taker = std::make_shared<PickTaker>();
    const auto picker = std::make_shared<ImagePickerController>();
    picker->delegate = taker;
    screen->present(picker);
    screen->answerImagePicker(picker->id(), {});
    screen->answerImagePicker(picker->id(), {});
    EXPECT_EQ(taker->pictures.size(), 1U);
    EXPECT_FALSE(screen->isDismissing());
    screen->cancelPicker(picker->id());
    EXPECT_TRUE(screen->isDismissing());
}

TEST_F(Presenting, cancelledPickerLeavesAndTheDelegateHearsNothing) {
    const auto taker = std::make_shared<PickTaker>();
    const auto picker = std::make_shared<ImagePickerController>();
    picker->delegate = taker;
    screen->present(picker);
    screen->cancelPicker(picker->id());
    screen->answerImagePicker(picker->id(), {});
    screen->dismissalEnded(picker->id());
    EXPECT_EQ(screen->presented(), nullptr);
    EXPECT_THAT(taker->pictures, IsEmpty());
}

TEST_F(Presenting, pickerWithoutItsDelegateLeaves) {
    auto taker = std::make_shared<PickTaker>();
    const auto picker = std::make_shared<ImagePickerController>();
    picker->delegate = taker;
    screen->present(picker);
    taker.reset();
    screen->answerImagePicker(picker->id(), {});
    EXPECT_TRUE(screen->isDismissing());
}

TEST_F(Presenting, documentPickerLeavesByItselfBeforeItsDelegateIsTold) {
    const auto taker = std::make_shared<PickTaker>();
    const auto question = stage.alert("File Already Exists");
    bool leaving = false;
    taker->then = [&] {
        leaving = screen->isDismissing();
        screen->present(question);
    };
    const auto picker = std::make_shared<DocumentPickerController>();
    picker->delegate = taker;
    screen->present(picker);
    screen->answerDocumentPicker(picker->id(), "/elsewhere/abc.cfg");
    screen->answerDocumentPicker(picker->id(), "/elsewhere/again.cfg");
    EXPECT_TRUE(leaving);
    EXPECT_THAT(taker->paths, ElementsAre("/elsewhere/abc.cfg"));
    screen->dismissalEnded(picker->id());
    EXPECT_EQ(screen->presented(), question);
}

TEST_F(Presenting, answersOfAnotherKindAreIgnored) {
    const auto picker = std::make_shared<ImagePickerController>();
    const auto alert = stage.alert("a");
    screen->present(picker);
    screen->answerAlert(picker->id(), 0);
    screen->answerDocumentPicker(picker->id(), "x");
    EXPECT_FALSE(screen->isDismissing());
    screen->cancelPicker(picker->id());
    screen->dismissalEnded(picker->id());
    screen->present(alert);
    screen->cancelPicker(alert->id());
    screen->answerImagePicker(alert->id(), {});
    EXPECT_FALSE(screen->isDismissing());
}

TEST_F(Presenting, delegateMayDestroyTheScreenWhilePicking) {
    const auto taker = std::make_shared<PickTaker>();
    taker->then = [&] { screen.reset(); };
    const auto picker = std::make_shared<ImagePickerController>();
    picker->delegate = taker;
    PlainScreen& raw = *screen;
    raw.present(picker);
    raw.answerImagePicker(picker->id(), {});
    EXPECT_EQ(taker->pictures.size(), 1U);
}
