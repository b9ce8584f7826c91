// Texts and dates between the wire and the database.
#pragma once

#include <QDateTime>
#include <QJsonValue>
#include <QString>

#include <optional>

namespace quenby::localdrive {

// Text that UTF-8 can carry: halves of surrogate pairs become U+FFFD, as bytes that are no UTF-8 do.
QString cleaned(const QString& text);

// What titles are searched by: composed, without regard to case.
QString searchKey(const QString& text);

// RFC 3339 with milliseconds and Z, for example 2014-07-01T10:20:30.500Z; empty for an invalid date.
QString dateText(const QDateTime& date);
// A date of the database, in milliseconds since 1970; an empty text for an invalid value (NULL).
QString dateText(const QVariant& milliseconds);

// RFC 3339 section 5.6 and, as the search language allows, without the zone (UTC) or without the time (midnight).
// Years 0001 to 9999.
std::optional<QDateTime> parsedDate(const QString& text);

// 64-bit numbers travel as decimal strings, since many JSON parsers read numbers as doubles.
QJsonValue int64(qint64 number);

} // namespace quenby::localdrive
