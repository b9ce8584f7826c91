#include "platform/linux/portal/PortalClient.h"

#include "platform/linux/desktop/BusCall.h"

#include <QDBusPendingReply>
#include <QDBusServiceWatcher>

#include <utility>

namespace quenby {
namespace {

const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");

bool meansNoPortal(const QDBusError& error) {
    return error.type() == QDBusError::ServiceUnknown ||
           error.name() == QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner") ||
           error.name().startsWith(QLatin1String("org.freedesktop.DBus.Error.Spawn."));
}

bool meansSilence(const QDBusError& error) {
    return error.type() == QDBusError::NoReply || error.type() == QDBusError::TimedOut ||
           error.type() == QDBusError::Timeout || error.type() == QDBusError::Disconnected;
}

bool meansRefusal(const QDBusError& error) {
    return error.type() == QDBusError::AccessDenied ||
           error.name() == QLatin1String("org.freedesktop.portal.Error.NotAllowed");
}

} // namespace

PortalClient::PortalClient(const QDBusConnection& bus, PortalPurpose purpose)
    : bus_(bus)
    , purpose_(std::move(purpose)) {
    auto* watcher = new QDBusServiceWatcher(portalServiceName, bus_, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString&, const QString& before, const QString&) { ownerChanged(before); });
}

void PortalClient::find(Found found) {
    if (!bus_.isConnected()) { // calls would never be answered, not even with an error
        QMetaObject::invokeMethod(
            this,
            [this, found = std::move(found)] {
                found(because(QStringLiteral("because this session has no message bus (D-Bus).")));
            },
            Qt::QueuedConnection);
        return;
    }
    // Asking for all of an interface's properties tells at once whether there is a portal, and whether it has it.
    QDBusMessage question = QDBusMessage::createMethodCall(
        portalServiceName, portalPath, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("GetAll"));
    question << purpose_.interface;
    whenReplied(bus_.asyncCall(question), this,
                [this, found = std::move(found)](const QDBusPendingReply<QVariantMap>& reply) {
                    if (reply.isError())
                        return found(errorOfFinding(reply.error()));
                    owner_ = reply.reply().service();
                    properties_ = reply.value();
                    found(std::nullopt);
                });
}

QString PortalClient::expectedPath(const QString& kind, const QString& token) const {
    QString sender = bus_.baseService().mid(1);
    sender.replace(QLatin1Char('.'), QLatin1Char('_'));
    return QStringLiteral("%1/%2/%3/%4").arg(portalPath, kind, sender, token);
}

QDBusMessage PortalClient::callOf(const QString& method, const QVariantList& arguments) const {
    QDBusMessage call = callOn(portalPath, purpose_.interface, method);
    call.setArguments(arguments);
    return call;
}

QDBusMessage PortalClient::callOn(const QString& path, const QString& interface, const QString& method) const {
    return QDBusMessage::createMethodCall(owner_, path, interface, method);
}

void PortalClient::ownerChanged(const QString& before) {
    if (!owner_.isEmpty() && before == owner_)
        Q_EMIT vanished();
}

Error PortalClient::vanishedError() const {
    return because(QStringLiteral("because the desktop's portal ended in the meantime. Try again."));
}

Error PortalClient::silentError() const {
    return because(QStringLiteral("because the desktop's portal does not answer. Try again; if that does not help, log "
                                  "out and in again."));
}

Error PortalClient::refusedError(const QString& detail) const {
    return because(QStringLiteral("because the desktop refused it. See whether its privacy settings forbid it, and "
                                  "whether the back-end of xdg-desktop-portal for your desktop works, and try again."),
                   detail);
}

Error PortalClient::errorOf(const QDBusError& error) const {
    if (meansNoPortal(error)) // it was there before
        return vanishedError();
    if (meansSilence(error))
        return silentError();
    if (meansRefusal(error))
        return refusedError(error.message());
    return because(QStringLiteral("because the desktop's portal reports an error. Try again; if that does not help, "
                                  "update xdg-desktop-portal and the back-end for your desktop."),
                   error.message());
}

Error PortalClient::errorOfFinding(const QDBusError& error) const {
    if (meansNoPortal(error)) {
        return because(QStringLiteral("because this desktop has no portal, which hands out %1. Install "
                                      "xdg-desktop-portal and the back-end for your desktop, and log in again.")
                           .arg(purpose_.gift));
    }
    if (meansSilence(error))
        return silentError();
    return because(QStringLiteral("because the portal of this desktop does not hand out %1. Install "
                                  "xdg-desktop-portal and the back-end for your desktop, and log in again.")
                       .arg(purpose_.gift),
                   error.message());
}

Error PortalClient::because(const QString& sentence, const QString& detail) const {
    QString reason = purpose_.failure + QStringLiteral(", ") + sentence;
    if (!detail.isEmpty())
        reason += QStringLiteral(" Details: ") + detail;
    return Error(URLErrorCode::unknown, {{errorKey::reason, reason}});
}

} // namespace quenby
