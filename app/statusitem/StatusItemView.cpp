#include "app/statusitem/StatusItemView.h"

#include "app/dropview/DroppedFiles.h"
#include "app/statusitem/StatusItemSizing.h"

#include <QPainter>
#include <QPixmap>

namespace quenby {

StatusItemView::StatusItemView(QIcon applicationIcon)
    : applicationIcon_(std::move(applicationIcon)) {}

QImage StatusItemView::image() const {
    const QSize side(statusItemHeight, statusItemHeight);
    if (!drawn_)
        return applicationIcon_.pixmap(side, 1.0).toImage();
    QImage gauge(side, QImage::Format_ARGB32_Premultiplied);
    gauge.fill(Qt::transparent);
    QPainter painter(&gauge);
    GaugePainter::paintGauge(painter, gauge.rect(), drawn_->colour, drawn_->percent);
    return gauge;
}

QSize StatusItemView::size() const { return {qCeil(look_.width), statusItemHeight}; }

void StatusItemView::paint(QPainter& painter, const QRect& rect, bool isDarkSurrounding) const {
    noteDrawn(isDarkSurrounding);
    painter_.paint(painter, rect, look_, isDarkSurrounding);
}

void StatusItemView::paintIcon(QPainter& painter, const QRect& square, bool isDarkSurrounding) const {
    noteDrawn(isDarkSurrounding);
    painter_.paintIcon(painter, square, look_, isDarkSurrounding);
}

void StatusItemView::noteDrawn(bool isDarkSurrounding) const {
    drawn_ = DrawnGauge{GaugePainter::ink(look_, isDarkSurrounding), look_.displaysize};
}

QString StatusItemView::title() const {
    const QString name = QStringLiteral("Quenby");
    return look_.strsize.isEmpty() ? name : QString(name + QStringLiteral(": ") + look_.strsize);
}

bool StatusItemView::acceptsFiles(const QList<QByteArray>& paths) const { return holdsRegularFile(paths); }

} // namespace quenby
