// The list and the gallery over a fake platform, with a stand-in for the editor.
#pragma once

#include "Answering.h"
#include "FakePlatform.h"
#include "catalogue/MockupEditing.h"
#include "catalogue/ScrollerViewController.h"
#include "catalogue/SelectionTableViewController.h"
#include "platform/views/NavigationController.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace quillomat::testing {

class StandInEditor final : public ViewController, public MockupEditing {
public:
    using ViewController::ViewController;
    void setImageInfo(std::string name) override { imageInfo = std::move(name); }
    void viewDidLoad() override { imageInfoAtLoading = imageInfo; }
    std::string imageInfo;
    std::string imageInfoAtLoading;
};

class CountingStoryboard final : public Storyboard {
public:
    explicit CountingStoryboard(Platform& platform) : platform_(platform) {}
    std::vector<std::string> made;

    [[nodiscard]] std::shared_ptr<ViewController> instantiate(const std::string& identifier) override {
        made.push_back(identifier);
        if (identifier == "scrollerViewController") {
            return std::make_shared<ScrollerViewController>(platform_, *this);
        }
        return std::make_shared<StandInEditor>(platform_, *this);
    }

private:
    Platform& platform_;
};

inline constexpr auto shortCatalogue = "https://maker.test/quillomat/updates/main.json";
inline constexpr auto longCatalogue = "https://www.maker.test/quillomat/updates/main.json";
inline std::string pictureUrl(const std::string& name) {
    return "https://maker.test/quillomat/updates/images/" + name;
}

class CatalogueTest : public ::testing::Test {
protected:
    static constexpr auto catalogue = R"({
        "version": "1.9",
        "tableItems": [
            {"sizeLabel": "3000 x 3000", "typeLabel": "Phones", "descLabel": "Upright", "previewImage": "phone"},
            {"sizeLabel": 12, "typeLabel": "Imported", "descLabel": "Yours", "previewImage": "imported.png"}
        ],
        "viewInfo": {
            "Phones": {"images": ["phone.png", "phone-large.png"]},
            "Imported": {"images": []}
        },
        "editInfo": {}
    })";

    void SetUp() override {
        fake.putResource("main.json", catalogue);
        fake.putResourceImage("phone.png", tinyPng(3, 2));
    }

    /// The list at the root of a new stack; its view has loaded.
    SelectionTableViewController& launch() {
        list_ = std::make_shared<SelectionTableViewController>(fake.platform, storyboard);
        navigation = std::make_unique<NavigationController>(list_);
        return *list_;
    }
    SelectionTableViewController& list() { return *list_; }
    void forgetList() { list_.reset(); }

    /// A gallery of that row, loaded.
    std::shared_ptr<ScrollerViewController> openGallery(const std::string& row) {
        const auto gallery = std::make_shared<ScrollerViewController>(fake.platform, storyboard);
        gallery->setContentInfo(row);
        if (!navigation) {
            launch();
        }
        navigation->push(gallery);
        return gallery;
    }

    void publish(const std::string& text) {
        fake.web.replies[shortCatalogue] = bytesOf(text);
        fake.web.replies[longCatalogue] = bytesOf(text);
    }

    static std::vector<std::string> identifiers(const ScrollerViewController& gallery) {
        std::vector<std::string> names;
        for (const auto& view : gallery.stackView()->arrangedSubviews()) {
            names.push_back(view->accessibilityIdentifier);
        }
        return names;
    }

    FakePlatform fake;
    CountingStoryboard storyboard{fake.platform};
    std::unique_ptr<NavigationController> navigation;

private:
    std::shared_ptr<SelectionTableViewController> list_;
};

} // namespace quillomat::testing
