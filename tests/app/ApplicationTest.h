// A launched application over a fake platform, with short names for what a user does.
#pragma once

#include "Answering.h"
#include "FakePlatform.h"
#include "app/Application.h"
#include "catalogue/ScrollerViewController.h"
#include "catalogue/SelectionTableViewController.h"
#include "editor/EditingViewController.h"
#include "platform/views/GestureRecognizer.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace quillomat::testing {

class ApplicationTest : public ::testing::Test {
protected:
    static constexpr auto catalogue = R"({
        "version": "1.9",
        "tableItems": [{"typeLabel": "Phones", "previewImage": "phone"}, {"typeLabel": "Imported"}],
        "viewInfo": {"Phones": {"images": ["phone.png", "phone-large.png"]}, "Imported": {"images": []}},
        "editInfo": {"phone.png": {"finalFrameWidth": 40}, "phone-large.png": {"finalFrameWidth": 80}}
    })";

    void SetUp() override {
        fake.putResource("main.json", catalogue);
        fake.putResourceImage("phone.png", tinyPng(3, 2));
    }

    void launch() {
        application = std::make_unique<Application>(fake.platform);
        application->launch();
    }
    NavigationController& navigation() { return application->navigationController(); }
    template <typename Screen> std::shared_ptr<Screen> top() {
        return std::dynamic_pointer_cast<Screen>(navigation().top());
    }
    SelectionTableViewController& list() { return dynamic_cast<SelectionTableViewController&>(*navigation().root()); }

    void chooseRow(std::size_t row) { list().tableViewDidSelectRowAtIndexPath({0, row}); }
    /// Taps the gallery's picture of that name.
    void tapFrame(const std::string& name) {
        const auto gallery = top<ScrollerViewController>();
        ASSERT_TRUE(gallery);
        for (const auto& picture : gallery->stackView()->arrangedSubviews()) {
            if (picture->accessibilityIdentifier == name) {
                std::dynamic_pointer_cast<TapGestureRecognizer>(picture->gestureRecognizers.at(0))->recognize();
                return;
            }
        }
        FAIL() << "the gallery has no " << name;
    }
    std::vector<std::string> frames() {
        std::vector<std::string> names;
        for (const auto& picture : top<ScrollerViewController>()->stackView()->arrangedSubviews()) {
            names.push_back(picture->accessibilityIdentifier);
        }
        return names;
    }

    FakePlatform fake;
    std::unique_ptr<Application> application;
};

} // namespace quillomat::testing
