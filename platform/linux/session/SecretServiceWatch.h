// Notices when the Secret Service comes, goes, and is unlocked, by what the bus tells; it never asks by itself.
// Threads: the main thread.
#pragma once

#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QVariantMap>

namespace quenby {

class SecretServiceWatch final : public QObject {
    Q_OBJECT

public:
    explicit SecretServiceWatch(const QDBusConnection& bus, QObject* parent = nullptr);

    // Somebody waits for an unlock: services that only say that a collection has changed are asked then.
    void setWaitingForUnlock(bool isWaiting) { isWaitingForUnlock_ = isWaiting; }

Q_SIGNALS:
    void came();
    void went();
    void unlocked();

private Q_SLOTS:
    void propertiesChanged(const QString& interface, const QVariantMap& values, const QStringList& invalidated);
    void collectionChanged(const QDBusObjectPath& collection);

private:
    QDBusConnection bus_;
    QDBusServiceWatcher owner_;
    bool isWaitingForUnlock_ = false;
};

} // namespace quenby
