#include "driveapi/GTLDateTime.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace quenby {

namespace {

constexpr qint64 undefined = gtlUndefinedDateComponent;
constexpr qint64 millisecondsPerSecond = 1000;

// Takes a text apart from its start. It skips nothing: what does not stand at the current place is not found.
class Scanner {
public:
    explicit Scanner(std::string_view text)
        : rest_(text) {}

    // Digits with an optional sign. Too many digits give the nearest value of the type.
    bool integer(qint64& value) {
        std::string_view text = rest_;
        const bool hasSign = !text.empty() && (text[0] == '-' || text[0] == '+');
        const bool isNegative = hasSign && text[0] == '-';
        if (hasSign)
            text.remove_prefix(1);
        if (text.empty() || !isDigit(text[0]))
            return false;
        quint64 magnitude = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), magnitude);
        constexpr auto largest = static_cast<quint64>(std::numeric_limits<qint64>::max());
        if (error == std::errc::result_out_of_range || magnitude > largest)
            magnitude = largest;
        value = isNegative ? -static_cast<qint64>(magnitude) : static_cast<qint64>(magnitude);
        rest_ = text.substr(static_cast<std::size_t>(end - text.data()));
        return true;
    }

    // Digits with an optional fraction.
    bool decimal(double& value) {
        std::size_t length = 0;
        bool hasPoint = false;
        bool hasDigit = false;
        for (; length < rest_.size(); ++length) {
            if (isDigit(rest_[length]))
                hasDigit = true;
            else if (rest_[length] == '.' && !hasPoint)
                hasPoint = true;
            else
                break;
        }
        if (!hasDigit)
            return false;
        const auto result = std::from_chars(rest_.data(), rest_.data() + length, value, std::chars_format::fixed);
        if (result.ec == std::errc::result_out_of_range)
            value = HUGE_VAL;
        rest_.remove_prefix(length);
        return true;
    }

    // One or more of the characters; found receives them.
    bool characters(std::string_view set, std::string_view* found = nullptr) {
        const std::size_t length = std::min(rest_.find_first_not_of(set), rest_.size());
        if (found)
            *found = rest_.substr(0, length);
        rest_.remove_prefix(length);
        return length > 0;
    }

private:
    static bool isDigit(char c) { return c >= '0' && c <= '9'; }

    std::string_view rest_;
};

QString twoDigits(qint64 value) { return QStringLiteral("%1").arg(value, 2, 10, QLatin1Char('0')); }

bool isUniversal(const QTimeZone& zone) { return zone == QTimeZone::utc() || zone.id() == "Universal"; }

// Days from 1970-01-01 to a day of the proleptic Gregorian calendar; month 1 to 12, any day. Years are counted from
// March, so that the leap day is the last day of a year, in eras of 400 years.
qint64 daysSinceEpoch(qint64 year, qint64 month, qint64 day) {
    const qint64 marchYear = month <= 2 ? year - 1 : year;
    const qint64 era = (marchYear >= 0 ? marchYear : marchYear - 399) / 400;
    const qint64 yearOfEra = marchYear - era * 400;
    const qint64 dayOfYear = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
    const qint64 dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * 146097 + dayOfEra - 719468;
}

// The fields as if they were UTC. Fields beyond their usual range carry over, as a leap second must; fields so large
// that no calendar can mean them name no instant.
std::optional<qint64> secondsAsUTC(const GTLDateComponents& fields) {
    constexpr qint64 largestYear = 10'000'000;
    constexpr qint64 largestField = 1'000'000'000;
    const auto isOutside = [](qint64 field) { return field < -largestField || field > largestField; };
    if (fields.year < -largestYear || fields.year > largestYear || isOutside(fields.month) || isOutside(fields.day))
        return std::nullopt;
    const qint64 time[] = {fields.hour, fields.minute, fields.second == undefined ? 0 : fields.second};
    if (std::any_of(std::begin(time), std::end(time), isOutside))
        return std::nullopt;
    const qint64 monthsFromJanuary = fields.month - 1;
    const qint64 years = (monthsFromJanuary >= 0 ? monthsFromJanuary : monthsFromJanuary - 11) / 12;
    const qint64 days = daysSinceEpoch(fields.year + years, monthsFromJanuary - years * 12 + 1, fields.day);
    return days * 86400 + time[0] * 3600 + time[1] * 60 + time[2];
}

} // namespace

