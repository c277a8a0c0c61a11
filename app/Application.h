// One running application over a platform: the process-wide editor values, the storyboard and the window.
#pragma once

#include "app/AppDelegate.h"
#include "app/MainStoryboard.h"
#include "editor/EditorState.h"
#include "platform/views/NavigationController.h"

#include <memory>

namespace quillomat {

struct Platform;

/// Every window, test and batch job makes one of its own and so starts from a known state. The platform must outlive
/// it; tasks that are still queued when it goes do nothing any more.
class Application {
public:
    explicit Application(Platform& platform);
    ~Application();
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    /// Builds the window with the catalogue list, which loads and compares its revision with the published one. Once.
    void launch();

    [[nodiscard]] Platform& platform() { return platform_; }
    [[nodiscard]] AppDelegate& delegate() { return delegate_; }
    [[nodiscard]] MainStoryboard& storyboard() { return storyboard_; }
    [[nodiscard]] EditorState& editorState() { return editorState_; }
    /// The window's stack of screens; only after the launch.
    [[nodiscard]] NavigationController& navigationController();

private:
    Platform& platform_;
    EditorState editorState_;
    MainStoryboard storyboard_;
    AppDelegate delegate_; // last, so that the screens go before what they refer to
};

} // namespace quillomat
