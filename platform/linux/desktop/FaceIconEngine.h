// The status item's gauge as an icon: painted anew by the face at every size that is asked for, so that it is sharp in
// panels of any height and on any display.
#pragma once

#include "platform/StatusItemHost.h"

#include <QIconEngine>

namespace quenby {

// Icons with this engine must not outlive the face.
class FaceIconEngine final : public QIconEngine {
public:
    FaceIconEngine(const StatusItemFace& face, bool isDarkSurrounding);

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override;
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override;
    // What is sent to a panel that takes its icon over the bus.
    QList<QSize> availableSizes(QIcon::Mode mode, QIcon::State state) override;
    QIconEngine* clone() const override;

private:
    // Within a margin for the rim, in the device's pixels.
    QImage gaugeImage(int side, int rim) const;

    const StatusItemFace& face_;
    bool isDarkSurrounding_;
};

} // namespace quenby
