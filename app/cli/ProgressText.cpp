#include "app/cli/ProgressText.h"

#include "app/cli/DisplayText.h"
#include "core/ByteCountText.h"

#include <algorithm>
#include <cmath>

namespace quenby {
namespace {

using namespace std::chrono_literals;

constexpr auto rateWindow = 5s;
constexpr auto shortestMeasure = 200ms; // a rate over less than this is noise
constexpr int barColumns = 20;
constexpr int shortestName = 12;
constexpr int rateColumns = 13; // "  1023.9 MB/s"
constexpr int timeColumns = 9;  // "  9:59:59"

QString bar(int percent) {
    const int filled = barColumns * std::clamp(percent, 0, 100) / 100;
    return QLatin1Char('[') + QString(filled, QLatin1Char('=')) + QString(barColumns - filled, QLatin1Char(' ')) +
           QLatin1Char(']');
}

} // namespace

void RateMeter::add(std::chrono::milliseconds now, qint64 totalBytes) {
    // A transfer that was set back starts anew.
    if (!samples_.empty() && totalBytes < samples_.back().bytes)
        samples_.clear();
    samples_.push_back({now, totalBytes});
    while (samples_.size() > 2 && now - samples_[1].time >= rateWindow)
        samples_.pop_front();
}

double RateMeter::bytesPerSecond() const {
    if (samples_.size() < 2)
        return 0;
    const auto time = samples_.back().time - samples_.front().time;
    if (time < shortestMeasure)
        return 0;
    const auto bytes = static_cast<double>(samples_.back().bytes - samples_.front().bytes);
    return bytes * 1000 / static_cast<double>(time.count());
}

int Progress::percent() const {
    if (total <= 0)
        return 100;
    return static_cast<int>(static_cast<double>(std::clamp<qint64>(done, 0, total)) * 100 / static_cast<double>(total));
}

QString timeLeftText(const Progress& progress) {
    const auto left = static_cast<double>(std::max<qint64>(0, progress.total - progress.done));
    const double seconds = progress.bytesPerSecond > 0 ? std::ceil(left / progress.bytesPerSecond) : HUGE_VAL;
    if (seconds >= 100 * 3600)
        return QStringLiteral("-:--");
    const auto whole = static_cast<int>(seconds);
    const auto twoDigits = [](int number) { return QString::number(number).rightJustified(2, QLatin1Char('0')); };
    const QString secondsText = QLatin1Char(':') + twoDigits(whole % 60);
    const int minutes = whole / 60;
    if (minutes < 60)
        return QString::number(minutes) + secondsText;
    return QString::number(minutes / 60) + QLatin1Char(':') + twoDigits(minutes % 60) + secondsText;
}

QString progressLine(const Progress& progress, int columns) {
    const int percent = progress.percent();
    const QString percentText = QString::number(percent).rightJustified(4) + QLatin1Char('%');
    const QString barText = QStringLiteral("  ") + bar(percent);
    // Of one width whatever the numbers, so that the line does not jump.
    const QString rate = byteCountText(std::llround(progress.bytesPerSecond)) + QStringLiteral("/s");
    const QString rateText =
        rate.rightJustified(rateColumns) + timeLeftText(progress).rightJustified(timeColumns) + QStringLiteral(" left");

    QString tail = barText + percentText + rateText;
    if (displayColumns(tail) + shortestName > columns)
        tail = percentText + rateText;
    if (displayColumns(tail) + shortestName > columns)
        tail = percentText;
    const QString name = elidedInTheMiddle(printableText(progress.name), columns - displayColumns(tail));
    return elidedInTheMiddle(name + tail, columns);
}

} // namespace quenby
