#include "app/changes/ServerClock.h"

#include <algorithm>

namespace quenby {

void ServerClock::heard(const QDateTime& date) {
    if (date.isValid())
        heard_ = Heard{date, timeSource_->now(), timeSource_->elapsed()};
}

QDateTime ServerClock::now() const {
    if (!heard_)
        return timeSource_->now();
    // The elapsed time does not count while the computer sleeps, the wall clock may have been set back.
    const qint64 elapsed = (timeSource_->elapsed() - heard_->elapsed).count();
    const qint64 byWall = heard_->wall.msecsTo(timeSource_->now());
    return heard_->date.addMSecs(std::max(elapsed, byWall));
}

} // namespace quenby
