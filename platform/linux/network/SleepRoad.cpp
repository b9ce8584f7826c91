#include "platform/linux/network/SleepRoad.h"

#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QDBusUnixFileDescriptor>
#include <QVariantMap>

#include <utility>

namespace quenby {
namespace {

const QString programName = QStringLiteral("Quenby");

// Open for as long as the computer is held. No program that is started inherits it.
class DescriptorGrip final : public SleepRoad::Grip {
public:
    explicit DescriptorGrip(QDBusUnixFileDescriptor descriptor)
        : descriptor_(std::move(descriptor)) {}

private:
    QDBusUnixFileDescriptor descriptor_;
};

// Given back by a call. It goes to the very process that gave it: for another the same number may be somebody else's.
class CallGrip final : public SleepRoad::Grip {
public:
    CallGrip(const QDBusConnection& bus, QDBusMessage release)
        : bus_(bus)
        , release_(std::move(release)) {
        release_.setAutoStartService(false);
    }
    ~CallGrip() override { bus_.send(release_); }

private:
    QDBusConnection bus_;
    QDBusMessage release_;
};

// The login manager: it sees to all that puts the computer to sleep, whatever the desktop.
class LoginManagerRoad final : public SleepRoad {
public:
    explicit LoginManagerRoad(const QDBusConnection& bus)
        : SleepRoad(bus, name) {}

protected:
    QDBusMessage question(const QString& reason) const override {
        QDBusMessage call =
            QDBusMessage::createMethodCall(name, QStringLiteral("/org/freedesktop/login1"),
                                           name + QStringLiteral(".Manager"), QStringLiteral("Inhibit"));
        call << QStringLiteral("sleep") << programName << reason << QStringLiteral("block");
        return call;
    }
    std::unique_ptr<Grip> gripOf(const QDBusMessage& reply) const override {
        const auto descriptor = reply.arguments().value(0).value<QDBusUnixFileDescriptor>();
        return descriptor.isValid() ? std::make_unique<DescriptorGrip>(descriptor) : nullptr;
    }

private:
    static inline const QString name = QStringLiteral("org.freedesktop.login1");
};

// The session's own power manager.
class PowerManagerRoad final : public SleepRoad {
public:
    explicit PowerManagerRoad(const QDBusConnection& bus)
        : SleepRoad(bus, name) {}

protected:
    QDBusMessage question(const QString& reason) const override {
        QDBusMessage call = callTo(name, QStringLiteral("Inhibit"));
        call << programName << reason;
        return call;
    }
    std::unique_ptr<Grip> gripOf(const QDBusMessage& reply) const override {
        const QVariant cookie = reply.arguments().value(0);
        if (cookie.metaType() != QMetaType::fromType<uint>())
            return nullptr;
        QDBusMessage release = callTo(reply.service(), QStringLiteral("UnInhibit"));
        release << cookie;
        return std::make_unique<CallGrip>(bus(), release);
    }

private:
    static QDBusMessage callTo(const QString& service, const QString& method) {
        return QDBusMessage::createMethodCall(service, QStringLiteral("/org/freedesktop/PowerManagement/Inhibit"),
                                              name + QStringLiteral(".Inhibit"), method);
    }

    static inline const QString name = QStringLiteral("org.freedesktop.PowerManagement");
};

// The portal. It comes last, because it takes a request before it knows whether the desktop grants it.
class PortalRoad final : public SleepRoad {
public:
    explicit PortalRoad(const QDBusConnection& bus)
        : SleepRoad(bus, name) {}

protected:
    QDBusMessage question(const QString& reason) const override {
        constexpr uint suspend = 4;
        QDBusMessage call =
            QDBusMessage::createMethodCall(name, QStringLiteral("/org/freedesktop/portal/desktop"),
                                           QStringLiteral("org.freedesktop.portal.Inhibit"), QStringLiteral("Inhibit"));
        call << QString() << suspend << QVariantMap{{QStringLiteral("reason"), reason}};
        return call;
    }
    std::unique_ptr<Grip> gripOf(const QDBusMessage& reply) const override {
        const QString handle = reply.arguments().value(0).value<QDBusObjectPath>().path();
        if (handle.isEmpty())
            return nullptr;
        return std::make_unique<CallGrip>(
            bus(),
            QDBusMessage::createMethodCall(reply.service(), handle, QStringLiteral("org.freedesktop.portal.Request"),
                                           QStringLiteral("Close")));
    }

private:
    static inline const QString name = QStringLiteral("org.freedesktop.portal.Desktop");
};

} // namespace

SleepRoad::SleepRoad(const QDBusConnection& bus, const QString& service)
    : bus_(bus) {
    if (!hasBus())
        return;
    auto* watcher = new QDBusServiceWatcher(service, bus_, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString&, const QString& before, const QString& owner) {
                if (!before.isEmpty())
                    Q_EMIT went();
                if (!owner.isEmpty())
                    Q_EMIT came();
            });
}

void SleepRoad::ask(const QString& reason, Answered answered) {
    auto* watcher = new QDBusPendingCallWatcher(bus_.asyncCall(question(reason)), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, told = std::move(answered)] {
        watcher->deleteLater();
        const QDBusMessage reply = watcher->reply();
        told(reply.type() == QDBusMessage::ReplyMessage ? gripOf(reply) : nullptr);
    });
}

std::vector<std::unique_ptr<SleepRoad>> makeSleepRoads(const QDBusConnection& systemBus,
                                                       const QDBusConnection& sessionBus) {
    std::vector<std::unique_ptr<SleepRoad>> roads;
    roads.push_back(std::make_unique<LoginManagerRoad>(systemBus));
    roads.push_back(std::make_unique<PowerManagerRoad>(sessionBus));
    roads.push_back(std::make_unique<PortalRoad>(sessionBus));
    return roads;
}

} // namespace quenby
