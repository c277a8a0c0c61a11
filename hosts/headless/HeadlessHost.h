// A host without a screen: it presses, picks and answers for a command or a test, and plays every dismissal at once.
#pragma once

#include "platform/foundation/MainQueue.h"
#include "platform/views/NavigationController.h"
#include "platform/views/Platform.h"
#include "platform/views/Presentation.h"

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace quillomat {

/// There is no browser to open pages in; the addresses asked for are kept.
class HeadlessUrlOpener final : public UrlOpener {
public:
    void open(const std::string& url) override { opened_.push_back(url); }
    [[nodiscard]] const std::vector<std::string>& opened() const { return opened_; }

private:
    std::vector<std::string> opened_;
};

/// Reads like a person's session: look at what stands in front, answer it, let time pass. Everything that is asked of
/// what is not there says so by returning false (or null) and changes nothing.
class HeadlessHost {
public:
    HeadlessHost(NavigationController& navigation, SteppedMainQueue& queue) : navigation_(navigation), queue_(queue) {}

    [[nodiscard]] ViewController& top() const { return *navigation_.top(); }
    /// What stands in front of the top screen and is not leaving.
    [[nodiscard]] std::shared_ptr<AlertController> alert() const { return inFront<AlertController>(); }
    [[nodiscard]] std::shared_ptr<ImagePickerController> imagePicker() const {
        return inFront<ImagePickerController>();
    }
    [[nodiscard]] std::shared_ptr<DocumentPickerController> documentPicker() const {
        return inFront<DocumentPickerController>();
    }

    bool pressLeftBarButton();
    bool pressRightBarButton();
    void goBack() { navigation_.pop(); }
    /// Presses the action of that title on the alert or sheet in front; `text` goes into its first text field.
    bool press(const std::string& actionTitle, const std::string& text = {});
    bool pick(const PickedMedia& media);
    bool pickDocument(const std::string& path);
    bool cancelPicker();
    /// A tap on a view with a tap recogniser.
    bool tap(const View& view);
    /// A drag of a view with a pan recogniser, in root view points.
    bool drag(const View& view, Point delta);

    /// Lets time pass: tasks run as they fall due, dismissals end between them.
    void advance(std::chrono::nanoseconds duration);
    /// Plays every dismissal that is under way, and those that follow from it, to its end.
    void settle();

private:
    template <typename T> [[nodiscard]] std::shared_ptr<T> inFront() const {
        return top().isDismissing() ? nullptr : std::dynamic_pointer_cast<T>(top().presented());
    }

    NavigationController& navigation_;
    SteppedMainQueue& queue_;
};

} // namespace quillomat
