#include "hosts/headless/HeadlessHost.h"

#include "platform/views/GestureRecognizer.h"

namespace quillomat {

namespace {

bool pressItem(const std::optional<BarButtonItem>& item) {
    if (!item || !item->action) {
        return false;
    }
    // The action may replace the item, so it is called through a copy.
    const auto action = item->action;
    action();
    return true;
}

template <typename T> std::shared_ptr<T> recognizer(const View& view) {
    for (const auto& candidate : view.gestureRecognizers) {
        if (auto found = std::dynamic_pointer_cast<T>(candidate)) {
            return found;
        }
    }
    return nullptr;
}

} // namespace

bool HeadlessHost::pressLeftBarButton() {
    const bool pressed = pressItem(top().navigationItem.leftBarButtonItem);
    settle();
    return pressed;
}

bool HeadlessHost::pressRightBarButton() {
    const bool pressed = pressItem(top().navigationItem.rightBarButtonItem);
    settle();
    return pressed;
}

bool HeadlessHost::press(const std::string& actionTitle, const std::string& text) {
    const auto front = alert();
    if (!front) {
        return false;
    }
    for (std::size_t index = 0; index < front->actions().size(); ++index) {
        if (front->actions()[index].title == actionTitle) {
            top().answerAlert(front->id(), index, text);
            settle();
            return true;
        }
    }
    return false;
}

bool HeadlessHost::pick(const PickedMedia& media) {
    const auto picker = imagePicker();
    if (!picker) {
        return false;
    }
    top().answerImagePicker(picker->id(), media);
    settle();
    return true;
}

bool HeadlessHost::pickDocument(const std::string& path) {
    const auto picker = documentPicker();
    if (!picker) {
        return false;
    }
    top().answerDocumentPicker(picker->id(), path);
    settle();
    return true;
}

bool HeadlessHost::cancelPicker() {
    const auto& front = top().presented();
    if (!imagePicker() && !documentPicker()) {
        return false;
    }
    top().cancelPicker(front->id());
    settle();
    return true;
}

bool HeadlessHost::tap(const View& view) {
    const auto found = recognizer<TapGestureRecognizer>(view);
    if (!found || !view.userInteractionEnabled) {
        return false;
    }
    found->recognize();
    settle();
    return true;
}

bool HeadlessHost::drag(const View& view, Point delta) {
    const auto found = recognizer<PanGestureRecognizer>(view);
    if (!found || !view.userInteractionEnabled) {
        return false;
    }
    found->move(delta);
    settle();
    return true;
}

void HeadlessHost::advance(std::chrono::nanoseconds duration) {
    settle();
    queue_.advance(duration);
    settle();
}

void HeadlessHost::settle() {
    // A screen may leave the stack in the completion of its own dismissal: each round looks at the stack afresh.
    for (bool found = true; found;) {
        found = false;
        const auto screens = navigation_.stack();
        for (const auto& screen : screens) {
            if (screen->isDismissing() && screen->presented()) {
                screen->dismissalEnded(screen->presented()->id());
                found = true;
            }
        }
    }
}

} // namespace quillomat
