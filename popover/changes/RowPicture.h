// The picture at the beginning of a row, in its frame. Logical pixels.
#pragma once

#include <QPixmap>
#include <QRect>

class QColor;
class QImage;
class QPainter;

namespace quenby {

// As large as fits into the room, in proportion. A picture of almost the room's shape fills it and loses a little of
// two of its edges: slits beside it would look like a mistake. Null when there is no picture.
QPixmap fittedPicture(const QImage& picture, QSize room, qreal devicePixelRatio);
// Stands for files whose names nobody knows: the desktop's own sign, where it has one.
QPixmap cautionPicture(QSize room, qreal devicePixelRatio);

// Stands for a picture that is not there: a sheet with a folded corner.
void paintSheet(QPainter& painter, const QRectF& frame, const QColor& colour);
void paintPictureBorder(QPainter& painter, const QRectF& frame, const QColor& colour);

} // namespace quenby
