#include "platform/views/NavigationController.h"

#include <algorithm>
#include <cassert>

namespace quillomat {

NavigationController::NavigationController(std::shared_ptr<ViewController> root) {
    assert(root && "a stack has a root");
    push(std::move(root));
}

NavigationController::~NavigationController() {
    for (const auto& screen : stack_)
        screen->navigation_ = nullptr;
}

void NavigationController::push(std::shared_ptr<ViewController> screen) {
    if (!screen || std::find(stack_.begin(), stack_.end(), screen) != stack_.end())
        return;
    screen->navigation_ = this;
    stack_.push_back(screen);
    screen->view();
    reportChange();
}

void NavigationController::pop() {
    if (stack_.size() <= 1)
        return;
    const auto leaving = stack_.back(); // it may be the caller
    removeTop();
    reportChange();
}

void NavigationController::popToRoot() {
    if (stack_.size() <= 1)
        return;
    const std::vector<std::shared_ptr<ViewController>> leaving(stack_.begin() + 1, stack_.end());
    while (stack_.size() > 1)
        removeTop();
    reportChange();
}

void NavigationController::removeTop() {
    const auto leaving = std::move(stack_.back());
    stack_.pop_back();
    leaving->navigation_ = nullptr;
    leaving->abandonPresentations();
}

void NavigationController::reportChange() const {
    const auto report = stackChanged; // it may replace itself
    if (report)
        report();
}

} // namespace quillomat
