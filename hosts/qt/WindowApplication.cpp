#include "hosts/qt/WindowApplication.h"

#include "hosts/desktop/StandardLog.h"
#include "hosts/desktop/UserFolders.h"
#include "hosts/qt/DesktopSettings.h"
#include "hosts/qt/EditorScreen.h"
#include "hosts/qt/PreviewItem.h"

#include <QDesktopServices>
#include <QFile>
#include <QQmlContext>
#include <QStandardPaths>
#include <QTimer>
#include <QUrl>

#include <algorithm>
#include <filesystem>
#include <utility>

namespace quillomat {

namespace {

ShellSettings shellSettings(const WindowOptions& options) {
    return {QString::fromStdString(picturesDirectory(processEnvironment())),
            QStandardPaths::writableLocation(QStandardPaths::DownloadLocation), options.appearance,
            options.reducesMotion, options.textScale};
}

CurlOptions curlOptions(const WindowOptions& options) {
    CurlOptions curl;
    curl.caCertificate = options.caCertificate;
    return curl;
}

} // namespace

void BrowserUrlOpener::open(const std::string& url) {
    QDesktopServices::openUrl(QUrl(QString::fromStdString(url)));
}

Result<std::unique_ptr<WindowApplication>> WindowApplication::open(const WindowOptions& options) {
    namespace fs = std::filesystem;
    std::error_code error;
    const std::string resources = options.resources.empty() ? resourcesDirectory(runningProgram()) : options.resources;
    if (resources.empty() || !fs::is_directory(resources, error)) {
        return Failure{resources.empty() ? "no resources found; name their folder with --resources"
                                         : resources + ": no such resources folder"};
    }
    std::string documents =
        options.documents.empty() ? defaultDocumentsDirectory(processEnvironment()) : options.documents;
    while (documents.size() > 1 && documents.back() == '/') {
        documents.pop_back();
    }
    if (documents.empty()) {
        return Failure{"no documents directory; name one with --documents"};
    }
    fs::create_directories(documents, error);
    if (!fs::is_directory(documents, error)) {
        return Failure{documents + ": cannot be made a documents directory"};
    }
    return std::unique_ptr<WindowApplication>(new WindowApplication(options, std::move(documents), resources));
}

WindowApplication::WindowApplication(const WindowOptions& options, std::string documents, const std::string& resources)
    : options_(options)
    , log_(options.verbose ? std::unique_ptr<Log>(std::make_unique<StandardLog>())
                           : std::unique_ptr<Log>(std::make_unique<SilentLog>()))
    , curl_(curlOptions(options))
    , web_(curl_)
    , bundle_(resources)
    , photos_(picturesDirectory(processEnvironment()), files_)
    , platform_{files_,
                bundle_,
                web_,
                photos_,
                documentAccess_,
                urls_,
                queue_,
                *log_,
                Screen{},
                Server{options.server, options.tutorialUrl},
                std::move(documents),
                ImageLimits{}}
    , shell_(platform_, shellSettings(options)) {
    platform_.screen.scale = options.screenScale;
    platform_.imageLimits.pixels = std::min(platform_.imageLimits.pixels, options.memory / 4);
    queue_.setDoor([this](MainQueue::Task task) { shell_.perform(std::move(task)); });
    web_.setWaiting([this](bool waiting) { shell_.setWaiting(waiting); });
}

void registerHostTypes(Shell& shell) {
    constexpr auto module = "Quillomat.Host";
    qmlRegisterSingletonInstance(module, 1, 0, "Shell", &shell);
    qmlRegisterType<PreviewItem>(module, 1, 0, "PreviewItem");
    qmlRegisterUncreatableType<EditorScreen>(module, 1, 0, "EditorScreen", QStringLiteral("made by the shell"));
}

void WindowApplication::equip(QQmlEngine& engine) {
    engine.addImageProvider(QStringLiteral("core"),
                            new CoreImageProvider(shell_.sharedPictures(), platform_.imageLimits));
}

Status WindowApplication::show() {
    registerHostTypes(shell_);
    equip(engine_);
    shell_.desktop().watch();
    engine_.addImportPath(QStringLiteral("qrc:/qt/qml"));
    QUrl scene(QStringLiteral("qrc:/qt/qml/Quillomat/Screens/Main.qml"));
    if (!options_.screens.isEmpty()) {
        engine_.addImportPath(options_.screens);
        scene = QUrl::fromLocalFile(options_.screens + QStringLiteral("/Quillomat/Screens/Main.qml"));
    }
    engine_.load(scene);
    if (engine_.rootObjects().isEmpty()) {
        return Failure{"the window's scene cannot be loaded"};
    }
    window_ = qobject_cast<QQuickWindow*>(engine_.rootObjects().constFirst());
    if (window_ == nullptr) {
        return Failure{"the window's scene is no window"};
    }
    if (!options_.frameLog.isEmpty()) {
        logFrames();
    }
    // The window paints itself before the catalogue loads, which may have to wait for the web.
    QObject::connect(
        window_, &QQuickWindow::frameSwapped, window_, [this] { shell_.launch(); },
        static_cast<Qt::ConnectionType>(Qt::QueuedConnection | Qt::SingleShotConnection));
    return {};
}

/// One line a frame: milliseconds since the one before.
void WindowApplication::logFrames() {
    auto* file = new QFile(options_.frameLog, window_);
    if (!file->open(QIODevice::WriteOnly | QIODevice::Text)) {
        return;
    }
    frameClock_.start();
    QObject::connect(
        window_, &QQuickWindow::frameSwapped, file,
        [this, file] {
            file->write(QByteArray::number(static_cast<double>(frameClock_.nsecsElapsed()) / 1e6, 'f', 2) + '\n');
            file->flush();
            frameClock_.restart();
        },
        Qt::DirectConnection);
}

} // namespace quillomat
