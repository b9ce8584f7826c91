// Why the uploads rest by themselves, and the way past it. It takes no room while they don't.
//
// Threads: the main thread.
#pragma once

#include <QWidget>

class QLabel;
class QPushButton;

namespace quenby {

class RestBar final : public QWidget {
    Q_OBJECT

public:
    explicit RestBar(QWidget* parent = nullptr);

    // Plain text; it is read out when it is new. Empty: they don't rest.
    void tell(const QString& sentence);

Q_SIGNALS:
    void uploadAnywayRequested();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QLabel* text_;
    QPushButton* anyway_;
};

} // namespace quenby
