#include "popover/changes/RelativeDateDescriptor.h"

#include <QStringList>

#include <algorithm>
#include <cmath>
#include <functional>
#include <iterator>

namespace quenby {
namespace {

struct Unit {
    quint32 bit;
    double seconds;
    const char* word;
};

using Descriptor = RelativeDateDescriptor;

constexpr Unit units[] = {
    {Descriptor::millisecond, static_cast<double>(0.001F), "millisecond"}, // slightly more than a thousandth
    {Descriptor::second, 1, "second"},
    {Descriptor::minute, 60, "minute"},
    {Descriptor::hour, 3600, "hour"},
    {Descriptor::day, 86400, "day"},
    {Descriptor::week, 604800, "week"},
    {Descriptor::month, 2629152, "month"},
    {Descriptor::year, 30779325.9936, "year"},
};

const Unit* found(quint32 unit) {
    const auto* at = std::find_if(std::begin(units), std::end(units), [&](const Unit& one) { return one.bit == unit; });
    return at == std::end(units) ? nullptr : at;
}

} // namespace

RelativeDateDescriptor::RelativeDateDescriptor(const QString& priorFormat, const QString& postFormat)
    : priorDateDescriptionFormat(priorFormat)
    , postDateDescriptionFormat(postFormat) {}

QString RelativeDateDescriptor::describeDate(const QDateTime& date, const QDateTime& relativeTo) const {
    if (!date.isValid() || !relativeTo.isValid())
        return {};
    const double difference = static_cast<double>(relativeTo.msecsTo(date)) / 1000;
    const Decimal distance = Decimal::fromDouble(std::abs(difference));
    QList<quint32> expressed = expressedTimeUnits();
    if (expressMostSignificantUnitOnly() || expressed.isEmpty())
        expressed = {mostSignificantUnitForTimeDifference(distance)};
    return applyFormat(difference < 0 ? priorDateDescriptionFormat : postDateDescriptionFormat,
                       describeInterval(distance, expressed));
}

QList<quint32> RelativeDateDescriptor::expressedTimeUnits() const {
    QList<quint32> expressed;
    for (const quint32 unit : {2U, 1U, 2U, 4U, 8U, 16U, 32U, 64U, 128U, 256U}) {
        if (isExpressedUnit(unit))
            expressed.append(unit);
    }
    return expressed;
}

quint32 RelativeDateDescriptor::mostSignificantUnitForTimeDifference(Decimal seconds) {
    if (std::is_lt(compare(seconds.times(1000), 1000)))
        return millisecond;
    // Each unit reaches up to the length of the next.
    for (quint32 unit = second; unit < year; unit <<= 1) {
        if (std::is_lt(compare(seconds, secondsInTimeUnit(unit << 1))))
            return unit;
    }
    return year;
}

double RelativeDateDescriptor::secondsInTimeUnit(quint32 unit) {
    const Unit* known = found(unit);
    return known != nullptr ? known->seconds : 0;
}

QString RelativeDateDescriptor::quantifierForTimeUnit(quint32 unit) {
    const Unit* known = found(unit);
    return known != nullptr ? QString::fromLatin1(known->word) : QString();
}

QString RelativeDateDescriptor::describeInterval(Decimal seconds, QList<quint32> usingQuantifiers) {
    std::sort(usingQuantifiers.begin(), usingQuantifiers.end(), std::greater<>());
    QStringList pieces;
    Decimal remaining = seconds;
    for (const quint32 unit : std::as_const(usingQuantifiers)) {
        const double length = secondsInTimeUnit(unit);
        const qint32 count = preciselyDivide(remaining, length);
        pieces.append(QString::number(count) + QLatin1Char(' ') +
                      formOfDateQuantifier(quantifierForTimeUnit(unit), count));
        remaining = remaining - Decimal::fromDouble(length).times(count);
    }
    return pieces.join(QLatin1Char(' '));
}

QString RelativeDateDescriptor::applyFormat(const QString& format, const QString& relativeDifference) {
    QString filled = format;
    const QLatin1String placeholder("%@");
    const auto at = filled.indexOf(placeholder);
    return at < 0 ? filled : filled.replace(at, placeholder.size(), relativeDifference);
}

QString RelativeDateDescriptor::formOfDateQuantifier(const QString& word, int forCount) {
    return forCount >= 2 ? word + QLatin1Char('s') : word;
}

} // namespace quenby
