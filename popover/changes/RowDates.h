// When a change happened, as its row says it, and how long that stays true. Pure functions.
#pragma once

#include <QDateTime>
#include <QString>

#include <chrono>
#include <optional>

namespace quenby {

// "5 minutes ago"; null without a date.
QString rowDateText(const QDateTime& date, const QDateTime& now);

// How long until the text is another one: at least a millisecond, and at most an hour, so that a row is never far
// behind a wall clock that was set meanwhile. Below a second nothing is counted on: the text waits for the full second.
// Nothing without a date.
std::optional<std::chrono::milliseconds> timeToNextRowDateText(const QDateTime& date, const QDateTime& now);

} // namespace quenby
