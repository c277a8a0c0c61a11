#include "platform/views/ViewController.h"

#include "platform/views/Platform.h"

#include <algorithm>
#include <utility>

namespace quillomat {

ViewController::ViewController(Platform& platform, Storyboard& storyboard)
    : platform_(platform), storyboard_(storyboard) {}

const std::shared_ptr<View>& ViewController::view() {
    if (!view_) {
        view_ = loadView();
        viewDidLoad();
    }
    return view_;
}

std::shared_ptr<View> ViewController::loadView() {
    return std::make_shared<View>(Rect{{}, platform_.screen.size});
}

void ViewController::present(std::shared_ptr<Presentation> presentation) {
    if (!presentation || presentation == presented_ ||
        std::find(waiting_.begin(), waiting_.end(), presentation) != waiting_.end())
        return;
    if (presented_ || !waiting_.empty())
        waiting_.push_back(std::move(presentation));
    else
        bringUp(std::move(presentation));
}

void ViewController::bringUp(std::shared_ptr<Presentation> presentation) {
    presented_ = std::move(presentation);
    dismissing_ = false;
    answered_ = false;
    reportChange();
}

void ViewController::dismiss(std::function<void()> completion) {
    if (!presented_) {
        if (completion)
            completion();
        return;
    }
    if (completion)
        completions_.push_back(std::move(completion));
    startDismissal();
}

void ViewController::startDismissal() {
    if (dismissing_)
        return;
    dismissing_ = true;
    reportChange();
}

/// Whether a report is about what stands in front and is not leaving.
bool ViewController::standsFirmly(PresentationId id) const {
    return presented_ && presented_->id() == id && !dismissing_;
}

void ViewController::answerAlert(PresentationId id, std::size_t actionIndex, const std::string& text) {
    if (!standsFirmly(id))
        return;
    const auto alert = std::dynamic_pointer_cast<AlertController>(presented_);
    if (!alert || actionIndex >= alert->actions().size())
        return;
    if (!alert->textFields().empty())
        alert->textFields().front().text = text;
    if (const auto& handler = alert->actions()[actionIndex].handler)
        completions_.push_back(handler);
    startDismissal();
}

void ViewController::answerImagePicker(PresentationId id, const PickedMedia& media) {
    if (!standsFirmly(id) || answered_)
        return;
    const auto picker = std::dynamic_pointer_cast<ImagePickerController>(presented_);
    if (!picker)
        return;
    answered_ = true;
    const auto self = weak_from_this().lock();
    if (const auto delegate = picker->delegate.lock())
        delegate->imagePickerControllerDidFinishPickingMediaWithInfo(*picker, media);
    else
        dismiss();
}

void ViewController::answerDocumentPicker(PresentationId id, const std::string& path) {
    if (!standsFirmly(id))
        return;
    const auto picker = std::dynamic_pointer_cast<DocumentPickerController>(presented_);
    if (!picker)
        return;
    const auto self = weak_from_this().lock();
    startDismissal();
    if (const auto delegate = picker->delegate.lock())
        delegate->documentPickerDidPickDocumentAtURL(*picker, path);
}

void ViewController::cancelPicker(PresentationId id) {
    if (!standsFirmly(id))
        return;
    if (dynamic_cast<const ImagePickerController*>(presented_.get()) == nullptr &&
        dynamic_cast<const DocumentPickerController*>(presented_.get()) == nullptr)
        return;
    startDismissal();
}

void ViewController::dismissalEnded(PresentationId id) {
    if (!dismissing_ || presented_->id() != id)
        return;
    const auto self = weak_from_this().lock(); // a handler may pop this screen
    const auto gone = std::exchange(presented_, nullptr);
    const auto completions = std::exchange(completions_, {});
    dismissing_ = false;
    answered_ = false;
    reportChange();
    for (const auto& completion : completions)
        completion();
    if (presented_ || waiting_.empty())
        return;
    auto next = std::move(waiting_.front());
    waiting_.erase(waiting_.begin());
    bringUp(std::move(next));
}

void ViewController::abandonPresentations() {
    const auto completions = std::exchange(completions_, {});
    const auto waiting = std::exchange(waiting_, {});
    const auto gone = std::exchange(presented_, nullptr);
    dismissing_ = false;
    answered_ = false;
    if (gone)
        reportChange();
}

void ViewController::reportChange() const {
    const auto report = presentationChanged; // it may replace itself
    if (report)
        report();
}

} // namespace quillomat
