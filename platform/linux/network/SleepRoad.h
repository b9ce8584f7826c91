// One service of the desktop that can keep the computer awake, and how it is asked for that.
//
// Threads: the main thread; nothing here waits for the service.
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>

#include <functional>
#include <memory>
#include <vector>

namespace quenby {

class SleepRoad : public QObject {
    Q_OBJECT

public:
    // Destroying it tells the service that it is over.
    class Grip {
    public:
        virtual ~Grip() = default;
    };
    // Null when the service is not there or refused. Who does not keep the grip lets go of it.
    using Answered = std::function<void(std::unique_ptr<Grip> grip)>;

    SleepRoad(const QDBusConnection& bus, const QString& service);

    // Answered once, but not after the road's end.
    void ask(const QString& reason, Answered answered);
    bool hasBus() const { return bus_.isConnected(); }

Q_SIGNALS:
    void came();
    // All grips at the service are lost.
    void went();

protected:
    virtual QDBusMessage question(const QString& reason) const = 0;
    // Null when the reply is not what the service is known to answer.
    virtual std::unique_ptr<Grip> gripOf(const QDBusMessage& reply) const = 0;

    const QDBusConnection& bus() const { return bus_; }

private:
    QDBusConnection bus_;
};

// In the order in which they are worth asking: those first whose answer is certain.
std::vector<std::unique_ptr<SleepRoad>> makeSleepRoads(const QDBusConnection& systemBus,
                                                       const QDBusConnection& sessionBus);

} // namespace quenby
