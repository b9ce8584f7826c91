// The list of the upload queue. Rows that wait can be dragged to another place; nothing is moved here: whoever owns
// the rows does it. The keyboard moves them by commands of the window.
//
// Threads: the main thread.
#pragma once

#include <QBasicTimer>
#include <QListView>

#include <optional>

namespace quenby {

class QueueList final : public QListView {
    Q_OBJECT

public:
    explicit QueueList(QWidget* parent = nullptr);

Q_SIGNALS:
    // The chosen rows that can be dragged are to stand before the one that stands here now, or after the last one.
    void rowsDropped(int before);
    // Escape, when it is of no use here.
    void escapePressed();

protected:
    void dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight, const QList<int>& roles) override;
    void startDrag(Qt::DropActions actions) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    bool isDragging() const { return gap_.has_value(); }
    int gapAt(const QPoint& place) const;
    int gapLine(int gap) const;
    void setGap(std::optional<int> gap);
    void updateGap(std::optional<int> gap);
    void endDrag();
    int scrollStep() const;

    std::optional<int> gap_; // while rows are dragged: the row before which they would go
    QPoint pointer_;         // in the viewport
    QBasicTimer scrolling_;
};

} // namespace quenby
