#include "platform/linux/portal/PortalRequest.h"

#include "platform/linux/desktop/BusCall.h"
#include "platform/linux/portal/PortalClient.h"

#include <QDBusObjectPath>
#include <QDBusPendingReply>
#include <QRandomGenerator>
#include <QTimer>

#include <limits>

namespace quenby {
namespace {

const QString requestInterface = QStringLiteral("org.freedesktop.portal.Request");

// Codes of a response.
constexpr uint granted = 0;
constexpr uint declined = 1;

} // namespace

PortalRequest::PortalRequest(PortalClient* client, QObject* parent)
    : QObject(parent)
    , client_(client) {
    connect(client_, &PortalClient::vanished, this, [this] { answer(client_->vanishedError()); });
}

PortalRequest::~PortalRequest() {
    // Where nobody listens yet or any more, the portal answers with an error that nobody waits for.
    if (answered_)
        client_->bus().send(client_->callOn(handle_, requestInterface, QStringLiteral("Close")));
}

void PortalRequest::send(const QString& method, QVariantList arguments, QVariantMap options, Patience patience,
                         Answered answered) {
    answered_ = std::move(answered);
    const QString token = newToken();
    handle_ = client_->expectedPath(QStringLiteral("request"), token);
    options[QStringLiteral("handle_token")] = token;
    arguments << options;

    // Before the call, because the response may overtake its reply; and for whatever object, because old portals do not
    // take the one that is expected. It is said to us alone.
    QDBusConnection bus = client_->bus();
    bus.connect(client_->owner(), QString(), requestInterface, QStringLiteral("Response"), this,
                SLOT(takeResponse(uint, QVariantMap, QDBusMessage)));
    constexpr int forever = std::numeric_limits<int>::max();
    const int timeout = patience ? static_cast<int>(patience->count()) : forever;
    whenReplied(bus.asyncCall(client_->callOf(method, arguments), timeout), this,
                [this](const QDBusPendingReply<QDBusObjectPath>& reply) {
                    if (reply.isError())
                        answer(client_->errorOf(reply.error()));
                    else
                        takeHandle(reply.value().path());
                });
    if (patience)
        QTimer::singleShot(*patience, this, [this] { answer(client_->silentError()); });
}

QString PortalRequest::newToken() {
    return QStringLiteral("quenby_%1").arg(QRandomGenerator::system()->generate64(), 16, 16, QLatin1Char('0'));
}

void PortalRequest::takeHandle(const QString& handle) {
    handle_ = handle;
    isHandleSure_ = true;
    if (const auto early = early_.constFind(handle); early != early_.constEnd())
        takeAnswer(*early);
}

void PortalRequest::takeResponse(uint code, const QVariantMap& results, const QDBusMessage& signal) {
    const Response response{code, results};
    if (signal.path() == handle_)
        takeAnswer(response);
    else if (!isHandleSure_)
        early_.insert(signal.path(), response);
}

void PortalRequest::takeAnswer(const Response& response) {
    if (response.code == granted)
        answer(std::optional(response.results));
    else if (response.code == declined)
        answer(std::optional<QVariantMap>());
    else
        answer(client_->refusedError());
}

void PortalRequest::answer(const Outcome& outcome) {
    if (const Answered answered = std::exchange(answered_, {})) {
        deleteLater();
        answered(outcome);
    }
}

} // namespace quenby
