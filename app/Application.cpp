#include "app/Application.h"

#include <cassert>

namespace quillomat {

Application::Application(Platform& platform) : platform_(platform), storyboard_(platform, editorState_) {}

Application::~Application() = default;

void Application::launch() {
    assert(!delegate_.window());
    const auto window = std::make_shared<Window>();
    window->rootViewController = storyboard_.instantiateInitialViewController();
    delegate_.setWindow(window);
    static_cast<void>(delegate_.applicationDidFinishLaunchingWithOptions());
}

NavigationController& Application::navigationController() {
    assert(delegate_.window());
    return *delegate_.window()->rootViewController;
}

} // namespace quillomat
