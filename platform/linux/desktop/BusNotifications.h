// Notifications through org.freedesktop.Notifications (Desktop Notifications Specification 1.2).
//
// The service may be missing, be started by the bus with the first notification, go, and come back. What it showed when
// it went counts as closed.
#pragma once

#include "platform/Notifications.h"
#include "platform/linux/desktop/BusService.h"
#include "platform/linux/desktop/NotifyArguments.h"

#include <QDBusConnection>

#include <list>
#include <optional>

namespace quenby {

class BusNotifications final : public Notifications {
    Q_OBJECT

public:
    explicit BusNotifications(const QDBusConnection& bus = QDBusConnection::sessionBus());
    ~BusNotifications() override;

    QString unavailableBecause() const override;
    quint64 post(const Notification& notification) override;
    void withdraw(quint64 identifier) override;
    // False until the service has told.
    bool hasButtons() const override { return traits_.hasButtons; }

private:
    struct Numbered {
        quint64 identifier = 0;
        Notification notification;
    };

    // A place on the screen, which notifications of the same tag take one after the other. The service names it only
    // in its reply to the first of them, so that the next one and a withdrawal may have to wait.
    struct Place {
        QString tag;
        quint64 current = 0;      // the notification that was sent; 0 before the first
        QString clickKey;         // what a click on it invokes
        uint onServer = 0;        // the service's number for the place
        bool isSending = false;   // the reply to the current one is not there yet
        bool isWithdrawn = false; // the current one is to go as soon as the reply is there
        std::optional<Numbered> next;
    };

    void askAboutService();
    void askCapabilities();
    void takeCapabilities(const QStringList& capabilities);
    void forgetService();

    Place& placeForTag(const QString& tag);
    void sendNext(Place& place);
    void takeReply(quint64 identifier, std::optional<uint> onServer);
    void closeOnServer(const Place& place);
    // The current notification is gone; the place with it, when nothing waits for it.
    void endCurrent(quint64 identifier);
    void endAll();
    void tellClosed(quint64 identifier);
    void forgetEmptyPlaces();
    Place* placeWithCurrent(quint64 identifier);
    const Place* placeOnServer(uint onServer) const;

    // The service tells everybody about everybody's notifications: it is only listened to while some are ours.
    void listenWhileNeeded();

private Q_SLOTS:
    void takeActionInvoked(uint onServer, const QString& key);
    void takeNotificationClosed(uint onServer, uint reason);

private:
    enum class Knowledge { none, asked, known };

    QDBusConnection bus_;
    BusService service_;
    Knowledge knowledge_ = Knowledge::none;
    quint64 serviceNumber_ = 0; // tells the replies of services apart that came one after the other
    NotificationServiceTraits traits_;
    bool isListening_ = false;
    quint64 lastIdentifier_ = 0;
    std::list<Place> places_;
};

} // namespace quenby
