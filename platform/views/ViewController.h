// A screen's controller: its view, its place on the navigation stack, and what it presents.
#pragma once

#include "platform/views/Presentation.h"
#include "platform/views/View.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quillomat {

class NavigationController;
class Storyboard;
struct Platform;

enum class BarButtonStyle { plain = 0, done = 2 };

struct BarButtonItem {
    std::string title;
    BarButtonStyle style = BarButtonStyle::plain;
    bool bold = false;    // title font, the same for the normal and the selected state
    double fontSize = 17; // points
    std::function<void()> action;
};

struct NavigationItem {
    std::optional<BarButtonItem> leftBarButtonItem;
    std::optional<BarButtonItem> rightBarButtonItem;
};

/// One thread: the interface's. Made by the Storyboard; owned by the navigation stack.
class ViewController : public std::enable_shared_from_this<ViewController> {
public:
    ViewController(Platform& platform, Storyboard& storyboard);
    virtual ~ViewController() = default;
    ViewController(const ViewController&) = delete;
    ViewController& operator=(const ViewController&) = delete;

    /// The screen's root view; the first call makes it (`loadView`) and then runs `viewDidLoad`.
    const std::shared_ptr<View>& view();
    [[nodiscard]] bool isViewLoaded() const { return view_ != nullptr; }
    virtual void viewDidLoad() {}
    virtual void didReceiveMemoryWarning() {}

    std::string title;
    NavigationItem navigationItem;

    [[nodiscard]] NavigationController* navigationController() const { return navigation_; }
    [[nodiscard]] Storyboard& storyboard() const { return storyboard_; }

    // Presenting ----------------------------------------------------------------------------------------------------
    // At most one thing is presented at a time. What is presented while another stands or leaves waits in line and
    // comes up when that has gone. Stale answers (of what is no longer presented, or is already leaving) are ignored.

    void present(std::shared_ptr<Presentation> presentation);
    /// Starts the dismissal of what is presented; `completion` runs when it has gone, at once when there is nothing.
    void dismiss(std::function<void()> completion = {});
    /// What stands in front, leaving or not; null when nothing does.
    [[nodiscard]] const std::shared_ptr<Presentation>& presented() const { return presented_; }
    [[nodiscard]] bool isDismissing() const { return dismissing_; }
    /// Called after every change of what is presented (came up, began to leave, has gone), for a host to mirror.
    std::function<void()> presentationChanged;

    // A host's reports ----------------------------------------------------------------------------------------------
    /// The user chose an action of the presented alert: its dismissal starts, and its handler runs when that has
    /// completed. `text` fills the first text field.
    void answerAlert(PresentationId id, std::size_t actionIndex, const std::string& text = {});
    /// The user picked; the delegate decides what is dismissed. A picker delivers once; one whose delegate is gone is
    /// dismissed.
    void answerImagePicker(PresentationId id, const PickedMedia& media);
    /// The user picked: a document picker leaves by itself, before its delegate is told.
    void answerDocumentPicker(PresentationId id, const std::string& path);
    /// The user turned the picker away; the platform dismisses it, the delegate hears nothing.
    void cancelPicker(PresentationId id);
    /// The dismissal's animation has ended: completions and handlers run now, in order, before the next in line comes
    /// up.
    void dismissalEnded(PresentationId id);

protected:
    [[nodiscard]] Platform& platform() const { return platform_; }
    /// Makes the root view; the default is a plain view of the screen's bounds.
    virtual std::shared_ptr<View> loadView();

private:
    friend class NavigationController;

    [[nodiscard]] bool standsFirmly(PresentationId id) const;
    void startDismissal();
    void bringUp(std::shared_ptr<Presentation> presentation);
    void abandonPresentations();
    void reportChange() const;

    Platform& platform_;
    Storyboard& storyboard_;
    NavigationController* navigation_ = nullptr;
    std::shared_ptr<View> view_;
    std::shared_ptr<Presentation> presented_;
    bool dismissing_ = false;
    bool answered_ = false;
    std::vector<std::function<void()>> completions_;
    std::vector<std::shared_ptr<Presentation>> waiting_;
};

/// Makes screens by identifier; its interface stands here so that no screen needs to see another's class.
class Storyboard {
public:
    virtual ~Storyboard() = default;
    /// An unknown identifier is a programming fault and asserts.
    [[nodiscard]] virtual std::shared_ptr<ViewController> instantiate(const std::string& identifier) = 0;
};

} // namespace quillomat
