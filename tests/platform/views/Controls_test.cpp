#include "platform/views/Controls.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

using namespace quillomat;
using testing::ElementsAre;

TEST(Button, pressRunsItsActionWithItself) {
    const auto button = std::make_shared<Button>();
    const Button* sender = nullptr;
    button->setAction([&](Button& pressed) { sender = &pressed; });
    button->press();
    EXPECT_EQ(sender, button.get());
}

TEST(Button, disabledButtonIgnoresPresses) {
    const auto button = std::make_shared<Button>();
    int presses = 0;
    button->setAction([&](Button&) { ++presses; });
    button->enabled = false;
    button->press();
    EXPECT_EQ(presses, 0);
    button->enabled = true;
    button->press();
    EXPECT_EQ(presses, 1);
}

TEST(Button, pressWithoutAnActionDoesNothing) {
    std::make_shared<Button>()->press();
}

TEST(Button, actionMayReplaceItselfAndRemoveTheButton) {
    const auto root = std::make_shared<View>();
    auto button = std::make_shared<Button>();
    root->addSubview(button);
    int presses = 0;
    button->setAction([&presses](Button& pressed) {
        pressed.removeFromSuperview();
        pressed.setAction({});
        ++presses;
    });
    Button& pressed = *button;
    button.reset();
    pressed.press();
    EXPECT_EQ(presses, 1);
    EXPECT_TRUE(root->subviews().empty());
}

TEST(Button, titleOfAStateFallsBackToTheNormalOne) {
    Button button;
    EXPECT_EQ(button.title(), "");
    button.setTitle("TLX");
    EXPECT_EQ(button.title(ControlState::selected), "TLX");
    button.setTitle("chosen", ControlState::selected);
    EXPECT_EQ(button.title(ControlState::selected), "chosen");
    EXPECT_EQ(button.title(), "TLX");
}

TEST(ImageView, keepsItsPictureAndLetsTouchesThrough) {
    const Image picture = Image::fromBitmap(Bitmap({2, 2}));
    ImageView view(picture);
    EXPECT_EQ(view.image(), picture);
    EXPECT_FALSE(view.userInteractionEnabled);
    view.setImage({});
    EXPECT_FALSE(view.image());
}

TEST(ScrollView, clipsItsContentFromTheStart) {
    EXPECT_TRUE(ScrollView().masksToBounds);
}

namespace {

std::shared_ptr<StackView> column() {
    auto stack = std::make_shared<StackView>();
    stack->spacing = 40;
    stack->layoutMargins = {.top = 40, .left = 0, .bottom = 40, .right = 0};
    stack->layoutMarginsRelativeArrangement = true;
    stack->distribution = StackDistribution::fillEqually;
    return stack;
}

} // namespace

TEST(StackView, picturesOnAViewOf320AreFortyApartWithFortyAboveAndBelow) {
    const auto stack = column();
    std::vector<std::shared_ptr<View>> cells;
    for (int i = 0; i < 3; ++i) {
        cells.push_back(std::make_shared<ImageView>());
        stack->addArrangedSubview(cells.back(), {320, 220});
    }
    stack->layout();
    EXPECT_EQ(cells[0]->frame(), makeRect(0, 40, 320, 220));
    EXPECT_EQ(cells[1]->frame(), makeRect(0, 300, 320, 220));
    EXPECT_EQ(cells[2]->frame(), makeRect(0, 560, 320, 220));
    EXPECT_EQ(stack->frame(), makeRect(0, 0, 320, 3 * 220 + 2 * 40 + 80));
    EXPECT_THAT(stack->subviews(), ElementsAre(cells[0], cells[1], cells[2]));
}

TEST(StackView, emptyColumnIsItsMargins) {
    const auto stack = column();
    stack->layout();
    EXPECT_EQ(stack->frame().size, (Size{0, 80}));
}

TEST(StackView, marginsCountOnlyWhenTheArrangementIsRelativeToThem) {
    const auto stack = column();
    stack->layoutMarginsRelativeArrangement = false;
    stack->addArrangedSubview(std::make_shared<View>(), {10, 20});
    stack->layout();
    EXPECT_EQ(stack->arrangedSubviews()[0]->frame(), makeRect(0, 0, 10, 20));
    EXPECT_EQ(stack->frame().size, (Size{10, 20}));
}

TEST(StackView, equalDistributionTakesTheTallest) {
    const auto stack = column();
    stack->addArrangedSubview(std::make_shared<View>(), {10, 20});
    stack->addArrangedSubview(std::make_shared<View>(), {30, 50});
    stack->layout();
    EXPECT_EQ(stack->arrangedSubviews()[0]->frame(), makeRect(0, 40, 10, 50));
    EXPECT_EQ(stack->arrangedSubviews()[1]->frame(), makeRect(0, 130, 30, 50));
    stack->distribution = StackDistribution::fill;
    stack->layout();
    EXPECT_EQ(stack->arrangedSubviews()[0]->frame(), makeRect(0, 40, 10, 20));
    EXPECT_EQ(stack->arrangedSubviews()[1]->frame(), makeRect(0, 100, 30, 50));
}

TEST(StackView, negativeAndUndefinedSizesCountAsNone) {
    const auto stack = column();
    stack->addArrangedSubview(std::make_shared<View>(), {50, -50});
    stack->addArrangedSubview(std::make_shared<View>(), {std::numeric_limits<double>::quiet_NaN(), 10});
    stack->distribution = StackDistribution::fill;
    stack->layout();
    EXPECT_EQ(stack->frame().size, (Size{50, 40 + 0 + 40 + 10 + 40}));
}

TEST(StackView, layoutForgetsWhatHasLeft) {
    const auto stack = column();
    const auto first = std::make_shared<View>(), second = std::make_shared<View>();
    stack->addArrangedSubview(first, {10, 20});
    stack->addArrangedSubview(second, {10, 30});
    first->removeFromSuperview();
    stack->layout();
    EXPECT_THAT(stack->arrangedSubviews(), ElementsAre(second));
    EXPECT_EQ(second->frame(), makeRect(0, 40, 10, 30));
}

TEST(StackView, addingAgainMovesToTheEndWithTheNewSize) {
    const auto stack = column();
    const auto first = std::make_shared<View>(), second = std::make_shared<View>();
    stack->addArrangedSubview(first, {10, 20});
    stack->addArrangedSubview(second, {10, 20});
    stack->addArrangedSubview(first, {10, 44});
    stack->distribution = StackDistribution::fill;
    stack->layout();
    EXPECT_THAT(stack->arrangedSubviews(), ElementsAre(second, first));
    EXPECT_EQ(first->frame(), makeRect(0, 100, 10, 44));
}

TEST(StackView, viewThatCannotBeASubviewIsNotArranged) {
    const auto root = std::make_shared<View>();
    const auto stack = column();
    root->addSubview(stack);
    stack->addArrangedSubview(root, {10, 10});
    stack->addArrangedSubview(stack, {10, 10});
    stack->addArrangedSubview(nullptr, {10, 10});
    EXPECT_TRUE(stack->arrangedSubviews().empty());
}
