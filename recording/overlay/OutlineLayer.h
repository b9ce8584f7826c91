// The dashed outline of the selection, whose dashes walk round it while it is shown. Threads: the main thread.
#pragma once

#include "recording/overlay/DashTile.h"

#include <QObject>
#include <QRect>
#include <QRegion>
#include <QVariantAnimation>

class QPainter;

namespace quenby {

class OutlineLayer final : public QObject {
    Q_OBJECT

public:
    explicit OutlineLayer(QObject* parent);

    // In pixels of the view, of which there are so many a point.
    void setPath(const QRect& path, qreal devicePixelRatio);
    void drawRect(QPainter& painter) const;

    // Dashes walk only from start() to stop(); both may be called again.
    void start();
    void stop();

Q_SIGNALS:
    // The dashes have walked on by a pixel; all that looks different is within this thin frame, in the view's points.
    void walked(const QRegion& frame);

private:
    void walk(const QVariant& lineDashPhase);

    QRect path_;
    DashTile tile_{1};
    int lineDashPhase_ = 0; // pixels
    QVariantAnimation linePhase_{this};
};

// What lies within so many points of the rectangle's edges.
QRegion frameAround(const QRectF& rectangle, qreal distance);

} // namespace quenby
