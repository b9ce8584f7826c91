#include "platform/linux/media/engine/player/MovieView.h"

#include <QEvent>
#include <QPainter>

namespace quenby {

MovieView::MovieView(QWidget* parent)
    : QWidget(parent) {
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void MovieView::setPicture(const MoviePicture& picture) {
    picture_ = picture;
    update();
}

void MovieView::clear() {
    picture_ = {};
    update();
}

QSize MovieView::sizeHint() const { return {640, 400}; }

QSize MovieView::room() const { return (QSizeF(size()) * devicePixelRatioF()).toSize(); }

void MovieView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    Q_EMIT roomChanged(room());
}

// Only a window that is shown knows how many pixels its screen has.
bool MovieView::event(QEvent* event) {
    const bool isHandled = QWidget::event(event);
    if (event->type() == QEvent::Show || event->type() == QEvent::ScreenChangeInternal)
        Q_EMIT roomChanged(room());
    return isHandled;
}

void MovieView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), Qt::black);
    if (picture_.image.isNull())
        return;
    QRect place(QPoint(), fittedSize(picture_.displaySize, room()));
    place.moveCenter(QRect(QPoint(), room()).center());
    // A picture that waits while the window changes its size.
    if (picture_.fitted.size() != place.size())
        picture_.fitted = fittedImage(picture_.image, place.size());
    painter.scale(1 / devicePixelRatioF(), 1 / devicePixelRatioF());
    if (!picture_.fitted.isNull())
        return painter.drawImage(place.topLeft(), picture_.fitted);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, place.size() != picture_.image.size());
    painter.drawImage(place, picture_.image);
}

} // namespace quenby
