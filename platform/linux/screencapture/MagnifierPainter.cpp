#include "platform/linux/screencapture/CapturePainter.h"

#include <QPainter>

#include <algorithm>

namespace quenby {
namespace {

const QColor crosshair(64, 140, 255, 110);
constexpr QRgb noPixel = qRgb(40, 42, 46); // beyond the desktop

// Each pixel around the pointer's as a square of its own colour.
void paintPixels(QPainter& painter, const CaptureMagnifier& magnifier, const QImage& picture, const QRect& place) {
    constexpr int reach = CaptureScene::magnifiedReach;
    const QRect around(magnifier.pixel - QPoint(reach, reach), QSize(2 * reach + 1, 2 * reach + 1));
    painter.fillRect(place, QColor::fromRgb(noPixel));
    const QRect there = around & picture.rect();
    const QRect target(place.topLeft() + (there.topLeft() - around.topLeft()) * magnifier.cell,
                       there.size() * magnifier.cell);
    painter.drawImage(target, picture, there);
}

// Through the middle, but not over the pixel itself, which gets two lines around it.
void paintCrosshair(QPainter& painter, const QRect& place, int cell) {
    const QPoint middle = place.topLeft() + QPoint(1, 1) * (CaptureScene::magnifiedReach * cell);
    const QRect own(middle, QSize(cell, cell));
    const QRect row(place.left(), own.top(), place.width(), cell);
    const QRect column(own.left(), place.top(), cell, place.height());
    for (const QRect& arm : (QRegion(row) | QRegion(column)) - own)
        painter.fillRect(arm, crosshair);
    const int line = std::max(1, cell / 7);
    const QRect inner = own.marginsAdded(QMargins(line, line, line, line));
    const QRect outer = inner.marginsAdded(QMargins(line, line, line, line));
    for (const QRect& side : QRegion(outer) - inner)
        painter.fillRect(side, Qt::black);
    for (const QRect& side : QRegion(inner) - own)
        painter.fillRect(side, Qt::white);
}

} // namespace

void paintMagnifier(QPainter& painter, const CaptureMagnifier& magnifier, const QImage& picture) {
    const int side = (2 * CaptureScene::magnifiedReach + 1) * magnifier.cell;
    const QRect inner =
        magnifier.frame.marginsRemoved(QMargins(magnifier.edge, magnifier.edge, magnifier.edge, magnifier.edge));
    const QRect pixels(inner.topLeft(), QSize(side, side));
    const QRect text(inner.left(), pixels.bottom() + 1, side, inner.bottom() - pixels.bottom());
    const int line = magnifier.edge - magnifier.edge / 2;
    painter.fillRect(magnifier.frame, Qt::black);
    painter.fillRect(magnifier.frame.marginsRemoved(QMargins(line, line, line, line)), Qt::white);
    paintPixels(painter, magnifier, picture, pixels);
    paintCrosshair(painter, pixels, magnifier.cell);
    painter.fillRect(text, QColor::fromRgba(capturePlateColor | 0xff000000));
    painter.setFont(captureFont(magnifier.textHeight));
    painter.setPen(Qt::white);
    painter.drawText(text, Qt::AlignCenter | Qt::TextSingleLine,
                     QStringLiteral("%1, %2").arg(magnifier.pixel.x()).arg(magnifier.pixel.y()));
}

} // namespace quenby
