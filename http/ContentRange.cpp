#include "http/ContentRange.h"

#include <QString>

#include <algorithm>
#include <limits>

namespace quenby {
namespace {

constexpr quint64 largest = std::numeric_limits<quint64>::max();

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// Takes the digits at the front; nothing when there are none.
std::optional<quint64> takeNumber(QByteArrayView& rest) {
    if (rest.isEmpty() || !isDigit(rest.front()))
        return std::nullopt;
    quint64 number = 0;
    for (; !rest.isEmpty() && isDigit(rest.front()); rest = rest.sliced(1)) {
        const auto digit = static_cast<quint64>(rest.front() - '0');
        number = number > (largest - digit) / 10 ? largest : number * 10 + digit;
    }
    return number;
}

bool take(QByteArrayView& rest, QByteArrayView expected) {
    if (rest.size() < expected.size() || rest.first(expected.size()).compare(expected, Qt::CaseInsensitive) != 0)
        return false;
    rest = rest.sliced(expected.size());
    return true;
}

} // namespace

quint64 lengthOfChunk(quint64 offset, quint64 chunkSize, quint64 fullLength) {
    const quint64 remaining = fullLength - std::min(offset, fullLength);
    const bool isLast = remaining <= chunkSize || remaining - chunkSize < minimumLastChunkLength;
    return isLast ? remaining : chunkSize;
}

QByteArray contentRangeOfChunk(quint64 offset, quint64 length, quint64 fullLength) {
    Q_ASSERT(length > 0 && offset < fullLength && length <= fullLength - offset);
    return "bytes " + QByteArray::number(offset) + '-' + QByteArray::number(offset + length - 1) + '/' +
           QByteArray::number(fullLength);
}

QByteArray contentRangeOfStatusQuery(quint64 fullLength) { return "bytes */" + QByteArray::number(fullLength); }

std::optional<ByteRange> scanRange(QByteArrayView header) {
    QByteArrayView rest = header.trimmed();
    if (!take(rest, "bytes="))
        return std::nullopt;
    const auto first = takeNumber(rest);
    if (!first || !take(rest, "-"))
        return std::nullopt;
    const auto last = takeNumber(rest);
    if (!last || !rest.isEmpty() || *last < *first)
        return std::nullopt;
    return ByteRange{*first, *last};
}

} // namespace quenby
