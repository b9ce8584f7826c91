// The Range header of a download (RFC 9110 section 14).
#pragma once

#include <QByteArray>

#include <optional>

namespace quenby::localdrive {

struct ByteRange {
    qint64 first = 0;
    qint64 length = 0;
};

enum class RangeKind { whole, part, unsatisfiable };

// What to send of `size` bytes. Headers that are malformed or name several ranges count as missing: then the whole.
RangeKind resolveRange(const QByteArray& header, qint64 size, ByteRange& range);

} // namespace quenby::localdrive
