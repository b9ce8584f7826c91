#include "oauth2/window/HostLine.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace quenby {
namespace {

constexpr qreal lockWidth = 9;
constexpr qreal lockHeight = 12;
constexpr qreal gap = 6;
constexpr float strength = 0.72F; // of the text's colour

// Painted, because not every desktop has a font or an icon with one.
void paintLock(QPainter& painter, const QPointF& corner, const QColor& colour) {
    const QRectF body(corner.x(), corner.y() + 5, lockWidth, lockHeight - 5);
    QPainterPath shackle(QPointF(corner.x() + 2, body.top()));
    shackle.lineTo(corner.x() + 2, corner.y() + 3.5);
    shackle.arcTo(QRectF(corner.x() + 2, corner.y() + 1, lockWidth - 4, 5), 180, -180);
    shackle.lineTo(corner.x() + lockWidth - 2, body.top());
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(colour, 1.5));
    painter.drawPath(shackle);
    painter.setPen(Qt::NoPen);
    painter.setBrush(colour);
    painter.drawRoundedRect(body, 1.5, 1.5);
}

} // namespace

HostLine::HostLine(QWidget* parent)
    : QWidget(parent) {
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
}

void HostLine::setHost(const QString& host, bool isSecure) {
    host_ = host;
    isSecure_ = isSecure;
    setToolTip(host);
    setAccessibleName(host.isEmpty() ? QString()
                      : isSecure     ? tr("Secure page of %1").arg(host)
                                     : tr("Page of %1").arg(host));
    update();
}

QSize HostLine::sizeHint() const { return {0, std::max(fontMetrics().height(), int(lockHeight))}; }

void HostLine::paintEvent(QPaintEvent*) {
    if (host_.isEmpty())
        return;
    QColor colour = palette().color(QPalette::WindowText);
    colour.setAlphaF(strength);
    QPainter painter(this);
    const qreal lock = isSecure_ ? lockWidth + gap : 0;
    // The end of a host's name says whose it is.
    const QString text = fontMetrics().elidedText(host_, Qt::ElideLeft, int(width() - lock));
    const qreal left = (width() - lock - fontMetrics().horizontalAdvance(text)) / 2;
    if (isSecure_)
        paintLock(painter, QPointF(left, (height() - lockHeight) / 2), colour);
    painter.setPen(colour);
    painter.setLayoutDirection(Qt::LeftToRight); // as hosts are written everywhere
    painter.drawText(QRectF(left + lock, 0, width() - left - lock, height()),
                     Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, text);
}

} // namespace quenby
