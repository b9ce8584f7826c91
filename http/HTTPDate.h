// Dates as header fields carry them.
#pragma once

#include <QByteArrayView>
#include <QDateTime>

namespace quenby {

// Reads a date the forgiving way that RFC 6265, section 5.1.1 lays down for cookies; every form that RFC 9110 allows
// (IMF-fixdate, RFC 850, asctime) reads that way too. An invalid date when it is none. UTC.
QDateTime parseHTTPDate(QByteArrayView text);

} // namespace quenby
