// Watches for a tray by StatusNotifierItem: somebody has the name org.kde.StatusNotifierWatcher on the session bus, and
// says that a panel shows the items that are registered with it.
#pragma once

#include "platform/linux/desktop/BusService.h"
#include "platform/linux/desktop/TrayWatch.h"

namespace quenby {

class NotifierTrayWatch final : public TrayWatch {
    Q_OBJECT

public:
    explicit NotifierTrayWatch(const QDBusConnection& bus = QDBusConnection::sessionBus());
    ~NotifierTrayWatch() override;

    TrayKind kind() const override { return TrayKind::statusNotifier; }

private Q_SLOTS:
    void ask();

private:
    void forgetWatcher();

    QDBusConnection bus_;
    BusService service_;
    quint64 lastQuestion_ = 0; // only the last question's answer counts
};

} // namespace quenby
