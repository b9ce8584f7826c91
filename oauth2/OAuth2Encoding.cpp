#include "oauth2/OAuth2Encoding.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QUrl>

#include <algorithm>

namespace quenby::oauth2 {

QString encodedOAuthValueForString(const QString& value) { return QString::fromLatin1(QUrl::toPercentEncoding(value)); }

QString encodedQueryParametersForDictionary(const FormFields& fields) {
    QStringList keys = fields.keys();
    std::stable_sort(keys.begin(), keys.end(),
                     [](const QString& a, const QString& b) { return a.compare(b, Qt::CaseInsensitive) < 0; });
    QStringList pairs;
    for (const QString& key : std::as_const(keys))
        pairs.append(QString(key + QLatin1Char('=') + encodedOAuthValueForString(fields.value(key))));
    return pairs.join(QLatin1Char('&'));
}

FormFields dictionaryWithResponseString(const QString& response) {
    FormFields fields;
    const QStringList pairs = response.split(QLatin1Char('&'), Qt::SkipEmptyParts);
    for (const QString& pair : pairs) {
        const qsizetype equals = pair.indexOf(QLatin1Char('='));
        if (equals > 0)
            fields.insert(pair.first(equals), QUrl::fromPercentEncoding(pair.sliced(equals + 1).toUtf8()));
    }
    return fields;
}

FormFields dictionaryWithResponseData(const QByteArray& response) {
    return dictionaryWithResponseString(QString::fromUtf8(response));
}

QVariantMap toVariantMap(const FormFields& fields) {
    QVariantMap map;
    for (auto field = fields.begin(); field != fields.end(); ++field)
        map.insert(field.key(), field.value());
    return map;
}

std::optional<QVariantMap> dictionaryWithJSONData(const QByteArray& data) {
    const QJsonDocument document = QJsonDocument::fromJson(data);
    if (!document.isObject())
        return std::nullopt;
    return document.object().toVariantMap();
}

QString scopeWithStrings(const QStringList& scopes) {
    QStringList present = scopes;
    present.removeAll(QString());
    return present.join(QLatin1Char(' '));
}

QByteArray decodeWebSafeBase64(const QString& text) {
    const auto decoded = QByteArray::fromBase64Encoding(text.toLatin1(), QByteArray::Base64UrlEncoding |
                                                                             QByteArray::AbortOnBase64DecodingErrors);
    return decoded ? *decoded : QByteArray();
}

} // namespace quenby::oauth2
