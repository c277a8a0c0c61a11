// The window's end of the application: the one door into the core, and the mirror of what stands in front.
#pragma once

#include "app/Application.h"
#include "hosts/qt/Pictures.h"
#include "hosts/qt/Presentations.h"
#include "hosts/qt/Screens.h"

#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <vector>

namespace quillomat {

class DesktopSettings;

struct ShellSettings {
    QString picturesFolder;
    QString downloadsFolder;
    QString appearance = QStringLiteral("auto"); // "light", "dark", "auto"
    bool reducesMotion = false;                  // whatever the desktop says
    qreal textScale = 0;                         // 0: as the desktop says
};

/// Everything that reaches the core comes through `perform` and `act`, one thing at a time; after each the mirrors are
/// brought up to date. While the core waits for the web, what must happen is kept and performed afterwards, in order,
/// and what the user wishes is not taken.
class Shell final : public QObject {
    Q_OBJECT
    Q_PROPERTY(QObject* presentation READ presentation NOTIFY presentationChanged)
    Q_PROPERTY(bool isWaiting READ isWaiting NOTIFY isWaitingChanged)
    Q_PROPERTY(int depth READ depth NOTIFY depthChanged)
    Q_PROPERTY(bool usesKeyboard READ usesKeyboard NOTIFY usesKeyboardChanged) // rather than mouse or finger
    Q_PROPERTY(QString appearance READ appearance CONSTANT)
    Q_PROPERTY(bool reducesMotion READ reducesMotion NOTIFY comfortChanged)
    Q_PROPERTY(qreal textScale READ textScale NOTIFY comfortChanged)

public:
    Shell(Platform& platform, ShellSettings settings);
    ~Shell() override;

    /// Builds the catalogue list, which compares its revision with the published one. Once, after the first frame.
    void launch();
    void perform(std::function<void()> action);
    /// What the user wishes: an answer, a press, a pick.
    void act(std::function<void()> action);
    void setWaiting(bool waiting);

    [[nodiscard]] Platform& platform() { return application_->platform(); }
    [[nodiscard]] PictureRegistry& pictures() { return *pictures_; }
    [[nodiscard]] const std::shared_ptr<PictureRegistry>& sharedPictures() const { return pictures_; }
    [[nodiscard]] const QString& picturesFolder() const { return settings_.picturesFolder; }
    [[nodiscard]] const QString& downloadsFolder() const { return settings_.downloadsFolder; }
    /// The shape that pictures for this screen's background are cut to.
    [[nodiscard]] PixelSize canvasOf(const ViewController& screen) const;

    [[nodiscard]] QObject* presentation() const { return presentation_; }
    [[nodiscard]] bool isWaiting() const { return isWaiting_; }
    [[nodiscard]] int depth() const { return static_cast<int>(screens_.size()); }
    [[nodiscard]] bool usesKeyboard() const { return usesKeyboard_; }
    [[nodiscard]] const QString& appearance() const { return settings_.appearance; }
    [[nodiscard]] DesktopSettings& desktop() { return *desktop_; }
    [[nodiscard]] bool reducesMotion() const;
    [[nodiscard]] qreal textScale() const;

    /// A text of the core in the user's language.
    [[nodiscard]] QString text(const QString& english) const;
    Q_INVOKABLE void back();
    /// The screen has left the window for good.
    Q_INVOKABLE void release(QObject* screen);

signals:
    void presentationChanged();
    void isWaitingChanged();
    void depthChanged();
    void usesKeyboardChanged();
    void comfortChanged();
    void pushed(QObject* screen);
    void poppedTo(int depth);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void mirror();
    void mirrorStack();
    void mirrorPresentation();
    [[nodiscard]] ScreenModel* makeModel(const std::shared_ptr<ViewController>& controller);
    [[nodiscard]] std::vector<std::shared_ptr<ViewController>> stack() const;

    ShellSettings settings_;
    std::unique_ptr<DesktopSettings> desktop_;
    std::shared_ptr<PictureRegistry> pictures_ = std::make_shared<PictureRegistry>();
    std::unique_ptr<Application> application_;
    std::weak_ptr<ViewController> root_;
    std::vector<ScreenModel*> screens_;
    PresentationModel* presentation_ = nullptr;
    std::vector<std::function<void()>> kept_;
    bool isPerforming_ = false;
    bool isWaiting_ = false;
    bool usesKeyboard_ = false;
};

} // namespace quillomat
