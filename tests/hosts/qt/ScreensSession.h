// What the tests of the scene stand on: a window program without its window, over folders of the test's own.
#pragma once

#include <QObject>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>

class QQmlEngine;

namespace quillomat {

class WindowApplication;

/// Known to the tests as `session`.
class ScreensSession : public QObject {
    Q_OBJECT

public:
    ScreensSession();
    ~ScreensSession() override;

    Q_INVOKABLE void launch();
    Q_INVOKABLE QStringList savedPictures() const;
    Q_INVOKABLE QString pictures() const;
    /// Puts a sample picture, or a file that is no picture, into the pictures folder; larger ages are older.
    Q_INVOKABLE void addPicture(const QString& name, const QString& sample, int ageInSeconds);
    Q_INVOKABLE void addBrokenPicture(const QString& name);
    Q_INVOKABLE void addFolder(const QString& name);
    /// Drops a sample picture on the middle of the window, as a file or as the picture's own bytes: whether it was
    /// taken.
    Q_INVOKABLE bool dropFile(QObject* window, const QString& path);
    Q_INVOKABLE bool dropData(QObject* window, const QString& format, const QString& sample);
    /// Puts a sample, or a file's address, on the clipboard.
    Q_INVOKABLE void copyData(const QString& format, const QString& sample);
    Q_INVOKABLE void copyFile(const QString& path);
    /// Takes all fingers off the glass at once, as a system does that wants the touch for itself.
    Q_INVOKABLE void cancelTouches(QObject* window);

    /// Device pixels for a point, and the type's size, that the run was started with; 0 where it was with neither.
    Q_INVOKABLE qreal scaleFactor() const;
    Q_INVOKABLE qreal textScale() const;

public slots:
    void applicationAvailable();
    void qmlEngineAvailable(QQmlEngine* engine);

private:
    QTemporaryDir folder_;
    std::unique_ptr<WindowApplication> application_;
};

} // namespace quillomat
