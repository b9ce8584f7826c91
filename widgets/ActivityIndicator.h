// A turning wheel: something is under way. It turns only while it can be seen.
#pragma once

#include <QBasicTimer>
#include <QWidget>

namespace quenby {

class ActivityIndicator : public QWidget {
    Q_OBJECT

public:
    explicit ActivityIndicator(QWidget* parent = nullptr);

    // Logical pixels across; the wheel stands in the middle of whatever room it has. 16 at first.
    void setDiameter(int diameter);
    bool isAnimating() const { return timer_.isActive(); }

    QSize sizeHint() const override { return {diameter_, diameter_}; }

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QBasicTimer timer_;
    int diameter_ = 16;
    int step_ = 0;
};

} // namespace quenby
