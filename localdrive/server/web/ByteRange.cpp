#include "localdrive/server/web/ByteRange.h"

#include <QRegularExpression>

#include <algorithm>

namespace quenby::localdrive {

RangeKind resolveRange(const QByteArray& header, qint64 size, ByteRange& range) {
    static const QRegularExpression form(QStringLiteral("^bytes=(\\d{0,18})-(\\d{0,18})$"));
    const auto match = form.match(QString::fromLatin1(header));
    range = {0, size};
    if (!match.hasMatch() || header == "bytes=-")
        return RangeKind::whole;
    const QString first = match.captured(1);
    const QString last = match.captured(2);
    if (first.isEmpty()) {
        const qint64 length = std::min(last.toLongLong(), size);
        range = {size - length, length};
        return length > 0 ? RangeKind::part : RangeKind::unsatisfiable;
    }
    if (!last.isEmpty() && last.toLongLong() < first.toLongLong())
        return RangeKind::whole;
    if (first.toLongLong() >= size)
        return RangeKind::unsatisfiable;
    const qint64 end = last.isEmpty() ? size : std::min(last.toLongLong() + 1, size);
    range = {first.toLongLong(), end - first.toLongLong()};
    return RangeKind::part;
}

} // namespace quenby::localdrive
