// The stack of screens.
#pragma once

#include "platform/views/ViewController.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace quillomat {

class NavigationController {
public:
    explicit NavigationController(std::shared_ptr<ViewController> root);
    ~NavigationController();
    NavigationController(const NavigationController&) = delete;
    NavigationController& operator=(const NavigationController&) = delete;

    [[nodiscard]] const std::vector<std::shared_ptr<ViewController>>& stack() const { return stack_; }
    [[nodiscard]] const std::shared_ptr<ViewController>& top() const { return stack_.back(); }
    [[nodiscard]] const std::shared_ptr<ViewController>& root() const { return stack_.front(); }

    /// Loads the screen's view during the push.
    void push(std::shared_ptr<ViewController> screen);
    /// The bar's back action; the root stays.
    void pop();
    void popToRoot();

    /// Called after every change of the stack, for a host to mirror.
    std::function<void()> stackChanged;

private:
    std::vector<std::shared_ptr<ViewController>> stack_;
};

} // namespace quillomat
