#include "core/Redaction.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QStringList>

#include <algorithm>
#include <array>
#include <vector>

namespace quenby::redaction {
namespace {

constexpr std::array secretNames{
    "access_token", "refresh_token", "id_token", "client_secret", "code",     "code_verifier", "assertion",
    "token",        "oauth_token",   "Passwd",   "passwd",        "password", "upload_id",
};

bool isSecretName(QByteArrayView name) {
    return std::any_of(secretNames.begin(), secretNames.end(), [name](const char* secret) {
        return name.compare(QByteArrayView(secret), Qt::CaseInsensitive) == 0;
    });
}

QString alternatives() {
    QStringList names;
    for (const char* name : secretNames)
        names.append(QString::fromLatin1(name));
    return names.join(QLatin1Char('|'));
}

// Upload addresses are recognised by their path; what else their query holds is as secret as the session's name.
bool isUploadAddress(const QUrl& url) {
    return url.path().contains(QStringLiteral("/upload/")) || url.query().contains(QStringLiteral("upload_id="));
}

// Everything below a secret name. Numbers and booleans stay: an error's "code" is one.
QJsonValue withoutStrings(const QJsonValue& value) {
    if (value.isString())
        return QLatin1String(snip);
    if (value.isArray()) {
        QJsonArray array = value.toArray();
        std::transform(array.begin(), array.end(), array.begin(),
                       [](const auto& item) { return withoutStrings(item); });
        return array;
    }
    QJsonObject object = value.toObject();
    std::transform(object.begin(), object.end(), object.begin(), [](const auto& item) { return withoutStrings(item); });
    return value.isObject() ? QJsonValue(object) : value;
}

QJsonValue withoutSecrets(const QJsonValue& value) {
    if (value.isString())
        return text(value.toString());
    if (value.isArray()) {
        QJsonArray array = value.toArray();
        std::transform(array.begin(), array.end(), array.begin(),
                       [](const auto& item) { return withoutSecrets(item); });
        return array;
    }
    QJsonObject object = value.toObject();
    for (auto member = object.begin(); member != object.end(); ++member)
        member.value() =
            isSecretName(member.key().toUtf8()) ? withoutStrings(member.value()) : withoutSecrets(member.value());
    return value.isObject() ? QJsonValue(object) : value;
}

// An address or a form may travel as a value inside another one.
QByteArray withoutNestedSecrets(const QByteArray& encoded) {
    const QString decoded = QString::fromUtf8(QByteArray::fromPercentEncoding(encoded));
    const QString shown = text(decoded);
    return shown == decoded ? encoded : shown.toUtf8().toPercentEncoding();
}

struct Rule {
    QRegularExpression pattern;
    QString replacement;
};

// How secrets look inside free text. %1 stands for the alternatives of secret names. Repeated groups are possessive: a
// value of megabytes would exhaust the matcher's stack otherwise, and then stay.
const std::vector<Rule>& textRules() {
    static const std::vector<Rule> rules = [] {
        const std::pair<const char*, const char*> table[] = {
            // Upload addresses: the whole query.
            {R"re((https?://[^\s"'<>?]*/upload/[^\s"'<>?]*\?)[^\s"'<>]*)re", R"(\1_snip_)"},
            {R"re((https?://)[^\s/@"'<>]+@)re", R"(\1_snip_@)"},
            {R"re(\b(Bearer\s+|OAuth\s+|Basic\s+|GoogleLogin auth=)(?!\w+=")[A-Za-z0-9._~+/=-]{6,})re", R"(\1_snip_)"},
            // JSON members, also of JSON that is a string inside JSON or was cut off.
            {R"re(("(?:%1)"\s*:\s*")[^"\\]*+(?:\\.[^"\\]*+)*+)re", R"(\1_snip_)"},
            {R"re((\\+"(?:%1)\\+"\s*:\s*\\+")[^"\\]*)re", R"(\1_snip_)"},
            // Pairs, bare or quoted, and percent-encoded ones inside an address.
            {R"re((?:(?<![A-Za-z0-9_])|(?<=%[0-9A-F]{2}))(%1)=(["']?)[^&\s"'<>]+)re", R"(\1=\2_snip_)"},
            {R"re((?:(?<![A-Za-z0-9_])|(?<=%[0-9A-F]{2}))(%1)%3D(?:[^&\s"'<>%]|%(?!26))++)re", R"(\1%3D_snip_)"},
            // XML elements (a number is no secret) and form fields of pages.
            {R"re((<(%1)>)(?!\d+<)[^<]+)re", R"(\1_snip_)"},
            {R"re((\bname=["']?(?:%1)["']?\s[^>]*?\bvalue=["']?)[^"'>\s]+)re", R"(\1_snip_)"},
            {R"re((\bvalue=["'])[^"']+(["'][^>]*?\bname=["']?(?:%1)["'\s/>]))re", R"(\1_snip_\2)"},
        };
        std::vector<Rule> made;
        for (const auto& [pattern, replacement] : table)
            made.push_back(
                {QRegularExpression(QString::fromLatin1(pattern).replace(QStringLiteral("%1"), alternatives()),
                                    QRegularExpression::CaseInsensitiveOption),
                 QString::fromLatin1(replacement)});
        return made;
    }();
    return rules;
}

} // namespace

