// A turning wheel: something is under way. It turns only while it can be seen.
#pragma once

#include <QBasicTimer>
#include <QWidget>

namespace quenby {

class ActivityIndicator : public QWidget {
    Q_OBJECT

public:
    explicit ActivityIndicator(QWidget* parent = nullptr);

    QSize sizeHint() const override { return {16, 16}; }

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QBasicTimer timer_;
    int step_ = 0;
};

} // namespace quenby
