#include "bench/popover/PaintWatch.h"

#include <QEvent>
#include <QTimer>

#include <cstdio>
#include <cstdlib>

namespace quenby::bench {
namespace {

using namespace std::chrono_literals;

constexpr auto patience = 30s;
constexpr auto askingInterval = 50ms;

} // namespace

bool PaintWatch::notify(QObject* receiver, QEvent* event) {
    if (event->type() == QEvent::Paint && receiver->isWidgetType()) {
        ++paintCount_;
        isFrame_ = true;
    }
    // What was painted before the window was there comes onto the screen with this.
    if (event->type() == QEvent::Expose)
        isFrame_ = true;
    ++depth_;
    const bool result = QApplication::notify(receiver, event);
    if (--depth_ > 0)
        return result;
    if (std::exchange(isFrame_, false) && frameEnded)
        frameEnded();
    if (awaited_ && awaited_()) {
        awaited_ = nullptr;
        awaiting_->quit();
    }
    return result;
}

void PaintWatch::waitUntil(const char* awaited, std::function<bool()> condition) {
    if (condition())
        return;
    QEventLoop loop;
    QTimer::singleShot(patience, &loop, [awaited] {
        std::fprintf(stderr, "%s did not come\n", awaited);
        std::exit(1);
    });
    awaiting_ = &loop;
    awaited_ = std::move(condition);
    loop.exec();
}

void PaintWatch::askUntil(const char* awaited, std::function<bool()> condition) {
    QTimer asking;
    asking.start(askingInterval);
    waitUntil(awaited, std::move(condition));
}

void PaintWatch::rest(std::chrono::milliseconds time) {
    QEventLoop loop;
    QTimer::singleShot(time, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
}

} // namespace quenby::bench
