#include "hosts/qt/Shell.h"

#include "catalogue/ScrollerViewController.h"
#include "catalogue/SelectionTableViewController.h"
#include "editor/EditingViewController.h"
#include "hosts/qt/DesktopSettings.h"
#include "hosts/qt/EditorScreen.h"

#include <QCoreApplication>
#include <QEvent>
#include <QGuiApplication>
#include <QQmlEngine>
#include <QScreen>

#include <algorithm>
#include <array>
#include <utility>

namespace quillomat {

Shell::Shell(Platform& platform, ShellSettings settings)
    : settings_(std::move(settings))
    , desktop_(std::make_unique<DesktopSettings>())
    , application_(std::make_unique<Application>(platform)) {
    application_->storyboard().screenMade = [this](const std::shared_ptr<ViewController>& screen) {
        if (root_.expired()) {
            root_ = screen;
        }
    };
    connect(desktop_.get(), &DesktopSettings::changed, this, &Shell::comfortChanged);
    QCoreApplication::instance()->installEventFilter(this);
}

Shell::~Shell() {
    // Mirrors that were told to go later go now: they give their pictures back to the shell.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    delete presentation_;
    qDeleteAll(screens_);
}

bool Shell::eventFilter(QObject* watched, QEvent* event) {
    const bool byKey = event->type() == QEvent::KeyPress;
    const bool byHand = event->type() == QEvent::MouseButtonPress || event->type() == QEvent::TouchBegin;
    if ((byKey || byHand) && usesKeyboard_ != byKey) {
        usesKeyboard_ = byKey;
        emit usesKeyboardChanged();
    }
    return QObject::eventFilter(watched, event);
}

void Shell::launch() {
    perform([this] { application_->launch(); });
}

void Shell::perform(std::function<void()> action) {
    kept_.push_back(std::move(action));
    if (isPerforming_) {
        return;
    }
    isPerforming_ = true;
    while (!kept_.empty()) {
        const auto next = std::move(kept_.front());
        kept_.erase(kept_.begin());
        next();
        mirror();
    }
    isPerforming_ = false;
}

void Shell::act(std::function<void()> action) {
    if (!isWaiting_) {
        perform(std::move(action));
    }
}

void Shell::setWaiting(bool waiting) {
    isWaiting_ = waiting;
    if (waiting) {
        mirror(); // what stands already is shown while the core waits
    }
    emit isWaitingChanged();
}

std::vector<std::shared_ptr<ViewController>> Shell::stack() const {
    const auto root = root_.lock();
    if (!root || root->navigationController() == nullptr || !root->isViewLoaded()) {
        return {};
    }
    auto screens = root->navigationController()->stack();
    std::erase_if(screens, [](const auto& screen) { return !screen->isViewLoaded(); });
    return screens;
}

void Shell::mirror() {
    mirrorStack();
    for (ScreenModel* screen : screens_) {
        screen->refresh();
    }
    mirrorPresentation();
}

void Shell::mirrorStack() {
    const auto now = stack();
    std::size_t kept = 0;
    while (kept < now.size() && kept < screens_.size() && screens_[kept]->controller() == now[kept]) {
        ++kept;
    }
    if (kept < screens_.size()) {
        screens_.resize(kept); // each lives on until its screen has left the window
        emit poppedTo(static_cast<int>(kept));
    }
    for (; kept < now.size(); ++kept) {
        ScreenModel* model = makeModel(now[kept]);
        QQmlEngine::setObjectOwnership(model, QQmlEngine::CppOwnership);
        model->refresh();
        screens_.push_back(model);
        emit pushed(model);
    }
    emit depthChanged();
}

ScreenModel* Shell::makeModel(const std::shared_ptr<ViewController>& controller) {
    if (const auto gallery = std::dynamic_pointer_cast<ScrollerViewController>(controller)) {
        return new GalleryScreen(*this, gallery);
    }
    if (const auto editor = std::dynamic_pointer_cast<EditingViewController>(controller)) {
        return new EditorScreen(*this, editor);
    }
    return new ListScreen(*this, std::static_pointer_cast<SelectionTableViewController>(controller));
}

void Shell::release(QObject* screen) {
    if (screen != nullptr && std::find(screens_.begin(), screens_.end(), screen) == screens_.end()) {
        screen->deleteLater();
    }
}

void Shell::mirrorPresentation() {
    const auto controller = screens_.empty() ? nullptr : screens_.back()->controller();
    const auto shown = controller ? controller->presented() : nullptr;
    if (presentation_ != nullptr && (!shown || presentation_->id() != shown->id())) {
        std::exchange(presentation_, nullptr)->deleteLater();
        emit presentationChanged();
    }
    if (shown && presentation_ == nullptr) {
        presentation_ = new PresentationModel(*this, controller, shown);
        QQmlEngine::setObjectOwnership(presentation_, QQmlEngine::CppOwnership);
        emit presentationChanged();
    }
    if (presentation_ != nullptr) {
        presentation_->setLeaving(controller->isDismissing());
    }
}

PixelSize Shell::canvasOf(const ViewController& screen) const {
    const auto* editor = dynamic_cast<const EditingViewController*>(&screen);
    const Size canvas = editor != nullptr ? editor->definition().canvasSize() : Size{};
    const auto side = [](double points) { return static_cast<int>(std::clamp(points, 0.0, 1e6)); };
    return {side(canvas.width), side(canvas.height)};
}

void Shell::back() {
    act([this] {
        if (presentation_ == nullptr && !screens_.empty()) {
            application_->navigationController().pop();
        }
    });
}

bool Shell::reducesMotion() const {
    return settings_.reducesMotion || desktop_->reducesMotion();
}

qreal Shell::textScale() const {
    // Under X11 the setting is in the screen's resolution already, and the toolkit enlarges everything by it.
    const bool isSettingApart = QGuiApplication::platformName() != QStringLiteral("xcb");
    const QScreen* screen = QGuiApplication::primaryScreen();
    const qreal told = std::max(screen != nullptr ? screen->logicalDotsPerInch() / 96 : 1.0,
                                isSettingApart ? desktop_->textScale() : 1.0);
    return std::clamp(settings_.textScale > 0 ? settings_.textScale : told, 0.85, 2.0);
}

QString Shell::text(const QString& english) const {
    // Texts that carry a name or a path: translated around it.
    static constexpr std::array templates{
        QT_TRANSLATE_NOOP("Core", "The imported resources are saved in %1"),
        QT_TRANSLATE_NOOP("Core", "Deleted mockup named %1"),
        QT_TRANSLATE_NOOP("Core", "There was an issue removing this mockup %1"),
        QT_TRANSLATE_NOOP("Core", "Image saved to camera roll \n\n%1"),
        QT_TRANSLATE_NOOP("Core", " Mockup created by %1"),
    };
    for (const char* pattern : templates) {
        const QString start = QString::fromUtf8(pattern).chopped(2);
        if (english.startsWith(start)) {
            const QString rest = english.mid(start.size());
            const bool isCredit = rest.startsWith(u' '); // a text of the core itself
            return QCoreApplication::translate("Core", pattern).arg(isCredit ? text(rest) : rest);
        }
    }
    return english.isEmpty() ? english : QCoreApplication::translate("Core", english.toUtf8().constData());
}

} // namespace quillomat
