#include "localdrive/store/Text.h"

#include <QRegularExpression>
#include <QTimeZone>
#include <QVariant>

#include <cmath>

namespace quenby::localdrive {

QString cleaned(const QString& text) {
    if (text.isValidUtf16())
        return text;
    QString whole;
    whole.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const bool isPair = text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate();
        whole += text[i].isSurrogate() && !isPair ? QChar(QChar::ReplacementCharacter) : text[i];
        if (isPair)
            whole += text[++i];
    }
    return whole;
}

QString searchKey(const QString& text) { return text.normalized(QString::NormalizationForm_C).toCaseFolded(); }

QString dateText(const QDateTime& date) {
    return date.isValid() ? date.toUTC().toString(Qt::ISODateWithMs) : QString();
}

QString dateText(const QVariant& milliseconds) {
    return milliseconds.isNull() ? QString()
                                 : dateText(QDateTime::fromMSecsSinceEpoch(milliseconds.toLongLong(), Qt::UTC));
}

std::optional<QDateTime> parsedDate(const QString& text) {
    static const QRegularExpression pattern(QRegularExpression::anchoredPattern(
        QStringLiteral("(\\d{4})-(\\d\\d)-(\\d\\d)"
                       "(?:[Tt ](\\d\\d):(\\d\\d):(\\d\\d)(\\.\\d+)?(?:([Zz])|([+-])(\\d\\d):(\\d\\d))?)?")));
    const QRegularExpressionMatch match = pattern.match(text);
    if (!match.hasMatch())
        return std::nullopt;
    const auto number = [&match](int group) { return match.captured(group).toInt(); };

    const QDate date(number(1), number(2), number(3));
    // A leap second is taken for the second before it.
    const QTime time(number(4), number(5), std::min(number(6), 59));
    const int zoneMinutes = number(10) * 60 + number(11);
    if (!date.isValid() || !time.isValid() || number(6) > 60 || number(10) > 23 || number(11) > 59)
        return std::nullopt;
    const auto milliseconds = static_cast<qint64>(std::floor(match.captured(7).toDouble() * 1000));
    const qint64 offset = qint64{zoneMinutes} * 60 * (match.captured(9) == QLatin1String("-") ? -1 : 1);
    return QDateTime(date, time, Qt::UTC).addMSecs(milliseconds).addSecs(-offset);
}

QJsonValue int64(qint64 number) { return QString::number(number); }

} // namespace quenby::localdrive
