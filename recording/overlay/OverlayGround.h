// What the overlay shows of the screen: dimmed, and clear within the selection. Where windows are translucent the
// screen shines through; elsewhere a picture of it is shown, taken before the overlay came. Threads: the main thread.
#pragma once

#include <QImage>
#include <QRect>
#include <QRegion>

class QPainter;

namespace quenby {

class OverlayGround {
public:
    // What the view covers, in pixels from its upper left; null where windows are translucent.
    void setPicture(const QImage& picture) { source_ = picture_ = picture; }
    bool isTranslucent() const { return picture_.isNull(); }

    // So many pixels the view has. They are other than the picture's only while a screen changes.
    void fitPicture(const QSize& pixels);

    // The region in points of the view, the hole in pixels.
    void drawRect(QPainter& painter, const QRegion& region, const QRect& hole) const;

private:
    QImage source_;
    QImage picture_; // as the window's own store, so that painting is copying
};

} // namespace quenby
