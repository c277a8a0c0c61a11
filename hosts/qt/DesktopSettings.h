// What the user has told the desktop about comfort: less motion, larger type. Read from its settings portal.
#pragma once

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>
#include <QString>
#include <QVariant>

namespace quillomat {

/// Nothing waits for it: the answers come when they come, and again whenever the user changes his mind. Without a bus,
/// or without a portal on it, none ever does.
class DesktopSettings final : public QObject {
    Q_OBJECT

public:
    explicit DesktopSettings(QObject* parent = nullptr) : QObject(parent) {}

    void watch(QDBusConnection bus = QDBusConnection::sessionBus());
    [[nodiscard]] bool reducesMotion() const { return !animates_ || asksForLessMotion_; }
    [[nodiscard]] qreal textScale() const { return textScale_; }

signals:
    void changed();

private slots:
    void take(const QString& group, const QString& key, const QDBusVariant& value);

private:
    bool animates_ = true;
    bool asksForLessMotion_ = false;
    qreal textScale_ = 1;
};

} // namespace quillomat
