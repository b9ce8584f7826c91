// What stands in place of a page that is not there: what is the matter, and what can be done.
#pragma once

#include <QWidget>

class QLabel;
class QPushButton;

namespace quenby {

// Threads: the main thread.
class ProblemPane final : public QWidget {
    Q_OBJECT

public:
    explicit ProblemPane(QWidget* parent = nullptr);

    // Whether it offers to close what it stands in; it does at first.
    void setClosable(bool isClosable);
    // Both are plain texts. Takes the keyboard.
    void tell(const QString& heading, const QString& text, bool canTryAgain);

Q_SIGNALS:
    void tryAgainRequested();
    void closeRequested();

private:
    QLabel* heading_;
    QLabel* text_;
    QPushButton* tryAgain_;
    QPushButton* close_;
};

} // namespace quenby
