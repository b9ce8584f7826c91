#include "app/diagnostics/BusFacts.h"

#include "platform/linux/session/BusCalls.h"
#include "platform/linux/session/SecretService.h"

#include <QDBusError>
#include <QDBusObjectPath>
#include <QDBusPendingReply>
#include <QDBusVariant>

namespace quenby {
namespace {

constexpr std::chrono::seconds patience(3);

const QString portalService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString notificationService = QStringLiteral("org.freedesktop.Notifications");
const QString trayService = QStringLiteral("org.kde.StatusNotifierWatcher");

QDBusMessage propertyQuestion(const QString& service, const QString& path, const QString& interface,
                              const QString& property) {
    QDBusMessage question = QDBusMessage::createMethodCall(
        service, path, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    question << interface << property;
    return question;
}

bool isReply(const QDBusMessage& message) { return message.type() == QDBusMessage::ReplyMessage; }

QVariant propertyIn(const QDBusMessage& reply) { return reply.arguments().value(0).value<QDBusVariant>().variant(); }

// The service answers, but has no such interface.
bool isUnknown(const QDBusMessage& reply) {
    const QDBusError::ErrorType type = QDBusError(reply).type();
    return type == QDBusError::InvalidArgs || type == QDBusError::UnknownInterface ||
           type == QDBusError::UnknownMethod || type == QDBusError::UnknownProperty;
}

QString versionText(const QVariantMap& properties) {
    return QStringLiteral("version %1").arg(properties.value(QStringLiteral("version")).toUInt());
}

// The error's name; its text may hold anything.
QString errorText(const QDBusMessage& reply) { return QStringLiteral("error ") + reply.errorName(); }

} // namespace

BusFacts::BusFacts(const QDBusConnection& bus, std::shared_ptr<TimeSource> timeSource, QObject* parent)
    : QObject(parent)
    , bus_(bus)
    , timeSource_(std::move(timeSource)) {
    for (const char* title : {"Portals", "Secret Service", "Notification service", "Trays"})
        sections_.append({QString::fromLatin1(title), {}});
    for (const Part part : {portals, keyring, notifications, trays})
        addLine(part, QStringLiteral("Service"));
}

BusFacts::~BusFacts() = default;

BusFacts::Place BusFacts::addLine(Part part, const QString& what) {
    sections_[part].lines.append({what, QStringLiteral("no answer")});
    return {part, sections_[part].lines.size() - 1};
}

QList<DiagnosticsSection> BusFacts::sections() const { return sections_; }

void BusFacts::ask(std::function<void()> done) {
    done_ = std::move(done);
    if (!bus_.isConnected()) {
        for (const Part part : {portals, keyring, notifications, trays})
            set({part, 0}, QStringLiteral("there is no session bus"));
        return finishSoon();
    }
    patience_ = timeSource_->startTimer(patience, [this] { finishSoon(); });
    callBus(QStringLiteral("ListNames"), [this](const QDBusMessage& reply) {
        running_ = reply.arguments().value(0).toStringList();
        namesAreKnown();
    });
    callBus(QStringLiteral("ListActivatableNames"), [this](const QDBusMessage& reply) {
        startable_ = reply.arguments().value(0).toStringList();
        namesAreKnown();
    });
}

void BusFacts::call(QDBusMessage question, Answered answered) {
    question.setAutoStartService(false);
    ++unanswered_;
    whenAnswered(this, bus_.asyncCall(question), [this, answered = std::move(answered)](const QDBusMessage& reply) {
        if (!done_)
            return; // too late
        answered(reply);
        if (--unanswered_ == 0)
            finishSoon();
    });
}

void BusFacts::callBus(const QString& method, Answered answered) {
    call(QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
                                        QStringLiteral("org.freedesktop.DBus"), method),
         std::move(answered));
}

void BusFacts::namesAreKnown() {
    if (!running_ || !startable_)
        return;
    askPortals();
    askKeyring();
    askNotifications();
    askTrays();
}

bool BusFacts::runs(Part part, const QString& service) {
    const bool isRunning = running_->contains(service);
    const bool isStartable = startable_->contains(service);
    set({part, 0}, isRunning     ? QStringLiteral("running")
                   : isStartable ? QStringLiteral("not running, the bus can start it")
                                 : QStringLiteral("not there"));
    return isRunning;
}

void BusFacts::askPortals() {
    if (!runs(portals, portalService))
        return;
    for (const char* name : {"Screenshot", "ScreenCast", "FileChooser", "GlobalShortcuts", "Settings"}) {
        const QString interface = QString::fromLatin1(name);
        const Place place = addLine(portals, interface);
        QDBusMessage question =
            QDBusMessage::createMethodCall(portalService, QStringLiteral("/org/freedesktop/portal/desktop"),
                                           QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("GetAll"));
        question << QString(QStringLiteral("org.freedesktop.portal.") + interface);
        call(question, [this, place](const QDBusMessage& reply) {
            const QDBusPendingReply<QVariantMap> properties(reply);
            set(place, isReply(reply)     ? versionText(properties.value())
                       : isUnknown(reply) ? QStringLiteral("not offered")
                                          : errorText(reply));
        });
    }
}

void BusFacts::askKeyring() {
    if (!runs(keyring, secretService::name))
        return;
    const Place place = addLine(keyring, QStringLiteral("Default keyring"));
    QDBusMessage question = QDBusMessage::createMethodCall(
        secretService::name, secretService::path, secretService::serviceInterface, QStringLiteral("ReadAlias"));
    question << QStringLiteral("default");
    call(question, [this, place](const QDBusMessage& reply) {
        const QString collection = reply.arguments().value(0).value<QDBusObjectPath>().path();
        if (!isReply(reply))
            set(place, errorText(reply));
        else if (collection.size() > 1)
            askKeyringLocked(collection, place);
        else
            set(place, QStringLiteral("there is none"));
    });
}

void BusFacts::askKeyringLocked(const QString& collection, const Place& place) {
    call(secretService::lockedQuestion(collection), [this, place](const QDBusMessage& reply) {
        if (!isReply(reply))
            set(place, errorText(reply));
        else
            set(place, secretService::saysLocked(reply) ? QStringLiteral("locked") : QStringLiteral("open"));
    });
}

void BusFacts::askNotifications() {
    if (!runs(notifications, notificationService))
        return;
    const Place place = addLine(notifications, QStringLiteral("Program"));
    call(QDBusMessage::createMethodCall(notificationService, QStringLiteral("/org/freedesktop/Notifications"),
                                        notificationService, QStringLiteral("GetServerInformation")),
         [this, place](const QDBusMessage& reply) {
             const QVariantList facts = reply.arguments(); // name, vendor, version, version of the protocol
             set(place, isReply(reply) ? facts.value(0).toString() + QLatin1Char(' ') + facts.value(2).toString()
                                       : errorText(reply));
         });
}

void BusFacts::askTrays() {
    if (!runs(trays, trayService))
        return;
    const Place place = addLine(trays, QStringLiteral("A panel shows items"));
    call(propertyQuestion(trayService, QStringLiteral("/StatusNotifierWatcher"), trayService,
                          QStringLiteral("IsStatusNotifierHostRegistered")),
         [this, place](const QDBusMessage& reply) {
             if (!isReply(reply))
                 set(place, errorText(reply));
             else
                 set(place, propertyIn(reply).toBool() ? QStringLiteral("yes") : QStringLiteral("no"));
         });
}

void BusFacts::finishSoon() {
    patience_.reset();
    if (done_)
        QMetaObject::invokeMethod(this, std::exchange(done_, nullptr), Qt::QueuedConnection);
}

} // namespace quenby
