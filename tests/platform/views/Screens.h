// What the tests of controllers share: a screen over a fake platform, and alerts that write down what happens to them.
#pragma once

#include "FakePlatform.h"
#include "platform/views/ViewController.h"

#include <cassert>

namespace quillomat::testing {

class EmptyStoryboard final : public Storyboard {
public:
    std::shared_ptr<ViewController> instantiate(const std::string&) override {
        assert(false && "no screens here");
        return nullptr;
    }
};

class PlainScreen : public ViewController {
public:
    using ViewController::ViewController;
    int loads = 0;
    std::function<void(PlainScreen&)> onLoad;
    void viewDidLoad() override {
        ++loads;
        if (onLoad)
            onLoad(*this);
    }
};

/// Makes screens and keeps the lines of what happened.
struct Stage {
    FakePlatform fake;
    EmptyStoryboard storyboard;
    std::vector<std::string> happened;

    std::shared_ptr<PlainScreen> screen() { return std::make_shared<PlainScreen>(fake.platform, storyboard); }
    /// An alert whose two actions write "<title> ok" and "<title> no".
    std::shared_ptr<AlertController> alert(const std::string& title) {
        auto alert = std::make_shared<AlertController>(title, "", AlertStyle::alert);
        for (const char* action : {"ok", "no"})
            alert->addAction(action, ActionStyle::normal,
                             [this, title, action] { happened.push_back(title + " " + action); });
        return alert;
    }
    std::function<void()> note(std::string line) {
        return [this, line = std::move(line)] { happened.push_back(line); };
    }
};

} // namespace quillomat::testing
