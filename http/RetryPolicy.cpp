#include "http/RetryPolicy.h"

#include "http/HTTPDate.h"

#include <QRandomGenerator>

#include <algorithm>
#include <limits>

namespace quenby {
namespace {

constexpr double defaultMaxForReading = 60;
constexpr double defaultMaxForOthers = 600;
// Retrying ends when this many maximum intervals have passed since the first attempt.
constexpr double maxIntervalsInAll = 3;

} // namespace

void RetryPolicy::setEnabled(bool enabled) {
    if (enabled && !enabled_) {
        setMinRetryInterval(0);
        setMaxRetryInterval(unsetInterval);
        retryFactor_ = 2;
        lastRetryInterval_ = 0;
    }
    enabled_ = enabled;
}

void RetryPolicy::setMinRetryInterval(double seconds) {
    constexpr auto steps = std::numeric_limits<quint16>::max();
    minRetryInterval_ = seconds > 0 ? seconds : 1 + QRandomGenerator::global()->bounded(steps + 1) / double(steps);
}

void RetryPolicy::chooseMaxRetryInterval(bool isReadOnlyRequest) {
    if (enabled_ && maxRetryInterval_ <= unsetInterval)
        maxRetryInterval_ = isReadOnlyRequest ? defaultMaxForReading : defaultMaxForOthers;
}

double RetryPolicy::nextRetryInterval() const {
    return std::max(minRetryInterval_, std::min(lastRetryInterval_ * retryFactor_, maxRetryInterval_));
}

bool RetryPolicy::allowsRetry(std::chrono::milliseconds sinceFirstAttempt) const {
    if (!enabled_ || maxRetryInterval_ <= nextRetryInterval())
        return false;
    return std::chrono::duration<double>(sinceFirstAttempt).count() <= maxIntervalsInAll * maxRetryInterval_;
}

std::chrono::milliseconds RetryPolicy::takeDelay(std::optional<double> retryAfter) {
    double delay = std::min(nextRetryInterval(), maxRetryInterval_);
    if (retryAfter && *retryAfter < maxRetryInterval_)
        delay = std::max(delay, *retryAfter);
    lastRetryInterval_ = delay;
    return std::chrono::milliseconds(std::max(qint64(0), qRound64(delay * 1000)));
}

bool RetryPolicy::isRetryError(const Error& error) {
    return error.isHTTPStatus(408) || error.isHTTPStatus(503) || error.isHTTPStatus(504) ||
           error.is(URLErrorCode::timedOut) || error.is(URLErrorCode::networkConnectionLost);
}

std::optional<double> retryAfterSeconds(const HeaderFields& headers, const QDateTime& now) {
    const QByteArray text = headers.value("Retry-After").trimmed();
    if (text.isEmpty())
        return std::nullopt;
    bool isNumber = false;
    const uint seconds = text.toUInt(&isNumber);
    if (isNumber)
        return seconds;
    const QDateTime date = parseHTTPDate(text);
    if (!date.isValid() || date <= now)
        return std::nullopt;
    return static_cast<double>(now.msecsTo(date)) / 1000;
}

} // namespace quenby
