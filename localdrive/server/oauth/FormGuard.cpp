#include "localdrive/server/oauth/FormGuard.h"

#include "localdrive/server/http/HttpMessages.h"

#include <QMessageAuthenticationCode>

namespace quenby::localdrive {
namespace {

constexpr QByteArrayView cookieName("quenby_form");

} // namespace

FormGuard::FormGuard()
    : key_(randomSecret()) {}

QByteArray FormGuard::mark(const QByteArray& fields, const httplib::Request& request,
                           httplib::Response& response) const {
    QByteArray nonce = cookie(request, cookieName);
    if (nonce.isEmpty()) {
        nonce = randomSecret(18);
        const QByteArray value = cookieName + "=" + nonce + "; Path=/; HttpOnly; SameSite=Strict";
        response.headers.emplace("Set-Cookie", value.toStdString());
    }
    return sign(nonce, fields);
}

bool FormGuard::accepts(const QByteArray& mark, const QByteArray& fields, const httplib::Request& request) const {
    const QByteArray nonce = cookie(request, cookieName);
    return !nonce.isEmpty() && equalSecrets(mark, sign(nonce, fields));
}

QByteArray FormGuard::sign(const QByteArray& nonce, const QByteArray& fields) const {
    return QMessageAuthenticationCode::hash(nonce + '\n' + fields, key_, QCryptographicHash::Sha256)
        .toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals);
}

} // namespace quenby::localdrive
