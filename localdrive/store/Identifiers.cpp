#include "localdrive/store/Identifiers.h"

#include <QCryptographicHash>
#include <QRandomGenerator>
#include <QRegularExpression>

namespace quenby::localdrive {
namespace {

constexpr auto base64 = QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals;

QByteArray randomBytes(qsizetype count) {
    QByteArray bytes(count, Qt::Uninitialized);
    for (char& byte : bytes)
        byte = static_cast<char>(QRandomGenerator::system()->bounded(256));
    return bytes;
}

// The prefix and as many random characters as make up the length.
QString randomId(const char* prefix, qsizetype length) {
    const QByteArray characters = prefix + randomBytes(length).toBase64(base64);
    return QString::fromLatin1(characters.first(length));
}

} // namespace

QString newFileId() { return randomId("1", 44); }

bool isPlausibleFileId(const QString& id) {
    static const QRegularExpression form(QRegularExpression::anchoredPattern(QStringLiteral("[A-Za-z0-9_-]{25,64}")));
    return form.match(id).hasMatch();
}

QString newRootFolderId() { return randomId("0A", 19); }

QString newItemId() { return randomId("0B", 28); }

QByteArray newKey() { return randomBytes(32); }

QString entityTag(const QByteArray& text) {
    const QByteArray digest = QCryptographicHash::hash(text, QCryptographicHash::Sha1).toBase64(base64);
    return QLatin1Char('"') + QString::fromLatin1(digest) + QLatin1Char('"');
}

} // namespace quenby::localdrive
