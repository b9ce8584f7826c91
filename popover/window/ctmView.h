// The popover's grip: dragged, it makes its window higher or lower between the limits of PopoverHeight.h. The edge at
// the status item stays where it is, and each new height is kept in the settings.
#pragma once

#include <QPointF>
#include <QRect>
#include <QWidget>

namespace quenby {

class CustomWindow;
class Defaults;

class ctmView final : public QWidget {
    Q_OBJECT

public:
    // Both outlive it.
    ctmView(CustomWindow& window, Defaults& defaults);

    // The window's edge that moves: the bottom one at first, or the top one. The grip does not place itself.
    void setMovingEdge(Qt::Edge edge) { movingEdge_ = edge; }

    QSize sizeHint() const override;

protected:
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void setWindowHeight(int height);
    void showWays();

    CustomWindow& window_;
    Defaults& defaults_;
    Qt::Edge movingEdge_ = Qt::BottomEdge;
    bool isDragged_ = false;
    QPointF startPoint_; // of the drag, on the desktop
    QRect startFrame_;   // of the window
};

} // namespace quenby
