// The text forms in which OAuth 2.0 parameters travel: form encoding, JSON, scope lists, URL-safe base64.
#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <optional>

namespace quenby::oauth2 {

using FormFields = QMap<QString, QString>;

// UTF-8, with everything percent-encoded but letters, digits and "-._~".
QString encodedOAuthValueForString(const QString& value);

// "key=value" pairs joined by "&", ordered by key without regard to case. Keys stand as they are.
QString encodedQueryParametersForDictionary(const FormFields& fields);

// Reads what encodedQueryParametersForDictionary() writes. A pair ends its key at the first "="; pairs without one
// are skipped; of several pairs with one key the last counts. A "+" is a plus sign: tokens may hold one.
FormFields dictionaryWithResponseString(const QString& response);
FormFields dictionaryWithResponseData(const QByteArray& response); // UTF-8

QVariantMap toVariantMap(const FormFields& fields);

// Nothing unless the data is one whole JSON object.
std::optional<QVariantMap> dictionaryWithJSONData(const QByteArray& data);

// The non-empty strings, joined by spaces (RFC 6749, section 3.3).
QString scopeWithStrings(const QStringList& scopes);

// Base64 with "-" and "_", padded or not (RFC 4648, section 5); null when the text is none.
QByteArray decodeWebSafeBase64(const QString& text);

} // namespace quenby::oauth2
