// A thin line below which a page is loading: a piece of it runs along.
//
// Threads: the main thread. It costs nothing while it is hidden.
#pragma once

#include <QBasicTimer>
#include <QProgressBar>

namespace quenby {

class LoadingLine final : public QProgressBar {
    Q_OBJECT

public:
    explicit LoadingLine(QWidget* parent);

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
