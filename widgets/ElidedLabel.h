// Plain text that is never cut without a sign: in one line, what does not fit ends in an ellipsis and is told whole in
// a tool tip. It stands at the side where the window's lines begin, whatever language the text itself is in.
#pragma once

#include <QLabel>

namespace quenby {

class ElidedLabel : public QLabel {
    Q_OBJECT

public:
    explicit ElidedLabel(QWidget* parent = nullptr);

    QSize minimumSizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void alignToDirection();
    bool isCut() const;
};

} // namespace quenby
