// A sentence below a control: something is worth knowing, or wrong. It takes room only while there is something to
// tell.
//
// Threads: the main thread.
#pragma once

#include <QIcon>
#include <QWidget>

class QLabel;

namespace quenby {

class NoticeLine final : public QWidget {
    Q_OBJECT

public:
    enum class Kind { hint, trouble };

    // What is told is told about this control, to those who do not see where it stands.
    NoticeLine(Kind kind, QWidget* about, QWidget* parent);

    // Plain text; empty: nothing.
    void tell(const QString& sentence);
    QString text() const;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const QIcon sign_;
    QWidget* const about_;
    QLabel* const text_;
};

} // namespace quenby
