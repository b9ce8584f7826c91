// How large the page is shown, in a corner of it for a moment.
#pragma once

#include "core/TimeSource.h"

#include <QLabel>

namespace quenby {

// Threads: the main thread.
class ZoomReadOut final : public QLabel {
    Q_OBJECT

public:
    ZoomReadOut(std::shared_ptr<TimeSource> timeSource, QWidget* parent);

    // In the upper corner of its parent, at the side where lines end.
    void tell(qreal factor);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const std::shared_ptr<TimeSource> timeSource_;
    std::unique_ptr<Timer> hiding_;
};

} // namespace quenby
