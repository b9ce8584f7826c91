// The value of a date property: the calendar fields exactly as they were written in the RFC 3339 text, so that what
// was read is written back as the same text, and an instant only on demand.
//
// A default-made GTLDateTime is null: "there is no date". A value without hour and minute is an all-day date.
// Threads: an ordinary value; copies share nothing mutable.
#pragma once

#include <QDateTime>
#include <QString>
#include <QTimeZone>

#include <array>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>

namespace quenby {

// A calendar field that is not known, and an offset that is not known, hold this.
inline constexpr qint64 gtlUndefinedDateComponent = std::numeric_limits<qint64>::max();

struct GTLDateComponents {
    qint64 year = gtlUndefinedDateComponent;
    qint64 month = gtlUndefinedDateComponent;
    qint64 day = gtlUndefinedDateComponent;
    qint64 hour = gtlUndefinedDateComponent;
    qint64 minute = gtlUndefinedDateComponent;
    qint64 second = gtlUndefinedDateComponent;

    friend bool operator==(const GTLDateComponents&, const GTLDateComponents&) = default;
};

class GTLDateTime {
public:
    GTLDateTime() = default;

    // A null text gives a null value. A text that is no date gives a value whose fields are undefined from the first
    // one that could not be read.
    static GTLDateTime dateTimeWithRFC3339String(const QString& text);
    static GTLDateTime dateTimeWithRFC3339String(std::string_view utf8);
    // The fields of the instant in the zone; without a valid zone in local time, with the offset left undefined.
    static GTLDateTime dateTimeWithDate(const QDateTime& date, const std::optional<QTimeZone>& timeZone = {});
    static GTLDateTime dateTimeForAllDayWithDate(const QDateTime& date);
    static GTLDateTime dateTimeWithDateComponents(const GTLDateComponents& components);

    bool isNull() const { return isNull_; }

    const GTLDateComponents& dateComponents() const { return components_; }
    qint64 milliseconds() const { return milliseconds_; }   // 0 to 999
    qint64 offsetSeconds() const { return offsetSeconds_; } // from UTC, or gtlUndefinedDateComponent
    bool universalTime() const { return universalTime_; }   // the text ended in "Z"

    bool hasTime() const;
    void setHasTime(bool hasTime);

    // The explicit zone, else the one that the text named; nothing when the offset is undefined.
    std::optional<QTimeZone> timeZone() const;

    QString RFC3339String() const; // null for a null value
    QString stringValue() const { return RFC3339String(); }
    QString description() const { return RFC3339String(); }

    // The instant; without a zone the fields are local time. All-day values give noon UTC, so that the day survives
    // any display zone. Invalid when the value is null or its fields name no day.
    QDateTime date() const;
    // The same instant in milliseconds since 1970 in UTC, without the cost of a QDateTime when the offset is known.
    std::optional<qint64> millisecondsSinceEpoch() const;

    friend bool operator==(const GTLDateTime& left, const GTLDateTime& right);

private:
    void setFromRFC3339String(std::string_view text);
    void setFromDate(const QDateTime& date, const std::optional<QTimeZone>& timeZone);

    GTLDateComponents components_;
    qint64 milliseconds_ = 0;
    qint64 offsetSeconds_ = gtlUndefinedDateComponent;
    std::optional<QTimeZone> explicitZone_;
    bool universalTime_ = false;
    bool isNull_ = true;
};

} // namespace quenby
