// The window program: the outside world of a desktop or a Linux phone, the shell, and the scene.
#pragma once

#include "hosts/desktop/FolderPhotoLibrary.h"
#include "hosts/desktop/PlainDocumentAccess.h"
#include "hosts/qt/PatientWebClient.h"
#include "hosts/qt/QtMainQueue.h"
#include "hosts/qt/Shell.h"
#include "platform/foundation/Result.h"
#include "platform/network/CurlWebClient.h"
#include "platform/views/Platform.h"

#include <QElapsedTimer>
#include <QQmlApplicationEngine>
#include <QQuickWindow>

#include <cstdint>
#include <memory>
#include <string>

namespace quillomat {

struct WindowOptions {
    std::string documents; // empty: the user's own
    std::string resources; // empty: those that belong to the program
    std::string server;
    std::string tutorialUrl;
    std::string caCertificate;
    double screenScale = 1;
    std::uint64_t memory = std::uint64_t{1} << 30;
    bool verbose = false;
    QString appearance = QStringLiteral("auto");
    bool reducesMotion = false;
    qreal textScale = 0; // 0: as the desktop says
    QString screens;     // a folder with the scene's sources, in place of those in the program
    QString frameLog;    // a file for the times between frames
};

class BrowserUrlOpener final : public UrlOpener {
public:
    void open(const std::string& url) override;
};

class WindowApplication {
public:
    /// Makes the documents directory when it is needed.
    [[nodiscard]] static Result<std::unique_ptr<WindowApplication>> open(const WindowOptions& options);

    /// Gives an engine the pictures that the scene asks for.
    void equip(QQmlEngine& engine);
    /// Shows the window; the catalogue loads after its first frame.
    [[nodiscard]] Status show();
    [[nodiscard]] Shell& shell() { return shell_; }
    [[nodiscard]] QQuickWindow* window() const { return window_; }

private:
    WindowApplication(const WindowOptions& options, std::string documents, const std::string& resources);

    void logFrames();

    WindowOptions options_;
    std::unique_ptr<Log> log_;
    CurlWebClient curl_;
    PatientWebClient web_;
    SystemFileManager files_;
    DirectoryBundle bundle_;
    FolderPhotoLibrary photos_;
    PlainDocumentAccess documentAccess_;
    BrowserUrlOpener urls_;
    QtMainQueue queue_;
    Platform platform_;
    Shell shell_;
    QQmlApplicationEngine engine_;
    QQuickWindow* window_ = nullptr;
    QElapsedTimer frameClock_;
};

/// Registers the types of the module Quillomat.Host, with this shell as its `Shell`.
void registerHostTypes(Shell& shell);

} // namespace quillomat
