// The design aid for measuring definitions: a narrow column of buttons that show values and take numbers.
#include "editor/EditingViewController.h"

#include "platform/foundation/Conversions.h"
#include "platform/views/Platform.h"

#include <chrono>
#include <cmath>
#include <limits>
#include <utility>

namespace quillomat {

namespace {

// What a number does is decided by the tag of the button it was entered for, and by nothing else.
enum PanelTag : int {
    cornerRadiusTag = 1,
    topLeftXTag = 2,
    topLeftYTag = 3,
    bottomLeftXTag = 4,
    bottomLeftYTag = 5,
    topRightYTag = 6,
    topRightXTag = 7,
    bottomRightXTag = 8,
    customAlertTag = 9, // carried by no button
    bottomRightYTag = 11,
    scaleTag = 12,
    opacityTag = 13,
    borderTag = 14
};

// Single precision, halves away from zero; saturating where a marker was dragged out of all bounds.
std::int64_t roundedValue(double value) {
    const float rounded = std::round(static_cast<float>(value));
    if (std::isnan(rounded))
        return 0;
    constexpr float beyond = 9223372036854775808.0F; // 2^63
    if (rounded >= beyond)
        return std::numeric_limits<std::int64_t>::max();
    if (rounded < -beyond)
        return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(rounded);
}

void showValue(const std::shared_ptr<Button>& button, const char* name, double value) {
    if (button)
        button->setTitle(std::string(name) + ": " + std::to_string(roundedValue(value)));
}

Point originOf(const std::shared_ptr<View>& marker) {
    return marker ? marker->frame().origin : Point{};
}

void setOriginX(const std::shared_ptr<View>& marker, double x) {
    if (!marker)
        return;
    Rect frame = marker->frame();
    frame.origin.x = x;
    marker->setFrame(frame);
}

void setOriginY(const std::shared_ptr<View>& marker, double y) {
    if (!marker)
        return;
    Rect frame = marker->frame();
    frame.origin.y = y;
    marker->setFrame(frame);
}

} // namespace

struct EditingViewController::PanelButton {
    std::string title;
    double y;
    int tag;
    double fontSize;
    std::shared_ptr<Button> EditorState::*keptAs; // null for a button whose title never changes
};

void EditingViewController::createEdits() {
    const auto panel = std::make_shared<View>(makeRect(0, 0, 55, platform().screen.size.height - 100));
    panel->backgroundColor = Color::black();
    // All corner buttons start with one title and get their own at the first refresh; the name shares the radius's tag;
    // the gap above "Scale" is intended.
    const PanelButton buttons[] = {
        {imageInfo_, 90, cornerRadiusTag, 8, nullptr},
        {"C", 120, cornerRadiusTag, 10, &EditorState::cornerRadiusButton},
        {"TLX", 150, topLeftXTag, 10, &EditorState::topLeftXButton},
        {"TLX", 180, topLeftYTag, 10, &EditorState::topLeftYButton},
        {"TLX", 210, topRightXTag, 10, &EditorState::topRightXButton},
        {"TLX", 240, topRightYTag, 10, &EditorState::topRightYButton},
        {"TLX", 270, bottomLeftXTag, 10, &EditorState::bottomLeftXButton},
        {"TLX", 300, bottomLeftYTag, 10, &EditorState::bottomLeftYButton},
        {"TLX", 330, bottomRightXTag, 10, &EditorState::bottomRightXButton},
        {"TLX", 360, bottomRightYTag, 10, &EditorState::bottomRightYButton},
        {"Scale", 660, scaleTag, 10, nullptr},
        {"Opacity", 680, opacityTag, 10, nullptr},
        {"Border", 700, borderTag, 10, nullptr},
    };
    for (const PanelButton& description : buttons) {
        auto button = addPanelButton(*panel, description);
        if (description.keptAs != nullptr)
            state_.*description.keptAs = std::move(button);
    }
    view()->addSubview(panel);
    platform().mainQueue.after(std::chrono::milliseconds(500),
                               unlessGone([](EditingViewController& editor) { editor.updateButtons(); }));
}

std::shared_ptr<Button> EditingViewController::addPanelButton(View& panel, const PanelButton& description) {
    auto button = std::make_shared<Button>();
    button->setAction([weak = std::weak_ptr<EditingViewController>(self())](Button& sender) {
        if (const auto editor = weak.lock())
            editor->editPressed(sender);
    });
    button->setTitle(description.title);
    button->setFrame(makeRect(0, description.y, 50, 20));
    button->tag = description.tag;
    button->font = Font{description.fontSize, false};
    button->alignment = TextAlignment::left;
    panel.addSubview(button);
    return button;
}

void EditingViewController::updateButtons() {
    showValue(state_.cornerRadiusButton, "C", inside1_->cornerRadius);
    showValue(state_.topLeftXButton, "TX", originOf(markers_.topLeft).x);
    showValue(state_.topLeftYButton, "TY", originOf(markers_.topLeft).y);
    showValue(state_.bottomLeftXButton, "BX", originOf(markers_.bottomLeft).x);
    showValue(state_.bottomLeftYButton, "BY", originOf(markers_.bottomLeft).y);
    showValue(state_.topRightYButton, "TRY", originOf(markers_.topRight).y);
    showValue(state_.topRightXButton, "TRX", originOf(markers_.topRight).x);
    showValue(state_.bottomRightXButton, "BRX", originOf(markers_.bottomRight).x);
    showValue(state_.bottomRightYButton, "BRY", originOf(markers_.bottomRight).y);
}

void EditingViewController::editPressed(Button& sender) {
    const int tag = sender.tag;
    if (tag == customAlertTag) {
        alertCustom();
        return;
    }
    const auto question = std::make_shared<AlertController>("Adding A Row", "Enter A Number", AlertStyle::alert);
    question->addTextField("");
    question->addAction("Cancel", ActionStyle::normal, {});
    // The alert owns this action, so the action must not own the alert.
    question->addAction(
        "OK", ActionStyle::normal,
        unlessGone([tag, alert = std::weak_ptr<AlertController>(question)](EditingViewController& editor) {
            if (const auto answered = alert.lock())
                editor.applyNumber(tag, answered->textFields().front().text);
        }));
    present(question);
}

void EditingViewController::alertCustom() {}

void EditingViewController::applyNumber(int tag, const std::string& text) {
    const std::int32_t number = intValue(text);
    switch (tag) {
    case cornerRadiusTag:
        state_.lastCornerRadius = number;
        for (const auto& screen : {inside1_, inside2_}) {
            screen->cornerRadius = number;
            screen->masksToBounds = true;
        }
        break;
    case scaleTag:
        scaleUP(floatValue(text));
        updateTranform(); // fits the first screen again, so its own scale does not last; the container's does
        break;
    case opacityTag:
        frameOpacity(floatValue(text));
        break;
    case borderTag:
        border(floatValue(text));
        break;
    default:
        moveMarker(tag, number);
        break;
    }
    updateButtons();
}

void EditingViewController::moveMarker(int tag, double value) {
    switch (tag) {
    case topLeftXTag:
        setOriginX(markers_.topLeft, value);
        break;
    case topLeftYTag:
        setOriginY(markers_.topLeft, value);
        break;
    case bottomLeftXTag:
        setOriginX(markers_.bottomLeft, value);
        break;
    case bottomLeftYTag:
        setOriginY(markers_.bottomLeft, value);
        break;
    case topRightYTag:
        setOriginY(markers_.topRight, value);
        break;
    case topRightXTag:
        setOriginX(markers_.topRight, value);
        break;
    case bottomRightXTag:
        setOriginX(markers_.bottomRight, value);
        break;
    case bottomRightYTag:
        setOriginY(markers_.bottomRight, value);
        break;
    default:
        return;
    }
    updateTranform();
}

/// Absolute, not on top of an earlier scale: 1 restores. The second screen, background and overlay are not scaled.
void EditingViewController::scaleUP(float scale) {
    const auto factor = static_cast<double>(scale);
    const AffineTransform transform = AffineTransform::scale(factor, factor);
    if (state_.previewContainer)
        state_.previewContainer->setTransform(transform);
    inside1_->setTransform(transform);
    phone_->setTransform(transform);
}

void EditingViewController::frameOpacity(float opacity) {
    phone_->alpha = static_cast<double>(opacity);
}

void EditingViewController::border(float width) {
    inside1_->borderColor = Color::white();
    inside1_->borderWidth = static_cast<double>(width);
}

} // namespace quillomat
