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
    /// The root's view loads here, as every screen's does during its push.
    explicit NavigationController(std::shared_ptr<ViewController> root);
    ~NavigationController();
    NavigationController(const NavigationController&) = delete;
    NavigationController& operator=(const NavigationController&) = delete;

    [[nodiscard]] const std::vector<std::shared_ptr<ViewController>>& stack() const { return stack_; }
    [[nodiscard]] const std::shared_ptr<ViewController>& top() const { return stack_.back(); }
    [[nodiscard]] const std::shared_ptr<ViewController>& root() const { return stack_.front(); }

    /// Loads the screen's view during the push. A screen that stands on the stack already stays where it is.
    void push(std::shared_ptr<ViewController> screen);
    /// The bar's back action; the root stays. A screen that leaves takes along what it presents and what waits there:
    /// their effects do not run any more.
    void pop();
    void popToRoot();

    /// Called after every change of the stack, for a host to mirror.
    std::function<void()> stackChanged;

private:
    void removeTop();
    void reportChange() const;

    std::vector<std::shared_ptr<ViewController>> stack_;
};

} // namespace quillomat
