#include "driveapi/GTLUtilities.h"

#include <QStringList>

#include <algorithm>

namespace quenby::GTLUtilities {
namespace {

QString percentEscaped(const QString& text, const QByteArray& kept) {
    // Half of a surrogate pair has no UTF-8 form.
    if (!text.isValidUtf16())
        return text;
    return QString::fromLatin1(QUrl::toPercentEncoding(text, kept));
}

} // namespace

QUrl URLWithString(const QString& text, const GTLStringMap& queryParameters) {
    if (text.isEmpty() || queryParameters.isEmpty())
        return QUrl(text);
    QStringList names = queryParameters.keys();
    std::stable_sort(names.begin(), names.end(), [](const QString& left, const QString& right) {
        return left.compare(right, Qt::CaseInsensitive) < 0;
    });
    QStringList pairs;
    for (const QString& name : std::as_const(names)) {
        pairs.append(stringByURLEncodingStringParameter(name) + QLatin1Char('=') +
                     stringByURLEncodingStringParameter(queryParameters.value(name)));
    }
    const QLatin1Char joint(text.contains(QLatin1Char('?')) ? '&' : '?');
    return QUrl(text + joint + pairs.join(QLatin1Char('&')));
}

QString stringByURLEncodingForURI(const QString& text) { return percentEscaped(text, {}); }

QString stringByURLEncodingStringParameter(const QString& text) {
    return percentEscaped(text, " ").replace(QLatin1Char(' '), QLatin1Char('+'));
}

QByteArray stringByPercentEncodingUTF8ForString(const QString& text) {
    QByteArray escaped;
    for (const char character : text.toUtf8()) {
        if (character < ' ' || character > '~' || character == '%')
            escaped += '%' + QByteArray(1, character).toHex().toUpper();
        else
            escaped += character;
    }
    return escaped;
}

QString stringByURLEncodingString(const QString& text) { return percentEscaped(text, "!*'();:@&=+$,/?"); }

std::strong_ordering compareVersion(const QString& left, const QString& right) {
    const QStringList leftParts = left.split(QLatin1Char('.'));
    const QStringList rightParts = right.split(QLatin1Char('.'));
    for (qsizetype i = 0; i < std::max(leftParts.size(), rightParts.size()); ++i) {
        const auto order = leftParts.value(i).toInt() <=> rightParts.value(i).toInt();
        if (order != 0)
            return order;
    }
    return std::strong_ordering::equal;
}

} // namespace quenby::GTLUtilities
