#include "core/Redaction.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QStringList>

#include <algorithm>
#include <array>

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

QJsonValue withoutSecrets(const QJsonValue& value) {
    if (value.isArray()) {
        QJsonArray array;
        for (const QJsonValue& element : value.toArray())
            array.append(withoutSecrets(element));
        return array;
    }
    if (!value.isObject())
        return value.isString() ? QJsonValue(text(value.toString())) : value;
    QJsonObject object = value.toObject();
    for (auto member = object.begin(); member != object.end(); ++member) {
        const bool isSecret = member.value().isString() && isSecretName(member.key().toUtf8());
        member.value() = isSecret ? QJsonValue(QLatin1String(snip)) : withoutSecrets(member.value());
    }
    return object;
}

} // namespace

QByteArray formBody(const QByteArray& body) {
    QList<QByteArray> pairs = body.split('&');
    for (QByteArray& pair : pairs) {
        const qsizetype equals = pair.indexOf('=');
        if (equals > 0 && isSecretName(QByteArrayView(pair).first(equals)))
            pair = pair.first(equals + 1) + snip;
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

QString text(const QString& given) {
    static const QRegularExpression scheme(
        QStringLiteral("\\b(Bearer|OAuth|Basic|GoogleLogin auth=)( ?)[A-Za-z0-9._~+/=-]{6,}"),
        QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression pair(QStringLiteral("(?<![A-Za-z0-9_])(%1)=[^&\\s\"'<>]+").arg(alternatives()),
                                         QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression member(
        QStringLiteral("(\"(?:%1)\"\\s*:\\s*\")(?:[^\"\\\\]|\\\\.)*").arg(alternatives()),
        QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression upload(
        QStringLiteral("(https?://[^\\s\"'<>?]*/upload/[^\\s\"'<>?]*\\?)[^\\s\"'<>]*"));
    static const QRegularExpression userInfo(QStringLiteral("(https?://)[^\\s/@\"'<>]+@"));
    QString shown = given;
    shown.replace(upload, QStringLiteral("\\1") + QLatin1String(snip));
    shown.replace(userInfo, QStringLiteral("\\1") + QLatin1String(snip) + QLatin1Char('@'));
    shown.replace(scheme, QStringLiteral("\\1\\2") + QLatin1String(snip));
    shown.replace(member, QStringLiteral("\\1") + QLatin1String(snip));
    shown.replace(pair, QStringLiteral("\\1=") + QLatin1String(snip));
    return shown;
}

} // namespace quenby::redaction
