#include "app/uploads/transfer/Patience.h"

#include <QRandomGenerator>

#include <algorithm>

namespace quenby {
namespace {

using namespace std::chrono_literals;

constexpr auto firstDelay = 1000ms;
constexpr auto longestDelay = 30000ms;

} // namespace

bool Patience::failed(qint64 gained) {
    const auto now = timeSource_->elapsed();
    if (!troubledSince_ || gained > gainedBefore_) {
        troubledSince_ = now;
        gainedBefore_ = gained;
        tries_ = 0;
    }
    return now - *troubledSince_ < limit_;
}

std::chrono::milliseconds Patience::nextDelay() {
    const auto delay = std::min(firstDelay * (1 << std::min(tries_++, 10)), longestDelay);
    // Uploads that failed together don't come back together.
    const int part = QRandomGenerator::global()->bounded(75, 126);
    return std::min(delay * part / 100, limit_);
}

} // namespace quenby
