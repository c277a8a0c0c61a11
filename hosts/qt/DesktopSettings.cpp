#include "hosts/qt/DesktopSettings.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

#include <utility>

namespace quillomat {

namespace {

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString interface = QStringLiteral("org.freedesktop.portal.Settings");
const QString desktop = QStringLiteral("org.gnome.desktop.interface");
const QString appearance = QStringLiteral("org.freedesktop.appearance");
const QString animations = QStringLiteral("enable-animations");
const QString motion = QStringLiteral("reduced-motion");
const QString text = QStringLiteral("text-scaling-factor");

/// The portal wraps a value in a variant, and what it reads from elsewhere in another.
QVariant unwrapped(QVariant value) {
    for (int depth = 0; depth < 4 && value.canConvert<QDBusVariant>(); ++depth) {
        value = value.value<QDBusVariant>().variant();
    }
    return value;
}

} // namespace

void DesktopSettings::watch(QDBusConnection bus) {
    if (!bus.isConnected()) {
        return;
    }
    qRegisterMetaType<QDBusVariant>(); // or the slot's parameter is unknown to the bus, and nothing is ever told
    bus.connect(service, path, interface, QStringLiteral("SettingChanged"), this,
                SLOT(take(QString, QString, QDBusVariant)));
    for (const auto& [group, key] : {std::pair{desktop, animations}, {desktop, text}, {appearance, motion}}) {
        auto question = QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("Read"));
        question << group << key;
        const auto* answer = new QDBusPendingCallWatcher(bus.asyncCall(question), this);
        connect(answer, &QDBusPendingCallWatcher::finished, this,
                [this, group = group, key = key](QDBusPendingCallWatcher* call) {
                    const QDBusPendingReply<QDBusVariant> reply = *call;
                    if (!reply.isError()) {
                        take(group, key, reply.value());
                    }
                    call->deleteLater();
                });
    }
}

void DesktopSettings::take(const QString& group, const QString& key, const QDBusVariant& value) {
    const QVariant content = unwrapped(value.variant());
    if (group == desktop && key == animations && content.typeId() == QMetaType::Bool) {
        animates_ = content.toBool();
    } else if (group == appearance && key == motion && content.canConvert<uint>()) {
        asksForLessMotion_ = content.toUInt() == 1;
    } else if (group == desktop && key == text && content.canConvert<double>() && content.toDouble() > 0) {
        textScale_ = content.toDouble();
    } else {
        return;
    }
    emit changed();
}

} // namespace quillomat
