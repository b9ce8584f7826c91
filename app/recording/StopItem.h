// The stop button of a recording: an item of its own in the status bar, there as long as a recording is.
//
// Threads: the main thread. Its tool tip tells the running time, second by second.
#pragma once

#include "core/TimeSource.h"
#include "platform/StatusItemHost.h"

#include <QMenu>
#include <QObject>

#include <chrono>
#include <functional>
#include <memory>

namespace quenby {

class StopItem : public QObject, private StatusItemFace {
    Q_OBJECT

public:
    // A place in the status bar beside the program's own item.
    using MakeHosts = std::function<std::unique_ptr<StatusItemHosts>()>;

    StopItem(MakeHosts makeHosts, std::shared_ptr<TimeSource> timeSource);
    ~StopItem() override;

    void show();
    // The time runs from now on.
    void startClock();
    void remove();
    bool isShown() const { return hosts_ != nullptr; }

Q_SIGNALS:
    void clicked();

private:
    void press();
    void followHost();
    void scheduleTick();

    QSize size() const override;
    void paint(QPainter& painter, const QRect& rect, bool isDarkSurrounding) const override;
    void paintIcon(QPainter& painter, const QRect& square, bool isDarkSurrounding) const override;
    QString title() const override;
    QString toolTip() const override;
    bool acceptsFiles(const QList<QByteArray>&) const override { return false; }

    const MakeHosts makeHosts_;
    const std::shared_ptr<TimeSource> timeSource_;
    QMenu menu_;
    std::chrono::milliseconds began_{-1}; // on the forward clock; negative before the first frame
    std::unique_ptr<Timer> tick_;
    std::unique_ptr<StatusItemHosts> hosts_;
};

// "0:07", "12:34", "1:02:03".
QString runningTime(std::chrono::seconds time);

} // namespace quenby
