#include "localdrive/server/http/HttpMessages.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <openssl/crypto.h>
#include <openssl/rand.h>

namespace quenby::localdrive {

QByteArray header(const httplib::Request& request, const char* name) {
    return QByteArray::fromStdString(request.get_header_value(name));
}

QString parameter(const httplib::Request& request, const char* name) {
    return QString::fromStdString(request.get_param_value(name));
}

QByteArray cookie(const httplib::Request& request, QByteArrayView name) {
    for (const QByteArray& pair : header(request, "Cookie").split(';')) {
        const QByteArray trimmed = pair.trimmed();
        if (trimmed.startsWith(name) && trimmed.mid(name.size()).startsWith('='))
            return trimmed.mid(name.size() + 1);
    }
    return {};
}

QString pathPart(const httplib::Request& request, size_t index) {
    return QString::fromStdString(request.matches[index].str());
}

std::optional<QByteArray> bearerToken(const httplib::Request& request) {
    if (!request.has_header("Authorization"))
        return std::nullopt;
    const QByteArray value = header(request, "Authorization");
    constexpr QByteArrayView scheme("Bearer ");
    const bool isBearer =
        QByteArrayView(value).first(std::min(value.size(), scheme.size())).compare(scheme, Qt::CaseInsensitive) == 0;
    return isBearer ? value.mid(scheme.size()).trimmed() : QByteArray();
}

QByteArray body(const httplib::Request& request) { return QByteArray::fromStdString(request.body); }

void send(httplib::Response& response, int status, const QByteArray& content, const char* contentType) {
    response.status = status;
    response.set_content(content.constData(), static_cast<size_t>(content.size()), contentType);
}

void sendJson(httplib::Response& response, int status, const QJsonObject& object) {
    send(response, status, QJsonDocument(object).toJson(QJsonDocument::Compact), "application/json");
}

QJsonObject apiErrorBody(int status, const QString& reason, const QString& message, ErrorForm form) {
    const QJsonObject detail{{QStringLiteral("domain"), QStringLiteral("global")},
                             {QStringLiteral("reason"), reason},
                             {QStringLiteral("message"), message}};
    const QString details = form == ErrorForm::rest ? QStringLiteral("errors") : QStringLiteral("data");
    const QJsonObject error{
        {QStringLiteral("code"), status}, {QStringLiteral("message"), message}, {details, QJsonArray{detail}}};
    return {{QStringLiteral("error"), error}};
}

void sendApiError(httplib::Response& response, int status, const char* reason, const QString& message, ErrorForm form) {
    sendJson(response, status, apiErrorBody(status, QString::fromLatin1(reason), message, form));
}

bool equalSecrets(const QByteArray& a, const QByteArray& b) {
    return a.size() == b.size() && CRYPTO_memcmp(a.constData(), b.constData(), static_cast<size_t>(a.size())) == 0;
}

QByteArray randomSecret(qsizetype bytes) {
    QByteArray secret(bytes, Qt::Uninitialized);
    if (RAND_bytes(reinterpret_cast<unsigned char*>(secret.data()), static_cast<int>(bytes)) != 1)
        qFatal("The system's random generator failed.");
    return secret.toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals);
}

} // namespace quenby::localdrive
