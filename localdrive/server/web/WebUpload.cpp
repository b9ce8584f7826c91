#include "localdrive/server/web/WebUpload.h"

#include "localdrive/server/http/HttpMessages.h"

#include <QMimeDatabase>

#include <cerrno>

namespace quenby::localdrive {
namespace {

// Bytes are written in pieces of this size.
constexpr qsizetype pieceSize = qsizetype{256} * 1024;

const QString anyBytes = QStringLiteral("application/octet-stream");

Error interrupted() {
    return Error(errorDomain::posix, ECONNABORTED,
                 {{errorKey::reason, QStringLiteral("The file did not arrive as a whole. Send it again.")}});
}

} // namespace

void discardBody(const httplib::ContentReader& read) {
    read([](const char*, size_t) { return true; });
}

QString mediaTypeOf(const QString& name, const QByteArray& said) {
    QString type = QString::fromLatin1(said).section(QLatin1Char(';'), 0, 0).trimmed().toLower();
    if (!type.isEmpty() && type != anyBytes)
        return type;
    return QMimeDatabase().mimeTypeForFile(name, QMimeDatabase::MatchExtension).name();
}

WebUpload::WebUpload(BlobStore& blobs)
    : blobs_(blobs)
    , part_(QString::fromLatin1(randomSecret(18))) {}

WebUpload::~WebUpload() { blobs_.discardIncoming(part_); }

Result<StagedBlob> WebUpload::receive(const httplib::ContentReader& read, qint64 length) {
    const auto opened = blobs_.incoming(part_);
    if (!opened) {
        discardBody(read);
        return opened.error();
    }
    IncomingBlob& blob = **opened;
    MaybeError failure;
    QByteArray piece;
    piece.reserve(pieceSize);
    // After a failure the rest is read all the same: only then does the browser look at the reply.
    const auto flush = [&] {
        if (!failure)
            if (const auto appended = blob.append(blob.size(), piece); !appended)
                failure = appended.error();
        piece.resize(0);
    };
    const bool isWhole = read([&](const char* bytes, size_t size) {
        piece.append(bytes, static_cast<qsizetype>(size));
        if (piece.size() >= pieceSize)
            flush();
        return true;
    });
    flush();
    if (failure)
        return *failure;
    if (!isWhole || blob.size() != length)
        return interrupted();
    return blob.finish();
}

} // namespace quenby::localdrive
