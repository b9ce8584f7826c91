#include "platform/linux/desktop/FaceIconEngine.h"

#include <QImage>
#include <QPainter>

namespace quenby {
namespace {

constexpr qreal rimOpacity = 0.75;

// Its shape in one colour.
QImage filled(QImage image, const QColor& colour) {
    QPainter painter(&image);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(image.rect(), colour);
    return image;
}

} // namespace

FaceIconEngine::FaceIconEngine(const StatusItemFace& face, bool isDarkSurrounding)
    : face_(face)
    , isDarkSurrounding_(isDarkSurrounding) {}

void FaceIconEngine::paint(QPainter* painter, const QRect& rect, QIcon::Mode, QIcon::State) {
    const int side = qMin(rect.width(), rect.height());
    QRect square(0, 0, side, side);
    square.moveCenter(rect.center());
    const qreal scale = painter->device()->devicePixelRatioF();
    const int rim = qMax(1, qRound(side * scale / 24));
    const QImage gauge = gaugeImage(qRound(side * scale), rim);
    const QImage silhouette = filled(gauge, isDarkSurrounding_ ? Qt::black : Qt::white);
    painter->save();
    painter->translate(square.topLeft());
    painter->scale(1 / scale, 1 / scale);
    painter->setOpacity(rimOpacity);
    for (const QPoint& step : {QPoint(-rim, 0), QPoint(rim, 0), QPoint(0, -rim), QPoint(0, rim)})
        painter->drawImage(step, silhouette);
    painter->setOpacity(1);
    painter->drawImage(0, 0, gauge);
    painter->restore();
}

QImage FaceIconEngine::gaugeImage(int side, int rim) const {
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    face_.paintIcon(painter, image.rect().adjusted(rim, rim, -rim, -rim), isDarkSurrounding_);
    return image;
}

QPixmap FaceIconEngine::pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) {
    QPixmap pixmap(size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    paint(&painter, QRect(QPoint(0, 0), size), mode, state);
    return pixmap;
}

QList<QSize> FaceIconEngine::availableSizes(QIcon::Mode, QIcon::State) {
    QList<QSize> sizes;
    for (const int side : {16, 22, 24, 32, 48, 64})
        sizes.append({side, side});
    return sizes;
}

QIconEngine* FaceIconEngine::clone() const { return new FaceIconEngine(face_, isDarkSurrounding_); }

} // namespace quenby
