#include "hosts/qt/EditorScreen.h"

#include "editor/EditingViewController.h"
#include "hosts/qt/Shell.h"
#include "platform/views/ViewMap.h"

#include <QVariantMap>

#include <algorithm>
#include <array>

namespace quillomat {

namespace {

constexpr double previewSide = 300;
constexpr double fingerReach = 12; // a finger may miss a marker by so many points

QRectF toQRectF(const Rect& rect) {
    return {rect.origin.x, rect.origin.y, rect.size.width, rect.size.height};
}

bool canPan(const View& view) {
    return std::any_of(view.gestureRecognizers.begin(), view.gestureRecognizers.end(), [](const auto& recognizer) {
        return dynamic_cast<const PanGestureRecognizer*>(recognizer.get()) != nullptr;
    });
}

void collectButtons(const std::shared_ptr<View>& view, std::vector<std::shared_ptr<Button>>& found) {
    if (auto button = std::dynamic_pointer_cast<Button>(view)) {
        found.push_back(std::move(button));
    }
    for (const auto& below : view->subviews()) {
        collectButtons(below, found);
    }
}

} // namespace

EditorScreen::EditorScreen(Shell& shell, const std::shared_ptr<EditingViewController>& editor)
    : ScreenModel(shell, editor), editor_(editor) {
    readCaptions();
}

bool EditorScreen::leftEnabled() const {
    return editor_->addLeftButton()->enabled;
}
bool EditorScreen::rightEnabled() const {
    return editor_->addRightButton()->enabled;
}
bool EditorScreen::backgroundEnabled() const {
    return editor_->addBGButton()->enabled;
}
bool EditorScreen::glareEnabled() const {
    return editor_->addGlareButton()->enabled;
}
bool EditorScreen::saveEnabled() const {
    return editor_->saveButton()->enabled;
}
bool EditorScreen::showsGlare() const {
    return static_cast<bool>(editor_->overlay()->image());
}
bool EditorScreen::isMeasuring() const {
    return editor_->state().designMode;
}

QRectF EditorScreen::viewport() const {
    if (isMeasuring()) {
        return toQRectF(editor_->view()->bounds());
    }
    const Point center = editor_->background()->center();
    return {center.x - previewSide / 2, center.y - previewSide / 2, previewSide, previewSide};
}

QRectF EditorScreen::canvas() const {
    return toQRectF(editor_->background()->frame());
}

void EditorScreen::press(int tool) {
    const std::array buttons{editor_->addLeftButton(), editor_->addRightButton(), editor_->addBGButton(),
                             editor_->addGlareButton(), editor_->saveButton()};
    if (tool >= 0 && static_cast<std::size_t>(tool) < buttons.size()) {
        shell().act([button = buttons[static_cast<std::size_t>(tool)]] { button->press(); });
    }
}

void EditorScreen::pressCaption(int index) {
    if (index >= 0 && static_cast<std::size_t>(index) < panel_.size()) {
        shell().act([button = panel_[static_cast<std::size_t>(index)]] { button->press(); });
    }
}

void EditorScreen::refresh() {
    ScreenModel::refresh();
    readCaptions();
    emit changed();
}

/// All buttons but the five tools, which a screen lays out in a bar of its own.
void EditorScreen::readCaptions() {
    const std::array tools{editor_->addLeftButton(), editor_->addRightButton(), editor_->addBGButton(),
                           editor_->addGlareButton(), editor_->saveButton()};
    std::vector<std::shared_ptr<Button>> buttons;
    collectButtons(editor_->view(), buttons);
    std::erase_if(buttons,
                  [&](const auto& button) { return std::find(tools.begin(), tools.end(), button) != tools.end(); });
    QVariantList captions;
    for (const auto& button : buttons) {
        const Point origin = convertToRoot(*button, button->bounds().origin).value_or(Point{});
        captions.append(QVariantMap{{QStringLiteral("text"), QString::fromStdString(button->title())},
                                    {QStringLiteral("x"), origin.x},
                                    {QStringLiteral("y"), origin.y},
                                    {QStringLiteral("width"), button->bounds().size.width},
                                    {QStringLiteral("height"), button->bounds().size.height},
                                    {QStringLiteral("size"), button->font.size}});
    }
    const bool isCountChanged = captions.size() != captions_.size();
    panel_ = std::move(buttons);
    if (captions != captions_) {
        captions_ = captions;
        emit captionsChanged();
    }
    if (isCountChanged) {
        emit captionCountChanged();
    }
}

std::shared_ptr<View> EditorScreen::grab(Point point) const {
    constexpr std::array<Point, 9> around{Point{0, 0},
                                          Point{-fingerReach, 0},
                                          Point{fingerReach, 0},
                                          Point{0, -fingerReach},
                                          Point{0, fingerReach},
                                          Point{-fingerReach, -fingerReach},
                                          Point{fingerReach, -fingerReach},
                                          Point{-fingerReach, fingerReach},
                                          Point{fingerReach, fingerReach}};
    for (const Point offset : around) {
        for (auto view = hitTest(editor_->view(), point + offset); view; view = view->superview()) {
            if (canPan(*view)) {
                return view;
            }
        }
    }
    for (auto view = hitTest(editor_->view(), point); view; view = view->superview()) {
        if (dynamic_cast<const ScrollView*>(view.get()) != nullptr) {
            return view;
        }
    }
    return nullptr;
}

void EditorScreen::drag(const std::shared_ptr<View>& grabbed, Point delta) {
    shell().act([grabbed, delta] {
        if (auto* scroll = dynamic_cast<ScrollView*>(grabbed.get())) {
            const Size room = scroll->bounds().size;
            scroll->contentOffset.x = std::clamp(scroll->contentOffset.x - delta.x, 0.0,
                                                 std::max(0.0, scroll->contentSize.width - room.width));
            scroll->contentOffset.y = std::clamp(scroll->contentOffset.y - delta.y, 0.0,
                                                 std::max(0.0, scroll->contentSize.height - room.height));
            return;
        }
        for (const auto& recognizer : grabbed->gestureRecognizers) {
            if (const auto pan = std::dynamic_pointer_cast<PanGestureRecognizer>(recognizer)) {
                pan->move(delta);
            }
        }
    });
}

} // namespace quillomat
