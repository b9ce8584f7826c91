#include "popover/changes/RowDates.h"

#include "popover/changes/RelativeDateDescriptor.h"

#include <algorithm>
#include <cmath>

namespace quenby {
namespace {

using namespace std::chrono_literals;
using Descriptor = RelativeDateDescriptor;

constexpr std::chrono::milliseconds longestWait = 1h;

// The first whole millisecond at which so many of the units are full.
qint64 fullAt(int count, quint32 unit) {
    return static_cast<qint64>(std::ceil(count * Descriptor::secondsInTimeUnit(unit) * 1000));
}

// The largest unit that fits, and how many of it.
struct Span {
    quint32 unit;
    int count;
};

Span spanOf(qint64 milliseconds) {
    const Decimal seconds = Decimal::fromDouble(static_cast<double>(milliseconds) / 1000);
    const quint32 unit = Descriptor::mostSignificantUnitForTimeDifference(seconds);
    return {unit, Descriptor::preciselyDivide(seconds, Descriptor::secondsInTimeUnit(unit))};
}

qint64 growing(qint64 age) {
    const Span span = spanOf(age);
    if (span.unit == Descriptor::millisecond)
        return fullAt(1, Descriptor::second) - age;
    qint64 next = fullAt(span.count + 1, span.unit);
    if (span.unit != Descriptor::year)
        next = std::min(next, fullAt(1, span.unit << 1));
    return next - age;
}

qint64 shrinking(qint64 ahead) {
    const Span span = spanOf(ahead);
    return span.unit == Descriptor::millisecond ? ahead + 1 : ahead - fullAt(span.count, span.unit) + 1;
}

} // namespace

QString rowDateText(const QDateTime& date, const QDateTime& now) {
    static const RelativeDateDescriptor descriptor;
    return descriptor.describeDate(date, now);
}

std::optional<std::chrono::milliseconds> timeToNextRowDateText(const QDateTime& date, const QDateTime& now) {
    if (!date.isValid())
        return std::nullopt;
    const qint64 age = date.msecsTo(now);
    const std::chrono::milliseconds wait(age > 0 ? growing(age) : shrinking(-age));
    return std::clamp(wait, 1ms, longestWait);
}

} // namespace quenby
