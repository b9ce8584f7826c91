// A spinning wheel in the middle of an empty area.
#pragma once

#include <QBasicTimer>
#include <QWidget>

namespace quenby {

// Threads: the main thread.
class ProgressIndicator final : public QWidget {
    Q_OBJECT

public:
    explicit ProgressIndicator(QWidget* parent = nullptr);

    void startAnimation();
    void stopAnimation();
    bool isAnimating() const { return turning_.isActive(); }

protected:
    void paintEvent(QPaintEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    QBasicTimer turning_;
    int step_ = 0;
};

} // namespace quenby
