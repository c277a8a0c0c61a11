#include "platform/views/Presentation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

using namespace quillomat;

TEST(Presentation, identityIsNeverUsedAgain) {
    std::set<PresentationId> ids;
    for (int i = 0; i < 100; ++i)
        EXPECT_TRUE(ids.insert(ImagePickerController().id()).second);
    EXPECT_FALSE(ids.contains(0));
}

TEST(AlertController, keepsActionsAndTextFieldsInOrder) {
    AlertController alert("Adding A Row", "Enter A Number", AlertStyle::alert);
    alert.addTextField("");
    alert.addAction("Cancel", ActionStyle::normal, {});
    alert.addAction("OK", ActionStyle::cancel, {});
    EXPECT_EQ(alert.title(), "Adding A Row");
    EXPECT_EQ(alert.message(), "Enter A Number");
    EXPECT_EQ(alert.style(), AlertStyle::alert);
    ASSERT_EQ(alert.actions().size(), 2U);
    EXPECT_EQ(alert.actions()[0].title, "Cancel");
    EXPECT_EQ(alert.actions()[1].title, "OK");
    EXPECT_EQ(alert.actions()[1].style, ActionStyle::cancel);
    ASSERT_EQ(alert.textFields().size(), 1U);
    EXPECT_EQ(alert.textFields()[0].text, "");
}
