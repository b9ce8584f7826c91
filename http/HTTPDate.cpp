#include "http/HTTPDate.h"

#include <QTimeZone>

#include <array>
#include <optional>

namespace quenby {
namespace {

constexpr bool isDelimiter(char c) {
    const auto u = static_cast<unsigned char>(c);
    return u == 0x09 || (u >= 0x20 && u <= 0x2f) || (u >= 0x3b && u <= 0x40) || (u >= 0x5b && u <= 0x60) ||
           (u >= 0x7b && u <= 0x7e);
}

constexpr bool isDigit(char c) { return c >= '0' && c <= '9'; }

// The number of minDigits to maxDigits digits that the view begins with, which is taken off; nothing otherwise.
std::optional<int> takeNumber(QByteArrayView& view, qsizetype minDigits, qsizetype maxDigits) {
    qsizetype digits = 0;
    int number = 0;
    while (digits < view.size() && isDigit(view[digits])) {
        if (digits == maxDigits)
            return std::nullopt;
        number = number * 10 + (view[digits++] - '0');
    }
    if (digits < minDigits)
        return std::nullopt;
    view = view.sliced(digits);
    return number;
}

// hh:mm:ss, each of one or two digits, followed by nothing that is a digit.
std::optional<QTime> parseTime(QByteArrayView token) {
    std::array<int, 3> parts{};
    for (size_t i = 0; i < parts.size(); ++i) {
        if (i > 0) {
            if (!token.startsWith(':'))
                return std::nullopt;
            token = token.sliced(1);
        }
        const auto part = takeNumber(token, 1, 2);
        if (!part)
            return std::nullopt;
        parts[i] = *part;
    }
    return QTime(parts[0], parts[1], parts[2]); // invalid when out of range, which makes the whole date invalid
}

std::optional<int> parseMonth(QByteArrayView token) {
    static constexpr std::array names{"jan", "feb", "mar", "apr", "may", "jun",
                                      "jul", "aug", "sep", "oct", "nov", "dec"};
    if (token.size() < 3)
        return std::nullopt;
    for (size_t i = 0; i < names.size(); ++i) {
        if (token.first(3).compare(QByteArrayView(names[i]), Qt::CaseInsensitive) == 0)
            return static_cast<int>(i) + 1;
    }
    return std::nullopt;
}

std::optional<int> parseYear(QByteArrayView token) {
    auto year = takeNumber(token, 2, 4);
    if (year && *year < 100)
        *year += *year >= 70 ? 1900 : 2000;
    return year;
}

} // namespace

QDateTime parseHTTPDate(QByteArrayView text) {
    std::optional<QTime> time;
    std::optional<int> day;
    std::optional<int> month;
    std::optional<int> year;
    for (qsizetype at = 0; at < text.size();) {
        qsizetype end = at;
        while (end < text.size() && !isDelimiter(text[end]))
            ++end;
        QByteArrayView token = text.sliced(at, end - at);
        at = end + 1;
        // Each token is taken for the first thing that it can be and that is still missing.
        if (!time && (time = parseTime(token)))
            continue;
        if (QByteArrayView rest = token; !day && (day = takeNumber(rest, 1, 2)))
            continue;
        if (!month && (month = parseMonth(token)))
            continue;
        if (!year)
            year = parseYear(token);
    }
    if (!time || !day || !month || !year || *year < 1601)
        return {};
    const QDate date(*year, *month, *day);
    if (!time->isValid() || !date.isValid())
        return {};
    return QDateTime(date, *time, Qt::UTC);
}

} // namespace quenby
