// How a row looks: where its parts lie and what colours they have. Pure functions; logical pixels.
#pragma once

#include <QColor>
#include <QPalette>
#include <QRect>

namespace quenby {

constexpr int rowHeight = 65;

struct RowFrames {
    QRect title;
    QRect time;
    QRect picture;
    QRect sharePanel;
    QRect separator;
};

// Right to left, everything is mirrored.
RowFrames rowFrames(int width, Qt::LayoutDirection direction);

struct RowColours {
    QColor ground;
    QColor hover;
    QColor sharePanel; // lets a little of the text below through
    QColor title;
    QColor time;
    QColor symbol; // on the share panel
    QColor border; // of the picture
    QColor emptyPicture;
    QColor separator;
    QColor focus;
};

// Fixed on light desktops; on dark ones made of the desktop's own colours.
RowColours rowColours(const QPalette& palette);

} // namespace quenby
