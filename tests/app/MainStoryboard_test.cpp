#include "app/MainStoryboard.h"

#include "ApplicationTest.h"

namespace quillomat::testing {
namespace {

class StoryboardTest : public ApplicationTest {
protected:
    EditorState state;
    MainStoryboard storyboard{fake.platform, state};
};

TEST_F(StoryboardTest, scrollerViewControllerIsTheGallery) {
    const auto screen = storyboard.instantiate("scrollerViewController");
    EXPECT_TRUE(std::dynamic_pointer_cast<ScrollerViewController>(screen));
    EXPECT_EQ(&screen->storyboard(), &storyboard);
}

TEST_F(StoryboardTest, editingViewControllerIsTheEditorOverTheGivenState) {
    const auto editor =
        std::dynamic_pointer_cast<EditingViewController>(storyboard.instantiate("editingViewController"));
    ASSERT_TRUE(editor);
    EXPECT_EQ(&editor->state(), &state);
}

TEST_F(StoryboardTest, everyInstantiationMakesANewScreenThatHasNotLoaded) {
    for (const char* identifier : {"scrollerViewController", "editingViewController"}) {
        const auto first = storyboard.instantiate(identifier);
        EXPECT_NE(first, storyboard.instantiate(identifier));
        EXPECT_FALSE(first->isViewLoaded());
    }
}

TEST_F(StoryboardTest, initialControllerHasTheListAtItsRoot) {
    const auto initial = storyboard.instantiateInitialViewController();
    ASSERT_EQ(initial->stack().size(), 1U);
    EXPECT_TRUE(std::dynamic_pointer_cast<SelectionTableViewController>(initial->root()));
    EXPECT_TRUE(initial->root()->isViewLoaded());
}

using StoryboardDeathTest = StoryboardTest;

TEST_F(StoryboardDeathTest, unknownIdentifierIsAProgrammingFault) {
    EXPECT_DEATH(static_cast<void>(storyboard.instantiate("settingsViewController")), "settingsViewController");
}

} // namespace
} // namespace quillomat::testing
