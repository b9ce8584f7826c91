#include "platform/linux/screencapture/CapturePainter.h"

#include <QPainter>

namespace quenby {
namespace {

const QColor shade(0, 0, 0, 84);       // over what is not chosen
const QColor tint(64, 140, 255, 70);   // over what a click would take
const QColor innerLine(255, 255, 255); // two lines are seen on any ground
const QColor outerLine(0, 0, 0, 170);
const QColor plateEdge(255, 255, 255, 56);

void paintFrame(QPainter& painter, const QRect& outer, int width, const QColor& color) {
    const QRect inner = outer.marginsRemoved(QMargins(width, width, width, width));
    for (const QRect& side : QRegion(outer) - inner)
        painter.fillRect(side, color);
}

void paintRectangle(QPainter& painter, const CaptureScene& scene, const QRect& part) {
    const QRect& rectangle = *scene.rectangle;
    const QMargins line(scene.line, scene.line, scene.line, scene.line);
    for (const QRect& dark : QRegion(part) - rectangle)
        painter.fillRect(dark, shade);
    if (scene.isTinted) {
        // Within its edges, which may be the screen's.
        painter.fillRect(rectangle, tint);
        paintFrame(painter, rectangle, scene.line, outerLine);
        paintFrame(painter, rectangle.marginsRemoved(line), scene.line, innerLine);
    } else {
        // Around it: what is chosen is seen to its last pixel.
        paintFrame(painter, rectangle.marginsAdded(line), scene.line, innerLine);
        paintFrame(painter, rectangle.marginsAdded(line + line), scene.line, outerLine);
    }
}

void paintLabel(QPainter& painter, const CaptureLabel& label) {
    painter.setRenderHint(QPainter::Antialiasing);
    const qreal radius = label.textHeight * 0.45;
    painter.setPen(QPen(plateEdge, 1));
    painter.setBrush(QColor::fromRgba(capturePlateColor));
    painter.drawRoundedRect(QRectF(label.plate).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
    painter.setFont(captureFont(label.textHeight));
    painter.setPen(Qt::white);
    painter.drawText(label.plate, Qt::AlignCenter | Qt::TextSingleLine, label.text);
}

// Smoothed edges and letters come out a little different where a painting ends within them. So they are painted whole,
// and a part of that is what is seen.
template <typename Paint>
void paintWhole(QPainter& painter, const QRect& place, const QRect& part, Paint paint) {
    if (!place.intersects(part))
        return;
    QImage image(place.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter own(&image);
    own.translate(-place.topLeft());
    paint(own);
    own.end();
    painter.drawImage(place.topLeft(), image);
}

} // namespace

QImage paintedScene(const CaptureScene& scene, const QImage& picture, const QRect& part) {
    QImage image(part.size(), QImage::Format_RGB32);
    QPainter painter(&image);
    painter.translate(-part.topLeft());
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.drawImage(part.topLeft(), picture, part);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    if (scene.rectangle)
        paintRectangle(painter, scene, part);
    else
        painter.fillRect(part, shade);
    const auto label = [&](const std::optional<CaptureLabel>& each) {
        if (each)
            paintWhole(painter, each->plate, part, [&](QPainter& own) { paintLabel(own, *each); });
    };
    label(scene.hint);
    if (scene.magnifier)
        paintWhole(painter, scene.magnifier->frame, part,
                   [&](QPainter& own) { paintMagnifier(own, *scene.magnifier, picture); });
    label(scene.readout);
    return image;
}

} // namespace quenby
