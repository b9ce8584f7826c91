// The status item in the desktop's tray, by StatusNotifierItem or XEmbed: the gauge as the icon, the text as tool tip.
//
// The toolkit decides once in a process, with the first of these, which of the two it speaks: make the first one only
// when a tray is known to be there.
#pragma once

#include "platform/StatusItemHost.h"
#include "platform/linux/desktop/TrayMenuCopy.h"
#include "platform/linux/desktop/TrayWatch.h"

#include <QImage>
#include <QSystemTrayIcon>

#include <memory>

namespace quenby {

class TrayHost final : public StatusItemHost {
    Q_OBJECT

public:
    explicit TrayHost(TrayKind kind);
    ~TrayHost() override;

    StatusItemPlace place() const override { return StatusItemPlace::tray; }
    QString protocol() const override;
    void show(const StatusItemFace& face, QMenu& menu) override;
    // What looks as before is not sent again: a change is a signal on the bus, and makes the panel ask for all
    // pictures.
    void update() override;
    QRect geometry() const override;

protected:
    // The application's palette.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void take(QSystemTrayIcon::ActivationReason reason);

    const TrayKind kind_;
    const StatusItemFace* face_ = nullptr;
    QImage picture_;                         // as it was last given to the tray
    std::unique_ptr<TrayMenuCopy> menuCopy_; // what goes over the bus
    QSystemTrayIcon icon_;
};

} // namespace quenby
