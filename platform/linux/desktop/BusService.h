// Whether a service is on the session bus: running, or ready to be started by the bus.
//
// Threads: the main thread; asks asynchronously, and is told of changes by the bus.
#pragma once

#include <QDBusConnection>
#include <QObject>

class QDBusServiceWatcher;

namespace quenby {

class BusService final : public QObject {
    Q_OBJECT

public:
    enum class Presence { unknown, absent, startable, running };

    BusService(const QDBusConnection& bus, const QString& name);
    ~BusService() override;

    Presence presence() const { return presence_; }
    // Running, or worth a try.
    bool isThere() const { return presence_ != Presence::absent; }

Q_SIGNALS:
    // It began to run, which includes that another process took its place.
    void came();
    // What it showed or kept is gone with it.
    void went();

private:
    void ask();
    void askWhetherStartable();
    void setOwner(const QString& owner);

    QDBusConnection bus_;
    QString name_;
    QDBusServiceWatcher* watcher_; // a child
    Presence presence_ = Presence::unknown;
    bool wasTold_ = false; // by the bus, unasked
};

} // namespace quenby
