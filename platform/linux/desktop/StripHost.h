// The status item as a strip of its own, for desktops without a tray. On Wayland the compositor decides where it
// stands.
#pragma once

#include "platform/StatusItemHost.h"
#include "platform/linux/desktop/StripWindow.h"

#include <memory>

namespace quenby {

class StripHost final : public StatusItemHost {
    Q_OBJECT

public:
    explicit StripHost(StripWindow::Neighbour neighbour = {});
    ~StripHost() override;

    StatusItemPlace place() const override { return StatusItemPlace::strip; }
    void show(const StatusItemFace& face, QMenu& menu) override;
    void update() override;
    QRect geometry() const override;

private:
    const StripWindow::Neighbour neighbour_;
    std::unique_ptr<StripWindow> window_;
};

} // namespace quenby
