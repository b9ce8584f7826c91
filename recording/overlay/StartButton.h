// The button that starts the recording of the selection, with the rounded box around it. Its size is given; the text
// becomes smaller where it does not fit. Threads: the main thread.
#pragma once

#include <QAbstractButton>

namespace quenby {

class StartButton final : public QAbstractButton {
    Q_OBJECT

public:
    explicit StartButton(QWidget* parent);

    // On the bright screen it has a dark ground, on the dimmed one none.
    void setOnBrightScreen(bool isOnBrightScreen);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    bool isOnBrightScreen_ = false;
};

} // namespace quenby
