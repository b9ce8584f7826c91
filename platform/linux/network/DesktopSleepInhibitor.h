// Keeps the computer awake by the first service that agrees: the login manager, the session's power manager, the
// portal. A service that ends takes what it held along; then all of them are asked again.
//
// Threads: the main thread; nothing waits. A hold that ends before its answer came is given back when it comes; when
// this is gone by then as well, the services see to it at the end of the program.
#pragma once

#include "platform/SleepInhibitor.h"

#include <QDBusConnection>

namespace quenby {

class DesktopSleepInhibitor final : public SleepInhibitor {
public:
    explicit DesktopSleepInhibitor(const QDBusConnection& systemBus = QDBusConnection::systemBus(),
                                   const QDBusConnection& sessionBus = QDBusConnection::sessionBus());
    ~DesktopSleepInhibitor() override;

    std::unique_ptr<Hold> hold(const QString& reason) override;
    // Known once a hold was refused by all of them.
    QString unavailableBecause() const override;

private:
    struct Roads;
    class RoadHold;

    std::shared_ptr<Roads> roads_; // shared with the holds
};

} // namespace quenby
