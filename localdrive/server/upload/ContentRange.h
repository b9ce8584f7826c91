// The Content-Range header of an upload's PUT.
#pragma once

#include <QByteArray>

#include <optional>

namespace quenby::localdrive {

struct ContentRange {
    qint64 first = 0;
    qint64 length = 0; // 0: no bytes, a question about what is held
    qint64 total = 0;

    bool isQuery() const { return length == 0; }

    // "bytes FIRST-LAST/TOTAL" or "bytes */TOTAL". Nothing when it is none of them or contradicts itself.
    static std::optional<ContentRange> parse(const QByteArray& value);
};

} // namespace quenby::localdrive
