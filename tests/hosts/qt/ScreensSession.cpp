#include "ScreensSession.h"

#include "hosts/qt/WindowApplication.h"

#include <QClipboard>
#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QDropEvent>
#include <QFile>
#include <QGuiApplication>
#include <QMimeData>
#include <QPointingDevice>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QTouchEvent>
#include <QUrl>
#include <QtQuickTest>

namespace quillomat {

namespace {

const QString source = QStringLiteral(QUILLOMAT_SOURCE_DIR);

QByteArray bytesOfSample(const QString& sample) {
    QFile file(source + QStringLiteral("/resources/samples/") + sample);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no picture at all");
}

bool drop(QObject* target, const QMimeData& content) {
    auto* window = qobject_cast<QQuickWindow*>(target);
    const QPointF middle(window->width() / 2.0, window->height() / 2.0);
    QDragEnterEvent enter(middle.toPoint(), Qt::CopyAction, &content, Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(window, &enter);
    QDropEvent event(middle, Qt::CopyAction, &content, Qt::NoButton, Qt::NoModifier);
    event.ignore();
    QCoreApplication::sendEvent(window, &event);
    return event.isAccepted();
}

} // namespace

ScreensSession::ScreensSession() = default;

/// The shell needs the toolkit's application object, which comes after this one.
void ScreensSession::applicationAvailable() {
    QDir(folder_.path()).mkdir(QStringLiteral("pictures"));
    qputenv("XDG_PICTURES_DIR", pictures().toUtf8());
    WindowOptions options;
    options.documents = folder_.filePath(QStringLiteral("documents")).toStdString();
    options.resources = (source + QStringLiteral("/tests/fixtures/catalogue")).toStdString();
    options.server = "quillomat.invalid";
    options.appearance = qEnvironmentVariable("QUILLOMAT_TEST_APPEARANCE", QStringLiteral("light"));
    options.reducesMotion = true;
    options.textScale = textScale();
    auto opened = WindowApplication::open(options);
    if (!opened) {
        qFatal("%s", opened.reason().c_str());
    }
    application_ = std::move(opened).value();
    registerHostTypes(application_->shell());
}

ScreensSession::~ScreensSession() = default;

void ScreensSession::qmlEngineAvailable(QQmlEngine* engine) {
    engine->addImportPath(source + QStringLiteral("/resources/screens"));
    application_->equip(*engine);
    engine->rootContext()->setContextProperty(QStringLiteral("session"), this);
}

void ScreensSession::launch() {
    application_->shell().launch();
}

QString ScreensSession::pictures() const {
    return folder_.filePath(QStringLiteral("pictures"));
}

QStringList ScreensSession::savedPictures() const {
    return QDir(pictures()).entryList({QStringLiteral("Mockup *.png")}, QDir::Files);
}

void ScreensSession::addPicture(const QString& name, const QString& sample, int ageInSeconds) {
    const QString path = pictures() + u'/' + name;
    QFile::copy(source + QStringLiteral("/resources/samples/") + sample, path);
    QFile file(path);
    file.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
    if (file.open(QIODevice::ReadWrite)) {
        file.setFileTime(QDateTime::currentDateTime().addSecs(-ageInSeconds), QFileDevice::FileModificationTime);
    }
}

void ScreensSession::addBrokenPicture(const QString& name) {
    QFile file(pictures() + u'/' + name);
    if (file.open(QIODevice::WriteOnly)) {
        file.write("no picture at all");
    }
}

void ScreensSession::addFolder(const QString& name) {
    QDir(pictures()).mkdir(name);
}

void ScreensSession::cancelTouches(QObject* window) {
    for (const QInputDevice* device : QInputDevice::devices()) {
        if (device->type() == QInputDevice::DeviceType::TouchScreen) {
            QTouchEvent cancel(QEvent::TouchCancel, static_cast<const QPointingDevice*>(device));
            QCoreApplication::sendEvent(window, &cancel);
        }
    }
}

qreal ScreensSession::scaleFactor() const {
    return qEnvironmentVariable("QT_SCALE_FACTOR").toDouble();
}

qreal ScreensSession::textScale() const {
    return qEnvironmentVariable("QUILLOMAT_TEST_TEXT_SCALE").toDouble();
}

bool ScreensSession::dropFile(QObject* window, const QString& path) {
    QMimeData content;
    content.setUrls({QUrl::fromLocalFile(path)});
    return drop(window, content);
}

bool ScreensSession::dropData(QObject* window, const QString& format, const QString& sample) {
    QMimeData content;
    content.setData(format, bytesOfSample(sample));
    return drop(window, content);
}

void ScreensSession::copyData(const QString& format, const QString& sample) {
    auto* content = new QMimeData;
    content->setData(format, bytesOfSample(sample));
    QGuiApplication::clipboard()->setMimeData(content);
}

void ScreensSession::copyFile(const QString& path) {
    auto* content = new QMimeData;
    content->setUrls({QUrl::fromLocalFile(path)});
    QGuiApplication::clipboard()->setMimeData(content);
}

} // namespace quillomat

QUICK_TEST_MAIN_WITH_SETUP(screens, quillomat::ScreensSession)
