#include "oauth2/ProofKey.h"

#include <QCryptographicHash>
#include <QRandomGenerator>

#include <array>

namespace quenby::oauth2 {
namespace {

QString webSafeBase64(const QByteArray& bytes) {
    return QString::fromLatin1(bytes.toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals));
}

QString makeUnguessable() {
    std::array<quint32, 8> random{};
    QRandomGenerator::system()->fillRange(random.data(), random.size());
    return webSafeBase64(QByteArray(reinterpret_cast<const char*>(random.data()), sizeof(random)));
}

} // namespace

QString makeCodeVerifier() { return makeUnguessable(); }

QString makeState() { return makeUnguessable(); }

QString codeChallengeForVerifier(const QString& verifier) {
    return webSafeBase64(QCryptographicHash::hash(verifier.toLatin1(), QCryptographicHash::Sha256));
}

} // namespace quenby::oauth2
