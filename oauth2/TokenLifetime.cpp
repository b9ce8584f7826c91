#include "oauth2/TokenLifetime.h"

#include "core/TimeSource.h"

#include <algorithm>

namespace quenby {
namespace {

// No server means more; it keeps the arithmetic of dates far from its limits.
constexpr std::chrono::seconds longestLifetime = std::chrono::years(10);

} // namespace

void TokenLifetime::start(std::chrono::seconds length, const TimeSource& time) {
    if (length <= std::chrono::seconds::zero())
        return clear();
    const std::chrono::seconds bounded = std::min(length, longestLifetime);
    end_ = End{time.now().addSecs(bounded.count()), time.elapsed() + bounded};
}

void TokenLifetime::setExpirationDate(const std::optional<QDateTime>& date, const TimeSource& time) {
    if (!date || !date->isValid())
        return clear();
    end_ = End{*date, time.elapsed() + std::chrono::milliseconds(time.now().msecsTo(*date))};
}

std::optional<QDateTime> TokenLifetime::expirationDate() const {
    return end_ ? std::optional(end_->date) : std::nullopt;
}

std::optional<std::chrono::milliseconds> TokenLifetime::remaining(const TimeSource& time) const {
    if (!end_)
        return std::nullopt;
    const std::chrono::milliseconds byDate(time.now().msecsTo(end_->date));
    return std::min(byDate, end_->elapsed - time.elapsed());
}

} // namespace quenby