QByteArray formBody(const QByteArray& body) {
    QList<QByteArray> pairs = body.split('&');
    for (QByteArray& pair : pairs) {
        const qsizetype equals = pair.indexOf('=');
        if (equals <= 0)
            continue;
        const QByteArray name = QByteArray::fromPercentEncoding(pair.first(equals));
        const QByteArray value = pair.sliced(equals + 1);
        pair = pair.first(equals + 1) + (isSecretName(name) ? QByteArray(snip) : withoutNestedSecrets(value));
    }
    return pairs.join('&');
}

QByteArray jsonBody(const QByteArray& body) {
    const QJsonDocument document = QJsonDocument::fromJson(body);
    if (document.isObject())
        return QJsonDocument(withoutSecrets(document.object()).toObject()).toJson(QJsonDocument::Indented);
    if (document.isArray())
        return QJsonDocument(withoutSecrets(document.array()).toArray()).toJson(QJsonDocument::Indented);
    return text(QString::fromUtf8(body)).toUtf8();
}

QByteArray headerValue(const QByteArray& name, const QByteArray& value) {
    const auto is = [&name](const char* other) { return name.compare(other, Qt::CaseInsensitive) == 0; };
    if (is("Authorization") || is("Proxy-Authorization")) {
        for (const QByteArrayView scheme : {QByteArrayView("Bearer "), QByteArrayView("OAuth "),
                                            QByteArrayView("GoogleLogin auth="), QByteArrayView("Basic ")}) {
            if (value.first(std::min(value.size(), scheme.size())).compare(scheme, Qt::CaseInsensitive) == 0)
                return value.first(scheme.size()) + snip;
        }
        static const QRegularExpression quoted(QStringLiteral("oauth_token=\"[^\"]*"));
        QString line = QString::fromLatin1(value);
        if (line.contains(quoted))
            return line.replace(quoted, QStringLiteral("oauth_token=\"") + QLatin1String(snip)).toLatin1();
        return snip;
    }
    if (is("Cookie") || is("Set-Cookie")) {
        static const QRegularExpression cookieValue(QStringLiteral("^([^=;]*=)[^;]*"));
        static const QRegularExpression cookieValues(QStringLiteral("([^=;\\s]+=)[^;]*"));
        QString line = QString::fromLatin1(value);
        return line.replace(is("Cookie") ? cookieValues : cookieValue, QStringLiteral("\\1") + QLatin1String(snip))
            .toLatin1();
    }
    if (is("Location") || is("Content-Location") || is("Referer"))
        return url(QUrl::fromEncoded(value)).toUtf8();
    const QByteArray lowered = name.toLower();
    if (lowered.contains("token") || lowered.contains("secret") || lowered.contains("password"))
        return snip;
    return text(QString::fromLatin1(value)).toLatin1();
}

QString url(const QUrl& address) {
    QUrl shown = address;
    if (!shown.userInfo().isEmpty())
        shown.setUserInfo(QLatin1String(snip));
    if (shown.hasQuery()) {
        const QString query = isUploadAddress(shown)
                                  ? QString::fromLatin1(snip)
                                  : QString::fromUtf8(formBody(shown.query(QUrl::FullyEncoded).toUtf8()));
        shown.setQuery(query);
    }
    if (shown.hasFragment())
        shown.setFragment(QString::fromUtf8(formBody(shown.fragment(QUrl::FullyEncoded).toUtf8())));
    return shown.toString(QUrl::FullyEncoded);
}

QString secretURL(const QUrl& address) {
    QUrl shown;
    shown.setScheme(address.scheme());
    shown.setHost(address.host());
    shown.setPort(address.port());
    return shown.toString(QUrl::FullyEncoded) + QLatin1Char('/') + QLatin1String(snip);
}

QString text(const QString& given) {
    QString shown = given;
    for (const Rule& rule : textRules())
        shown.replace(rule.pattern, rule.replacement);
    return shown;
}

} // namespace quenby::redaction
