// The window of the strip: a face on a bar, at the top edge of the primary screen, near its right end, or to the left
// of another strip. It takes the pointer and files, never the keyboard. It paints only when it is told to, or
// uncovered.
#pragma once

#include "platform/StatusItemHost.h"

#include <QWidget>

#include <functional>

namespace quenby {

class StripWindow final : public QWidget {
    Q_OBJECT

public:
    // Where the other strip is; it may answer with an empty place when there is none.
    using Neighbour = std::function<QRect()>;

    explicit StripWindow(const StatusItemFace& face, Neighbour neighbour = {});
    ~StripWindow() override;

    // Takes the face's size and texts, and paints it again.
    void renew();

Q_SIGNALS:
    void clicked();
    void middleClicked();
    void menuRequested(const QPoint& position);
    void dragEntered();
    void dragEnded();
    void dropped(const QList<QByteArray>& paths);

protected:
    void paintEvent(QPaintEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void place();
    void insistOnPlace();
    void watchScreen(QScreen* screen);
    void endDrag();

    const StatusItemFace& face_;
    const Neighbour neighbour_;
    QRect wanted_;
    int corrections_ = 0; // since the place was last chosen
    bool isDraggedOver_ = false;
};

} // namespace quenby
