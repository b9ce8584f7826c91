#include "platform/linux/desktop/BusNotifications.h"

#include "platform/linux/desktop/BusCall.h"
#include "platform/linux/desktop/NotifyCall.h"

#include <QDBusMessage>
#include <QDBusPendingReply>

#include <utility>

namespace quenby {
namespace {

const QString serviceName = QStringLiteral("org.freedesktop.Notifications");
const QString servicePath = QStringLiteral("/org/freedesktop/Notifications");

QDBusMessage callOf(const QString& method, const QVariantList& arguments = {}) {
    QDBusMessage call = QDBusMessage::createMethodCall(serviceName, servicePath, serviceName, method);
    call.setArguments(arguments);
    return call;
}

} // namespace

BusNotifications::BusNotifications(const QDBusConnection& bus)
    : bus_(bus)
    , service_(bus, serviceName) {
    connect(&service_, &BusService::came, this, &BusNotifications::askAboutService);
    connect(&service_, &BusService::went, this, &BusNotifications::forgetService);
}

BusNotifications::~BusNotifications() = default;

QString BusNotifications::unavailableBecause() const {
    if (!bus_.isConnected())
        return QStringLiteral("Notifications cannot be shown, because this session has no message bus (D-Bus).");
    if (!service_.isThere()) {
        return QStringLiteral("Notifications cannot be shown, because the desktop has no notification service. "
                              "Install one, for example dunst.");
    }
    return {};
}

quint64 BusNotifications::post(const Notification& notification) {
    if (!bus_.isConnected() || !service_.isThere())
        return 0;
    Place& place = placeForTag(notification.tag);
    if (place.next)
        tellClosed(place.next->identifier);
    const quint64 identifier = ++lastIdentifier_;
    place.next = Numbered{identifier, notification};
    listenWhileNeeded();
    if (knowledge_ == Knowledge::known)
        sendNext(place);
    else
        askAboutService();
    return identifier;
}

void BusNotifications::withdraw(quint64 identifier) {
    for (Place& place : places_) {
        if (place.next && place.next->identifier == identifier) {
            place.next.reset();
            tellClosed(identifier);
        } else if (place.current == identifier && identifier != 0) {
            if (place.isSending)
                place.isWithdrawn = true;
            else
                closeOnServer(place);
        }
    }
    forgetEmptyPlaces();
}

void BusNotifications::askAboutService() {
    if (knowledge_ != Knowledge::none)
        return;
    knowledge_ = Knowledge::asked;
    // The name comes first in the reply; older services tell less of the rest. One that doesn't tell is taken as usual.
    whenReplied(bus_.asyncCall(callOf(QStringLiteral("GetServerInformation"))), this,
                [this, number = serviceNumber_](const QDBusPendingReply<QString>& reply) {
                    if (number != serviceNumber_)
                        return;
                    traits_.drawsClickAsButton = reply.isValid() && drawsClickAsButton(reply.value());
                    askCapabilities();
                });
}

void BusNotifications::askCapabilities() {
    whenReplied(bus_.asyncCall(callOf(QStringLiteral("GetCapabilities"))), this,
                [this, number = serviceNumber_](const QDBusPendingReply<QStringList>& reply) {
                    if (number != serviceNumber_)
                        return;
                    if (reply.isValid())
                        takeCapabilities(reply.value());
                    else
                        forgetService();
                });
}

void BusNotifications::takeCapabilities(const QStringList& capabilities) {
    knowledge_ = Knowledge::known;
    traits_.readsMarkup = capabilities.contains(QLatin1String("body-markup"));
    traits_.hasButtons = capabilities.contains(QLatin1String("actions"));
    for (Place& place : places_)
        sendNext(place);
}

void BusNotifications::forgetService() {
    ++serviceNumber_;
    knowledge_ = Knowledge::none;
    traits_ = {};
    endAll();
}

BusNotifications::Place& BusNotifications::placeForTag(const QString& tag) {
    if (!tag.isEmpty()) {
        for (Place& place : places_) {
            if (place.tag == tag)
                return place;
        }
    }
    Place& place = places_.emplace_back();
    place.tag = tag;
    return place;
}

void BusNotifications::sendNext(Place& place) {
    if (place.isSending || !place.next)
        return;
    if (place.current != 0)
        tellClosed(place.current);
    const Numbered next = *std::exchange(place.next, std::nullopt);
    place.current = next.identifier;
    place.clickKey = next.notification.clickKey;
    place.isSending = true;
    place.isWithdrawn = false;
    const QVariantList arguments = notifyArguments(next.notification, place.onServer, traits_);
    new NotifyCall(
        bus_, callOf(QStringLiteral("Notify"), arguments), this,
        [this, identifier = next.identifier](std::optional<uint> onServer) { takeReply(identifier, onServer); });
}

void BusNotifications::takeReply(quint64 identifier, std::optional<uint> onServer) {
    Place* const place = placeWithCurrent(identifier);
    if (!place)
        return;
    place->isSending = false;
    place->onServer = onServer.value_or(0);
    if (!onServer) {
        endCurrent(identifier);
    } else if (place->next) {
        sendNext(*place);
    } else if (place->isWithdrawn) {
        closeOnServer(*place);
    }
}

void BusNotifications::closeOnServer(const Place& place) {
    // The service tells that it is closed, too; whichever comes first counts.
    whenReplied(bus_.asyncCall(callOf(QStringLiteral("CloseNotification"), {place.onServer})), this,
                [this, identifier = place.current](const QDBusPendingReply<>&) { endCurrent(identifier); });
}

void BusNotifications::endCurrent(quint64 identifier) {
    Place* const place = placeWithCurrent(identifier);
    if (!place || place->isSending)
        return;
    tellClosed(identifier);
    place->current = 0;
    place->onServer = 0;
    sendNext(*place);
    forgetEmptyPlaces();
}

void BusNotifications::endAll() {
    for (const Place& place : std::exchange(places_, {})) {
        if (place.current != 0)
            tellClosed(place.current);
        if (place.next)
            tellClosed(place.next->identifier);
    }
    listenWhileNeeded();
}

void BusNotifications::tellClosed(quint64 identifier) {
    // Never from inside of a call.
    QMetaObject::invokeMethod(
        this, [this, identifier] { Q_EMIT closed(identifier); }, Qt::QueuedConnection);
}

void BusNotifications::forgetEmptyPlaces() {
    places_.remove_if([](const Place& place) { return place.current == 0 && !place.next; });
    listenWhileNeeded();
}

BusNotifications::Place* BusNotifications::placeWithCurrent(quint64 identifier) {
    for (Place& place : places_) {
        if (place.current == identifier)
            return &place;
    }
    return nullptr;
}

const BusNotifications::Place* BusNotifications::placeOnServer(uint onServer) const {
    for (const Place& place : places_) {
        // While the reply is awaited, what the service says is about the notification before.
        if (place.onServer == onServer && !place.isSending)
            return &place;
    }
    return nullptr;
}

void BusNotifications::listenWhileNeeded() {
    if (isListening_ == !places_.empty())
        return;
    isListening_ = !isListening_;
    const auto change = [this](const QString& signal, const char* slot) {
        if (isListening_)
            bus_.connect(serviceName, servicePath, serviceName, signal, this, slot);
        else
            bus_.disconnect(serviceName, servicePath, serviceName, signal, this, slot);
    };
    change(QStringLiteral("ActionInvoked"), SLOT(takeActionInvoked(uint, QString)));
    change(QStringLiteral("NotificationClosed"), SLOT(takeNotificationClosed(uint, uint)));
}

void BusNotifications::takeActionInvoked(uint onServer, const QString& key) {
    const Place* const place = placeOnServer(onServer);
    if (!place || onServer == 0)
        return;
    const QString ours = key == keyOfClick ? place->clickKey : key;
    if (!ours.isEmpty())
        Q_EMIT actionInvoked(place->current, ours);
}

void BusNotifications::takeNotificationClosed(uint onServer, uint) {
    if (const Place* place = placeOnServer(onServer); place && onServer != 0)
        endCurrent(place->current);
}

} // namespace quenby
