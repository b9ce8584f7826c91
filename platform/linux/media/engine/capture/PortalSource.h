// Pictures of a Wayland desktop: the user agrees in the desktop's own dialog, and PipeWire brings them.
#pragma once

#include "platform/linux/media/engine/capture/CaptureSource.h"
#include "platform/linux/portal/ScreenCastPortal.h"

#include <memory>
#include <optional>

namespace quenby {

class PortalSource final : public CaptureSource {
    Q_OBJECT

public:
    explicit PortalSource(std::shared_ptr<ScreenCastTokens> tokens,
                          const QDBusConnection& bus = QDBusConnection::sessionBus());
    ~PortalSource() override;

    void warmUp() override;
    void prepare(const CaptureInput& input) override;

private:
    void takeStream(const CaptureInput& input, const Result<std::optional<ScreenCastStream>>& stream);
    void watchScreen(const QString& name);

    const std::shared_ptr<ScreenCastTokens> tokens_;
    ScreenCastPortal portal_;
};

// Whether the stream shows another screen than the one that was meant: users may choose any of them in the dialog.
// With no evidence of it, it is the one.
bool isOtherScreen(const ScreenCastStream& stream, const Display& meant, const QList<QRect>& screens);

} // namespace quenby
