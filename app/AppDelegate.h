// The application's delegate: it holds the window, and has nothing to do at any turn of the application's life.
#pragma once

#include "platform/views/NavigationController.h"

#include <memory>
#include <utility>

namespace quillomat {

struct Window {
    std::shared_ptr<NavigationController> rootViewController;
};

class AppDelegate {
public:
    [[nodiscard]] const std::shared_ptr<Window>& window() const { return window_; }
    void setWindow(std::shared_ptr<Window> window) { window_ = std::move(window); }

    // The window comes from the storyboard and no state is saved or restored, so all of these are empty on purpose.
    [[nodiscard]] bool applicationDidFinishLaunchingWithOptions() { return true; }
    void applicationWillResignActive() {}
    void applicationDidEnterBackground() {}
    void applicationWillEnterForeground() {}
    void applicationDidBecomeActive() {}
    void applicationWillTerminate() {}

private:
    std::shared_ptr<Window> window_;
};

} // namespace quillomat
