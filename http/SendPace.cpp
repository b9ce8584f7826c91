#include "http/SendPace.h"

#include <algorithm>
#include <cmath>

namespace quenby {
namespace {

// A piece is what goes out in this part of a second: small enough to be even, large enough to be cheap.
constexpr qint64 piecesPerSecond = 8;
// What was not used is lost beyond this many pieces, so that a network that stood still is not made up for by a burst.
constexpr qint64 mostPieces = 2;

} // namespace

SendPace::SendPace(std::function<void()> goOn)
    : goOn_(std::move(goOn)) {
    timer_.setSingleShot(true);
    QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { goOn_(); });
}

void SendPace::setSpeed(qint64 bytesPerSecond) {
    if (bytesPerSecond == speed_)
        return;
    // What was saved up stays: a speed that is set again and again must not keep everything from going.
    if (speed_ > 0)
        refill();
    speed_ = bytesPerSecond;
    sinceRefill_.start();
    if (timer_.isActive())
        timer_.start(0); // who waits asks anew, and not from inside of this call
}

qint64 SendPace::take(qint64 wanted) {
    if (speed_ <= 0)
        return wanted;
    refill();
    const qint64 piece = std::clamp<qint64>(speed_ / piecesPerSecond, 1, wanted);
    const auto missing = static_cast<double>(piece) - ready_;
    if (missing > 0) {
        timer_.start(static_cast<int>(std::ceil(missing * 1000 / static_cast<double>(speed_))));
        return 0;
    }
    const qint64 taken = std::min(wanted, static_cast<qint64>(ready_));
    ready_ -= static_cast<double>(taken);
    return taken;
}

void SendPace::refill() {
    const auto passed = static_cast<double>(sinceRefill_.restart()) / 1000; // seconds
    const auto most = static_cast<double>(std::max<qint64>(speed_ / piecesPerSecond, 1) * mostPieces);
    ready_ = std::min(ready_ + passed * static_cast<double>(speed_), most);
}

} // namespace quenby
