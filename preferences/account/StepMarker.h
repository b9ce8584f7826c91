// A step's number in a circle, or in its place how the step went: told by shape as well as by colour.
#pragma once

#include "preferences/account/StepView.h"

namespace quenby {

class ActivityIndicator;

class StepMarker final : public QWidget {
    Q_OBJECT

public:
    StepMarker(int number, QWidget* parent);

    void setState(StepView::State state);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const int number_;
    StepView::State state_ = StepView::State::waiting;
    ActivityIndicator* wheel_;
};

} // namespace quenby
