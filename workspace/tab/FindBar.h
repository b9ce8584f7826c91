// Search in a page. Return goes to the next place, Shift and Return to the one before; Escape closes.
#pragma once

#include <QWidget>

class QLabel;
class QLineEdit;
class QToolButton;

namespace quenby {

// Threads: the main thread.
class FindBar final : public QWidget {
    Q_OBJECT

public:
    explicit FindBar(QWidget* parent = nullptr);

    // Shows it, with the text of the last time marked, and takes the keyboard.
    void open();
    void close();
    // Which of how many places is marked; 0 of 0: there is none.
    void tellFound(int current, int total);
    // They were another page's.
    void forgetPlaces();

Q_SIGNALS:
    // Empty: nothing any more.
    void findRequested(const QString& text, bool isBackward);
    void closed();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void find(bool isBackward);
    void textChanged();

    QLineEdit* text_;
    QLabel* places_;
    QToolButton* previous_;
    QToolButton* next_;
    QToolButton* close_;
};

} // namespace quenby
