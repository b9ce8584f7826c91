// Says how far a date lies from another: "5 minutes ago", "in 2 hours". A value; seconds are decimal numbers.
#pragma once

#include "popover/changes/Decimal.h"

#include <QDateTime>
#include <QList>
#include <QString>

#include <compare>

namespace quenby {

class RelativeDateDescriptor {
public:
    // One bit each, so that several can be expressed together.
    enum TimeUnit : quint32 {
        mostSignificantUnitOnly = 1, // no unit: the largest that fits is expressed, and no other
        millisecond = 2,
        second = 4,
        minute = 8,
        hour = 16,
        day = 32,
        week = 64,
        month = 128,
        year = 256,
    };

    // Each format has one placeholder, "%@".
    explicit RelativeDateDescriptor(const QString& priorFormat = QStringLiteral("%@ ago"),
                                    const QString& postFormat = QStringLiteral("in %@"));

    QString priorDateDescriptionFormat; // when the date lies before the reference date
    QString postDateDescriptionFormat;  // otherwise
    quint32 expressedUnits = mostSignificantUnitOnly;

    // Null when either date is missing.
    QString describeDate(const QDateTime& date, const QDateTime& relativeTo) const;

    bool expressMostSignificantUnitOnly() const { return isExpressedUnit(mostSignificantUnitOnly); }
    bool isExpressedUnit(quint32 unit) const { return (expressedUnits & unit) == unit; }
    // In the order in which they are tested; the millisecond is tested twice, and the flag is taken for a unit.
    QList<quint32> expressedTimeUnits() const;

    static quint32 mostSignificantUnitForTimeDifference(Decimal seconds);
    // 0 and no word for what is no unit. The month and the year have the lengths of this system.
    static double secondsInTimeUnit(quint32 unit);
    static QString quantifierForTimeUnit(quint32 unit);

    static qint32 preciselyDivide(Decimal number, double by) { return number.dividedBy(Decimal::fromDouble(by)); }
    static std::strong_ordering compare(Decimal number, double to) { return number <=> Decimal::fromDouble(to); }
    // "1 hour 30 minutes": the largest unit first, each with what the larger ones left.
    static QString describeInterval(Decimal seconds, QList<quint32> usingQuantifiers);
    static QString applyFormat(const QString& format, const QString& relativeDifference);
    static QString formOfDateQuantifier(const QString& word, int forCount);
};

} // namespace quenby
