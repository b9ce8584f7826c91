#include "localdrive/server/upload/ContentRange.h"

#include <QRegularExpression>

namespace quenby::localdrive {

std::optional<ContentRange> ContentRange::parse(const QByteArray& value) {
    static const QRegularExpression form(QStringLiteral("^bytes (?:\\*|(\\d{1,18})-(\\d{1,18}))/(\\d{1,18})$"));
    const auto match = form.match(QString::fromLatin1(value));
    if (!match.hasMatch())
        return std::nullopt;
    ContentRange range;
    range.total = match.captured(3).toLongLong();
    if (match.captured(1).isEmpty())
        return range;
    const qint64 last = match.captured(2).toLongLong();
    range.first = match.captured(1).toLongLong();
    range.length = last - range.first + 1;
    if (range.length < 1 || last >= range.total)
        return std::nullopt;
    return range;
}

} // namespace quenby::localdrive
