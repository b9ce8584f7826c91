#include "platform/linux/media/engine/capture/FreeSpaceWatch.h"

namespace quenby {
namespace {

constexpr std::chrono::seconds between(1);

}

FreeSpaceWatch::FreeSpaceWatch(FreeSpace freeSpace, qint64 least, std::function<void()> full)
    : freeSpace_(std::move(freeSpace))
    , least_(least) {
    timer_.setInterval(between);
    QObject::connect(&timer_, &QTimer::timeout, &timer_, [this, full = std::move(full)] {
        if (!isFull())
            return;
        timer_.stop();
        full();
    });
}

bool FreeSpaceWatch::isFull() const {
    const std::optional<qint64> left = freeSpace_();
    return left && *left < least_;
}

} // namespace quenby
