// A sentence about the page below it, and what can be done about it. It takes no keyboard: the page keeps it.
#pragma once

#include <QWidget>

class QHBoxLayout;
class QToolButton;

namespace quenby {

class ElidedLabel;

// Threads: the main thread.
class NoticeBar final : public QWidget {
    Q_OBJECT

public:
    explicit NoticeBar(const QString& text, QWidget* parent = nullptr);

    // Pressing it hides the bar, and then calls the function.
    void addButton(const QString& text, std::function<void()> pressed);
    // Whether it can be closed without an answer; it can at first.
    void setClosable(bool isClosable);
    // Shows it, and has it read out.
    void tell();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    ElidedLabel* text_;
    QHBoxLayout* buttons_;
    QToolButton* close_;
};

} // namespace quenby
