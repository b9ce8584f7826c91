// Two views beside each other where there is room for both, and else one below the other.
//
// Threads: the main thread.
#pragma once

#include <QWidget>

class QBoxLayout;

namespace quenby {

class WrappingPair final : public QWidget {
    Q_OBJECT

public:
    // Takes both over.
    WrappingPair(QWidget* first, QWidget* second, QWidget* parent = nullptr);

    // Of one below the other, whichever way they stand now: else it could not be made narrower again.
    QSize minimumSizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void fit();

    QWidget* first_;
    QWidget* second_;
    QBoxLayout* layout_;
};

} // namespace quenby
