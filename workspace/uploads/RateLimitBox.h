// How fast all uploads together may be: the usual choices, and a number for whoever wants another one.
//
// Threads: the main thread.
#pragma once

#include <QWidget>

class QComboBox;
class QSpinBox;

namespace quenby {

class RateLimitBox final : public QWidget {
    Q_OBJECT

public:
    explicit RateLimitBox(QWidget* parent = nullptr);

    // Bytes per second; 0: no limit. Not told back.
    void setLimit(qint64 bytesPerSecond);

Q_SIGNALS:
    void limitRequested(qint64 bytesPerSecond);

private:
    void chosen(int choice);
    void request(qint64 bytesPerSecond);

    QComboBox* choices_;
    QSpinBox* other_; // shown for a limit that is not among the choices
    qint64 limit_ = 0;
};

} // namespace quenby
