#include "preferences/account/AccountFace.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace quenby {
namespace {

constexpr int side = 64; // logical pixels
constexpr float groundStrength = 0.13F;
constexpr float faceStrength = 0.45F;

QColor faded(QColor colour, float strength) {
    colour.setAlphaF(strength);
    return colour;
}

// Its middle, as large as the circle on the screen.
QImage cut(const QImage& picture, int pixels) {
    const int shorter = std::min(picture.width(), picture.height());
    const QRect middle((picture.width() - shorter) / 2, (picture.height() - shorter) / 2, shorter, shorter);
    return picture.copy(middle).scaled(pixels, pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

} // namespace

AccountFace::AccountFace(QWidget* parent)
    : QWidget(parent) {
    setFixedSize(sizeHint());
}

void AccountFace::setPicture(const QImage& picture) {
    if (picture == picture_)
        return;
    picture_ = picture;
    update();
}

QSize AccountFace::sizeHint() const { return {side, side}; }

void AccountFace::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const QRectF circle(rect());
    if (!picture_.isNull()) {
        const qreal density = devicePixelRatioF();
        QBrush brush(cut(picture_, qRound(side * density)));
        brush.setTransform(QTransform::fromScale(1 / density, 1 / density));
        painter.setBrush(brush);
        painter.drawEllipse(circle);
        return;
    }
    const QColor text = palette().color(QPalette::WindowText);
    painter.setBrush(faded(text, groundStrength));
    painter.drawEllipse(circle);
    QPainterPath head;
    head.addEllipse(QPointF(side * 0.5, side * 0.39), side * 0.17, side * 0.19);
    QPainterPath shoulders;
    shoulders.addEllipse(QPointF(side * 0.5, side * 0.98), side * 0.34, side * 0.33);
    QPainterPath room;
    room.addEllipse(circle);
    painter.setBrush(faded(text, faceStrength));
    painter.drawPath(head.united(shoulders.intersected(room)));
}

} // namespace quenby
