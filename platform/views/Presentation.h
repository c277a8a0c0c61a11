// What a controller can put in front of itself: alerts, sheets and pickers, as objects that a host mirrors and answers.
#pragma once

#include "platform/graphics/Image.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace quillomat {

using PresentationId = std::uint64_t;

/// Something presented; its identity is stable and never used again.
class Presentation {
public:
    Presentation();
    virtual ~Presentation() = default;
    Presentation(const Presentation&) = delete;
    Presentation& operator=(const Presentation&) = delete;
    [[nodiscard]] PresentationId id() const { return id_; }

private:
    PresentationId id_;
};

enum class AlertStyle { actionSheet = 0, alert = 1 };
enum class ActionStyle { normal = 0, cancel = 1 };

struct AlertAction {
    std::string title;
    ActionStyle style = ActionStyle::normal;
    std::function<void()> handler; // runs when the alert's dismissal has completed
};

struct TextField {
    std::string placeholder;
    std::string text;
};

class AlertController final : public Presentation {
public:
    AlertController(std::string title, std::string message, AlertStyle style)
        : title_(std::move(title)), message_(std::move(message)), style_(style) {}

    [[nodiscard]] const std::string& title() const { return title_; }
    [[nodiscard]] const std::string& message() const { return message_; }
    [[nodiscard]] AlertStyle style() const { return style_; }
    [[nodiscard]] const std::vector<AlertAction>& actions() const { return actions_; }
    void addAction(std::string title, ActionStyle style, std::function<void()> handler);
    void addTextField(std::string placeholder) { textFields_.push_back({std::move(placeholder), {}}); }
    [[nodiscard]] std::vector<TextField>& textFields() { return textFields_; }
    [[nodiscard]] const std::vector<TextField>& textFields() const { return textFields_; }

private:
    std::string title_;
    std::string message_;
    AlertStyle style_;
    std::vector<AlertAction> actions_;
    std::vector<TextField> textFields_;
};

/// What a picked photograph comes with. The edited picture exists only when the picker offered its crop step.
struct PickedMedia {
    Image originalImage;
    Image editedImage;
};

class ImagePickerController;

class ImagePickerDelegate {
public:
    virtual ~ImagePickerDelegate() = default;
    virtual void imagePickerControllerDidFinishPickingMediaWithInfo(ImagePickerController& picker,
                                                                    const PickedMedia& info) = 0;
};

enum class ImagePickerSource { photoLibrary = 0 };

class ImagePickerController final : public Presentation {
public:
    bool allowsEditing = false;
    ImagePickerSource sourceType = ImagePickerSource::photoLibrary;
    std::weak_ptr<ImagePickerDelegate> delegate;
};

class DocumentPickerController;

class DocumentPickerDelegate {
public:
    virtual ~DocumentPickerDelegate() = default;
    /// `path`: the picked file, a copy handed over by the host or the file itself.
    virtual void documentPickerDidPickDocumentAtURL(DocumentPickerController& picker, const std::string& path) = 0;
};

enum class DocumentPickerMode { import = 0 };

class DocumentPickerController final : public Presentation {
public:
    std::vector<std::string> documentTypes;
    DocumentPickerMode mode = DocumentPickerMode::import;
    std::weak_ptr<DocumentPickerDelegate> delegate;
};

} // namespace quillomat
