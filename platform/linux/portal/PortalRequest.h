// One request to the desktop's portal (org.freedesktop.portal.Request): sent, answered or taken back.
//
// Threads: the main thread; nothing here blocks.
#pragma once

#include "core/Result.h"

#include <QDBusMessage>
#include <QHash>
#include <QObject>
#include <QVariantMap>

#include <chrono>
#include <functional>
#include <optional>
#include <utility>

namespace quenby {

class PortalClient;

class PortalRequest final : public QObject {
    Q_OBJECT

public:
    // What the portal has to tell. Nothing: the user declined.
    using Outcome = Result<std::optional<QVariantMap>>;
    using Answered = std::function<void(const Outcome& outcome)>;
    // Nothing: it takes as long as the user thinks.
    using Patience = std::optional<std::chrono::milliseconds>;

    // Of a desktop that has nobody to ask.
    static constexpr std::chrono::milliseconds patienceWithDesktop = std::chrono::seconds(30);

    // The client has found its portal, and lives longer.
    PortalRequest(PortalClient* client, QObject* parent);
    // Takes back what was not answered: what the desktop shows for it goes.
    ~PortalRequest() override;

    // Once. The options come last in the method's arguments. answered is called once, and the request deletes itself.
    void send(const QString& method, QVariantList arguments, QVariantMap options, Patience patience, Answered answered);

    // A name for something of ours at the portal; nobody else has the same or can guess it.
    static QString newToken();

private Q_SLOTS:
    void takeResponse(uint code, const QVariantMap& results, const QDBusMessage& signal);

private:
    struct Response {
        uint code = 0;
        QVariantMap results;
    };

    void takeHandle(const QString& handle);
    void takeAnswer(const Response& response);
    void answer(const Outcome& outcome);

    PortalClient* const client_;
    Answered answered_; // empty once it was called
    QString handle_;    // the request's object at the portal
    bool isHandleSure_ = false;
    QHash<QString, Response> early_; // by handle: came before the handle was sure
};

} // namespace quenby