GTLDateTime GTLDateTime::dateTimeWithRFC3339String(const QString& text) {
    if (text.isNull())
        return {};
    const QByteArray utf8 = text.toUtf8();
    return dateTimeWithRFC3339String(std::string_view(utf8.constData(), static_cast<std::size_t>(utf8.size())));
}

GTLDateTime GTLDateTime::dateTimeWithRFC3339String(std::string_view utf8) {
    GTLDateTime made;
    if (!utf8.data())
        return made;
    made.isNull_ = false;
    made.setFromRFC3339String(utf8);
    return made;
}

GTLDateTime GTLDateTime::dateTimeWithDate(const QDateTime& date, const std::optional<QTimeZone>& timeZone) {
    GTLDateTime made;
    if (!date.isValid())
        return made;
    made.isNull_ = false;
    made.setFromDate(date, timeZone && timeZone->isValid() ? timeZone : std::nullopt);
    return made;
}

GTLDateTime GTLDateTime::dateTimeForAllDayWithDate(const QDateTime& date) {
    GTLDateTime made = dateTimeWithDate(date);
    made.setHasTime(false);
    return made;
}

GTLDateTime GTLDateTime::dateTimeWithDateComponents(const GTLDateComponents& components) {
    GTLDateTime made;
    made.isNull_ = false;
    made.components_ = components;
    return made;
}

void GTLDateTime::setFromRFC3339String(std::string_view text) {
    Scanner scanner(text);
    double seconds = -1;
    GTLDateComponents& fields = components_;
    const bool isComplete = scanner.integer(fields.year) && scanner.characters("-") && scanner.integer(fields.month) &&
                            scanner.characters("-") && scanner.integer(fields.day) && scanner.characters("Tt ") &&
                            scanner.integer(fields.hour) && scanner.characters(":") && scanner.integer(fields.minute) &&
                            scanner.characters(":") && scanner.decimal(seconds);
    if (!isComplete)
        return;
    const double whole = std::floor(seconds);
    fields.second = whole < 0x1p62 ? static_cast<qint64>(whole) : undefined;
    if (fields.second != undefined)
        milliseconds_ = std::min<qint64>(std::llround((seconds - whole) * 1000), 999);

    std::string_view sign;
    qint64 hours = 0;
    qint64 minutes = 0;
    if (!scanner.characters("+-zZ", &sign))
        return;
    if (scanner.integer(hours) && scanner.characters(":"))
        scanner.integer(minutes);
    universalTime_ = sign == "Z" || sign == "z";
    if (universalTime_) {
        offsetSeconds_ = 0;
        return;
    }
    // Far beyond any zone, and small enough to reckon with.
    constexpr qint64 largest = 1'000'000'000'000;
    const qint64 offset = std::clamp(hours, -largest, largest) * 3600 + std::clamp(minutes, -largest, largest) * 60;
    if (sign != "-")
        offsetSeconds_ = offset;
    else if (offset != 0) // RFC 3339, section 4.3: -00:00 means that the local offset is not known
        offsetSeconds_ = -offset;
}

void GTLDateTime::setFromDate(const QDateTime& date, const std::optional<QTimeZone>& timeZone) {
    const QDateTime local = timeZone ? date.toTimeZone(*timeZone) : date.toLocalTime();
    const QDate day = local.date();
    const QTime time = local.time();
    components_ = {day.year(), day.month(), day.day(), time.hour(), time.minute(), time.second()};
    milliseconds_ = time.msec();
    if (!timeZone)
        return;
    explicitZone_ = timeZone;
    offsetSeconds_ = timeZone->offsetFromUtc(date);
    universalTime_ = offsetSeconds_ == 0 && isUniversal(*timeZone);
}

