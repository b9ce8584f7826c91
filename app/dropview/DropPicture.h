// The picture of the place to drop files on: an arrow into a tray, a dashed frame around it and a line of text.
// Painted, so that it is sharp at every scale and fits light and dark desktops.
#pragma once

#include <QColor>
#include <QFont>
#include <QRectF>
#include <QString>

class QPainter;

namespace quenby {

struct DropPicture {
    QColor ink;    // arrow and text
    QColor accent; // the frame
    QString caption;
    QFont font;
};

// Where there is little room, such as in a button's place, the caption is left out and the arrow is smaller.
void paintDropPicture(QPainter& painter, const QRectF& rect, const DropPicture& picture);

} // namespace quenby
