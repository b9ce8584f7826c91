// The services that keep a computer awake, played on the test's own bus.
#pragma once

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusUnixFileDescriptor>
#include <QDBusVirtualObject>
#include <QHash>
#include <QStringList>

#include <memory>
#include <poll.h>
#include <unistd.h>

namespace quenby::testing {

class PlayedSleepService : public QDBusVirtualObject {
public:
    enum class Does { grant, refuse, wait };
    Does does = Does::grant;
    int questions = 0;

    ~PlayedSleepService() override {
        bus_.unregisterObject(path_, QDBusConnection::UnregisterTree);
        bus_.unregisterService(name_);
        QDBusConnection::disconnectFromBus(name_);
    }

    virtual QStringList reasons() const = 0;
    // The answer to the question that was left waiting.
    void grantLate() { bus_.send(grant(question_)); }

    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection&) override {
        if (message.member() != QLatin1String("Inhibit"))
            return release(message);
        ++questions;
        question_ = message;
        if (does == Does::refuse)
            return bus_.send(message.createErrorReply(QDBusError::AccessDenied, QStringLiteral("no")));
        return does == Does::wait || bus_.send(grant(message));
    }

protected:
    PlayedSleepService(const QString& name, const QString& path)
        : name_(name)
        , path_(path)
        , bus_(QDBusConnection::connectToBus(QDBusConnection::SessionBus, name)) {
        bus_.registerVirtualObject(path, this, QDBusConnection::SubPath);
        bus_.registerService(name);
    }

    virtual QDBusMessage grant(const QDBusMessage& question) = 0;
    virtual bool release(const QDBusMessage&) { return false; }

private:
    QString name_;
    QString path_;
    QDBusConnection bus_;
    QDBusMessage question_;
};

class PlayedLoginManager final : public PlayedSleepService {
public:
    PlayedLoginManager()
        : PlayedSleepService(QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1")) {}
    ~PlayedLoginManager() override {
        for (const Lock& lock : locks_)
            ::close(lock.ourEnd);
    }

    // Whoever closed the other end holds nothing any more.
    QStringList reasons() const override {
        QStringList list;
        for (const Lock& lock : locks_) {
            pollfd end{lock.ourEnd, POLLIN, 0};
            if (::poll(&end, 1, 0) == 0)
                list << lock.reason;
        }
        return list;
    }
    QStringList lastArguments; // what, who, mode

protected:
    QDBusMessage grant(const QDBusMessage& question) override {
        const QVariantList asked = question.arguments();
        lastArguments = {asked.value(0).toString(), asked.value(1).toString(), asked.value(3).toString()};
        int ends[2] = {-1, -1};
        if (::pipe(ends) != 0)
            return question.createErrorReply(QDBusError::Failed, QStringLiteral("no pipe"));
        locks_ << Lock{ends[0], asked.value(2).toString()};
        QDBusUnixFileDescriptor given(ends[1]);
        ::close(ends[1]); // the descriptor object has its own
        return question.createReply(QVariant::fromValue(given));
    }

private:
    struct Lock {
        int ourEnd;
        QString reason;
    };
    QList<Lock> locks_;
};

class PlayedPowerManager final : public PlayedSleepService {
public:
    PlayedPowerManager()
        : PlayedSleepService(QStringLiteral("org.freedesktop.PowerManagement"),
                             QStringLiteral("/org/freedesktop/PowerManagement/Inhibit")) {}

    QStringList reasons() const override { return held_.values(); }

protected:
    QDBusMessage grant(const QDBusMessage& question) override {
        held_.insert(++cookies_, question.arguments().value(1).toString());
        return question.createReply(cookies_);
    }
    bool release(const QDBusMessage& message) override {
        return message.member() == QLatin1String("UnInhibit") && held_.remove(message.arguments().value(0).toUInt());
    }

private:
    QHash<uint, QString> held_;
    uint cookies_ = 0;
};

class PlayedSleepPortal final : public PlayedSleepService {
public:
    PlayedSleepPortal()
        : PlayedSleepService(QStringLiteral("org.freedesktop.portal.Desktop"),
                             QStringLiteral("/org/freedesktop/portal/desktop")) {}

    QStringList reasons() const override { return held_.values(); }

protected:
    QDBusMessage grant(const QDBusMessage& question) override {
        constexpr uint suspend = 4;
        if (question.arguments().value(1) != QVariant(suspend))
            return question.createErrorReply(QDBusError::InvalidArgs, QStringLiteral("flags"));
        const QString handle = QStringLiteral("/org/freedesktop/portal/desktop/request/%1").arg(++handles_);
        held_.insert(handle,
                     qdbus_cast<QVariantMap>(question.arguments().value(2)).value(QStringLiteral("reason")).toString());
        return question.createReply(QVariant::fromValue(QDBusObjectPath(handle)));
    }
    bool release(const QDBusMessage& message) override {
        return message.member() == QLatin1String("Close") && held_.remove(message.path());
    }

private:
    QHash<QString, QString> held_;
    int handles_ = 0;
};

} // namespace quenby::testing