bool GTLDateTime::hasTime() const { return components_.hour != undefined && components_.minute != undefined; }

void GTLDateTime::setHasTime(bool hasTime) {
    if (isNull_ || hasTime == this->hasTime())
        return;
    const qint64 field = hasTime ? 0 : undefined;
    components_.hour = field;
    components_.minute = field;
    components_.second = field;
    milliseconds_ = 0;
    offsetSeconds_ = undefined;
    universalTime_ = false;
    if (!hasTime)
        explicitZone_.reset();
}

std::optional<QTimeZone> GTLDateTime::timeZone() const {
    if (explicitZone_)
        return explicitZone_;
    if (universalTime_)
        return QTimeZone::utc();
    if (offsetSeconds_ == undefined)
        return std::nullopt;
    // A zone can't be further from UTC than a day; the toolkit's limit is below that.
    const QTimeZone zone(static_cast<int>(std::clamp<qint64>(offsetSeconds_, -86400, 86400)));
    return zone.isValid() ? std::optional(zone) : std::nullopt;
}

QString GTLDateTime::RFC3339String() const {
    if (isNull_)
        return {};
    QString text = QStringLiteral("%1-%2-%3")
                       .arg(components_.year, 4, 10, QLatin1Char('0'))
                       .arg(twoDigits(components_.month), twoDigits(components_.day));
    if (!hasTime())
        return text;
    text += QStringLiteral("T%1:%2:%3")
                .arg(twoDigits(components_.hour), twoDigits(components_.minute), twoDigits(components_.second));
    if (milliseconds_ >= 1)
        text += QStringLiteral(".%1").arg(milliseconds_, 3, 10, QLatin1Char('0'));
    if (universalTime_)
        return text + QLatin1Char('Z');
    if (offsetSeconds_ == undefined)
        return text + QStringLiteral("-00:00");
    const qint64 distance = std::abs(offsetSeconds_);
    return text + QLatin1Char(offsetSeconds_ < 0 ? '-' : '+') + twoDigits(distance / 3600 % 24) + QLatin1Char(':') +
           twoDigits(distance / 60 % 60);
}

QDateTime GTLDateTime::date() const {
    const auto instant = millisecondsSinceEpoch();
    return instant ? QDateTime::fromMSecsSinceEpoch(*instant, Qt::UTC) : QDateTime();
}

std::optional<qint64> GTLDateTime::millisecondsSinceEpoch() const {
    GTLDateComponents fields = components_;
    if (!hasTime()) {
        fields.hour = 12;
        fields.minute = 0;
        fields.second = 0;
    }
    const auto seconds = secondsAsUTC(fields);
    if (isNull_ || !seconds)
        return std::nullopt;
    const qint64 asUTC = *seconds * millisecondsPerSecond + milliseconds_;
    if (!hasTime() || universalTime_)
        return asUTC;
    if (!explicitZone_ && offsetSeconds_ != undefined)
        return asUTC - offsetSeconds_ * millisecondsPerSecond;
    const QDateTime wallClock = QDateTime::fromMSecsSinceEpoch(asUTC, Qt::UTC);
    const QDateTime local = explicitZone_ ? QDateTime(wallClock.date(), wallClock.time(), *explicitZone_)
                                          : QDateTime(wallClock.date(), wallClock.time(), Qt::LocalTime);
    return local.isValid() ? std::optional(local.toMSecsSinceEpoch()) : std::nullopt;
}

bool operator==(const GTLDateTime& left, const GTLDateTime& right) {
    const bool hasSameFields = left.isNull_ == right.isNull_ && left.components_ == right.components_ &&
                               left.milliseconds_ == right.milliseconds_ &&
                               left.offsetSeconds_ == right.offsetSeconds_ &&
                               left.universalTime_ == right.universalTime_;
    if (!hasSameFields)
        return false;
    // Without explicit zones the zone follows from what was compared.
    return (!left.explicitZone_ && !right.explicitZone_) || left.timeZone() == right.timeZone();
}

} // namespace quenby
