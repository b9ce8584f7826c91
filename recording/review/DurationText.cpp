#include "recording/review/DurationText.h"

#include <algorithm>

namespace quenby {
namespace {

constexpr double longest = 1e15; // seconds; what no movie has, and an integer still holds

QString part(qint64 count, const char* unit, const QString& suffix) {
    return QStringLiteral("%1 %2%3").arg(count, 2).arg(QString::fromLatin1(unit), suffix);
}

} // namespace

QString stringFromTimeInterval(double seconds) {
    const auto whole = seconds > 0 ? static_cast<qint64>(std::min(seconds, longest)) : 0;
    const qint64 second = whole % 60;
    const qint64 minute = whole / 60 % 60;
    const qint64 hour = whole / 3600;
    const QString suffix = second == 1 ? QString() : QStringLiteral("s");
    QString text = whole < 1 ? QStringLiteral("less than 1 second") : part(second, "second", suffix);
    if (minute > 0)
        text = QString(part(minute, "minute", suffix) + QLatin1Char(' ') + text);
    if (hour > 0)
        text = QString(part(hour, "hour", suffix) + QLatin1Char(' ') + text);
    return text;
}

QString clockText(std::chrono::milliseconds time) {
    const qint64 seconds = std::max<qint64>(time.count(), 0) / 1000;
    const auto twoDigits = [](qint64 number) { return QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0')); };
    const QString tail = QLatin1Char(':') + twoDigits(seconds % 60);
    if (seconds < 3600)
        return QString(QString::number(seconds / 60) + tail);
    return QString(QString::number(seconds / 3600) + QLatin1Char(':') + twoDigits(seconds / 60 % 60) + tail);
}

} // namespace quenby
