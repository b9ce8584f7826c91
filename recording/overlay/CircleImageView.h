// One of the eight round handles of the selection, as it is painted. Threads: the main thread.
#pragma once

#include <QRectF>

class QPainter;

namespace quenby {

class CircleImageView {
public:
    void setTag(int tag) { tag_ = tag; } // 1 to 8
    int tag() const { return tag_; }

    // In the view's points, y downwards.
    void setFrame(const QRectF& frame) { frame_ = frame; }
    const QRectF& frame() const { return frame_; }

    void drawRect(QPainter& painter) const;

private:
    int tag_ = 0;
    QRectF frame_;
};

} // namespace quenby
