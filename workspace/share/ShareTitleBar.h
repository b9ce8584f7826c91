// The strip at the top of a share window, in place of the frame that a borderless window lacks: the file's name, a
// handle to move the window by, and a button to close it.
#pragma once

#include <QWidget>

class QToolButton;

namespace quenby {

// Threads: the main thread.
class ShareTitleBar final : public QWidget {
    Q_OBJECT

public:
    explicit ShareTitleBar(QWidget* parent = nullptr);

Q_SIGNALS:
    void closeRequested();

protected:
    void changeEvent(QEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    void paintCross();

    QToolButton* close_;
};

} // namespace quenby
