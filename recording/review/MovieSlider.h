// A slim slider: a thin bar that is filled up to its knob. A press puts the knob where it was made.
//
// Threads: the main thread.
#pragma once

#include <QSlider>

namespace quenby {

class MovieSlider final : public QSlider {
    Q_OBJECT

public:
    explicit MovieSlider(QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void sliderChange(SliderChange change) override;

private:
    bool isMirrored() const;
    int knobPlace() const; // the middle of the knob, in pixels from the left
    int valueAt(int place) const;

    int paintedPlace_ = -1;
};

} // namespace quenby
