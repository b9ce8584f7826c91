// One interface of the desktop's portal, org.freedesktop.portal.Desktop: whether it is there, what it offers, and the
// sentences that say what is wrong with it.
//
// Threads: the main thread; nothing here blocks. All calls go to the very process that was found: one that takes its
// place knows nothing of what was asked before.
#pragma once

#include "core/Error.h"

#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QObject>
#include <QVariantMap>

#include <functional>

namespace quenby {

// What the portal is wanted for.
struct PortalPurpose {
    QString interface; // "org.freedesktop.portal.ScreenCast"
    QString failure;   // how a sentence about its failure begins: "The screen cannot be recorded"
    QString gift = QStringLiteral("its screen"); // what such a portal hands out
};

// The portal's name on the bus.
inline const QString portalServiceName = QStringLiteral("org.freedesktop.portal.Desktop");

class PortalClient final : public QObject {
    Q_OBJECT

public:
    using Found = std::function<void(const MaybeError& trouble)>;

    PortalClient(const QDBusConnection& bus, PortalPurpose purpose);

    // Once. Lets the bus start the portal when it does not run yet.
    void find(Found found);

    // What follows is good after it was found.
    const QDBusConnection& bus() const { return bus_; }
    // The process, by the bus's own name for it.
    const QString& owner() const { return owner_; }
    const PortalPurpose& purpose() const { return purpose_; }
    uint number(const QString& property) const { return properties_.value(property).toUInt(); }
    uint version() const { return number(QStringLiteral("version")); }

    // The object of a kind ("request", "session") that the portal makes for us under our token. Old portals take
    // others.
    QString expectedPath(const QString& kind, const QString& token) const;
    QDBusMessage callOf(const QString& method, const QVariantList& arguments) const;
    QDBusMessage callOn(const QString& path, const QString& interface, const QString& method) const;

    Error vanishedError() const;
    Error silentError() const;
    Error refusedError(const QString& detail = {}) const;
    // What an answer to a call means.
    Error errorOf(const QDBusError& error) const;
    // "The screen cannot be recorded, because ...": the sentence goes on from there.
    Error because(const QString& sentence, const QString& detail = {}) const;

Q_SIGNALS:
    // The process is gone, and with it everything that it was asked for.
    void vanished();

private:
    Error errorOfFinding(const QDBusError& error) const;
    void ownerChanged(const QString& before);

    QDBusConnection bus_;
    const PortalPurpose purpose_;
    QString owner_;
    QVariantMap properties_;
};

} // namespace quenby
