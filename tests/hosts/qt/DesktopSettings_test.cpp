#include "hosts/qt/DesktopSettings.h"

#include "TestApplication.h"

#include <QDBusError>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QEventLoop>
#include <QMap>
#include <QProcess>
#include <QStandardPaths>
#include <QTimer>

#include <gtest/gtest.h>

#include <chrono>

namespace quillomat {
namespace {

const QString name = QStringLiteral("org.freedesktop.portal.Desktop");
const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString interface = QStringLiteral("org.freedesktop.portal.Settings");
const QString desktop = QStringLiteral("org.gnome.desktop.interface");
const QString animations = QStringLiteral("enable-animations");

void runFor(std::chrono::milliseconds time) {
    QEventLoop loop;
    QTimer::singleShot(time, &loop, &QEventLoop::quit);
    loop.exec();
}

/// A desktop's settings on a bus of the test's own.
class Portal final : public QDBusVirtualObject {
public:
    [[nodiscard]] QString introspect(const QString& /*path*/) const override { return {}; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        const QString key = message.arguments().value(0).toString() + u'/' + message.arguments().value(1).toString();
        connection.send(settings.contains(key) ? message.createReply(wrapped(wrapped(settings.value(key))))
                                               : message.createErrorReply(QDBusError::InvalidArgs, key));
        return true;
    }

    static QVariant wrapped(const QVariant& value) { return QVariant::fromValue(QDBusVariant(value)); }

    QMap<QString, QVariant> settings;
};

class DesktopSettingsTest : public ::testing::Test {
protected:
    void SetUp() override {
        testApplication();
        if (QStandardPaths::findExecutable(QStringLiteral("dbus-daemon")).isEmpty()) {
            GTEST_SKIP() << "dbus-daemon is not installed";
        }
        daemon_.start(QStringLiteral("dbus-daemon"),
                      {QStringLiteral("--session"), QStringLiteral("--print-address"), QStringLiteral("--nofork")});
        ASSERT_TRUE(daemon_.waitForStarted() && daemon_.waitForReadyRead(10'000));
        address_ = QString::fromUtf8(daemon_.readLine()).trimmed();
        ASSERT_TRUE(portalBus().isConnected());
        ASSERT_TRUE(portalBus().registerVirtualObject(path, &portal_));
        ASSERT_TRUE(portalBus().registerService(name));
    }

    void TearDown() override {
        QDBusConnection::disconnectFromBus(QStringLiteral("portal"));
        QDBusConnection::disconnectFromBus(QStringLiteral("window"));
        daemon_.kill();
        daemon_.waitForFinished();
    }

    [[nodiscard]] QDBusConnection portalBus() const {
        return QDBusConnection::connectToBus(address_, QStringLiteral("portal"));
    }
    [[nodiscard]] QDBusConnection windowBus() const {
        return QDBusConnection::connectToBus(address_, QStringLiteral("window"));
    }
    void say(const QString& group, const QString& key, const QVariant& value) {
        auto news = QDBusMessage::createSignal(path, interface, QStringLiteral("SettingChanged"));
        news << group << key << Portal::wrapped(value);
        portalBus().send(news);
    }
    template <typename Condition> static bool comesTrue(Condition condition) {
        for (int turn = 0; turn < 100 && !condition(); ++turn) {
            runFor(std::chrono::milliseconds(20));
        }
        return condition();
    }

    Portal portal_;

private:
    QProcess daemon_;
    QString address_;
};

TEST_F(DesktopSettingsTest, saysWhatTheDesktopSaidBefore) {
    portal_.settings = {{desktop + u'/' + animations, false}, {desktop + QStringLiteral("/text-scaling-factor"), 1.5}};
    DesktopSettings settings;
    settings.watch(windowBus());
    EXPECT_FALSE(settings.reducesMotion()) << "it has waited for the answer";
    EXPECT_TRUE(comesTrue([&] { return settings.reducesMotion() && settings.textScale() == 1.5; }));
}

TEST_F(DesktopSettingsTest, followsAChangeOfMind) {
    DesktopSettings settings;
    int changes = 0;
    QObject::connect(&settings, &DesktopSettings::changed, [&] { ++changes; });
    settings.watch(windowBus());
    runFor(std::chrono::milliseconds(200));
    EXPECT_EQ(changes, 0);
    say(desktop, animations, false);
    EXPECT_TRUE(comesTrue([&] { return settings.reducesMotion(); }));
    say(desktop, animations, true);
    EXPECT_TRUE(comesTrue([&] { return !settings.reducesMotion(); }));
    say(QStringLiteral("org.freedesktop.appearance"), QStringLiteral("reduced-motion"), 1U);
    EXPECT_TRUE(comesTrue([&] { return settings.reducesMotion(); }));
    say(desktop, QStringLiteral("text-scaling-factor"), 1.25);
    EXPECT_TRUE(comesTrue([&] { return settings.textScale() == 1.25; }));
    EXPECT_EQ(changes, 4);
}

TEST_F(DesktopSettingsTest, whatIsNoAnswerChangesNothing) {
    portal_.settings = {{desktop + u'/' + animations, QStringLiteral("off")},
                        {desktop + QStringLiteral("/text-scaling-factor"), -3.0}};
    DesktopSettings settings;
    settings.watch(windowBus());
    say(desktop, QStringLiteral("cursor-size"), 48);
    runFor(std::chrono::milliseconds(300));
    EXPECT_FALSE(settings.reducesMotion());
    EXPECT_EQ(settings.textScale(), 1.0);
}

} // namespace
} // namespace quillomat
