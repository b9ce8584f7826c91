#include "app/pictures/PictureFile.h"

#include "app/pictures/PictureDecoder.h"
#include "app/pictures/PictureDownload.h"

#include <QBuffer>
#include <QCryptographicHash>
#include <QFileInfo>
#include <QImageWriter>
#include <QSaveFile>

#include <algorithm>

namespace quenby {
namespace {

bool isOrdinary(const QString& identifier) {
    constexpr qsizetype longest = 128; // the Drive's have 28 to 44 characters
    const auto isPlain = [](QChar character) {
        return (character < QChar(u'\x80') && character.isLetterOrNumber()) || character == QLatin1Char('-') ||
               character == QLatin1Char('_');
    };
    return !identifier.isEmpty() && identifier.size() <= longest &&
           std::all_of(identifier.cbegin(), identifier.cend(), isPlain);
}

// TIFF, although the name says PNG: who reads the file goes by its content. Where the toolkit lacks its TIFF plug-in,
// PNG.
QByteArray encoded(const QImage& picture) {
    constexpr int lzw = 1; // how the TIFF writer calls lossless compression
    static const bool hasTiff = QImageWriter::supportedImageFormats().contains("tiff");
    QBuffer buffer;
    QImageWriter writer(&buffer, hasTiff ? "tiff" : "png");
    if (hasTiff)
        writer.setCompression(lzw);
    return writer.write(picture) ? buffer.data() : QByteArray();
}

} // namespace

QString pictureFileName(const QString& identifier) {
    const QString extension = QStringLiteral(".png");
    if (isOrdinary(identifier))
        return identifier + extension;
    const QByteArray text(reinterpret_cast<const char*>(identifier.utf16()), identifier.size() * qsizetype{2});
    const QByteArray digest = QCryptographicHash::hash(text, QCryptographicHash::Sha256).toHex();
    // The dot keeps digests apart from ordinary identifiers, which have none.
    return QStringLiteral("digest.") + QString::fromLatin1(digest) + extension;
}

QImage readPictureFile(const QString& path, const std::atomic<bool>& isGivenUp) {
    const QFileInfo info(path);
    QFile file(path);
    // Opening a pipe would wait for whoever writes to it.
    if (!info.isFile() || info.size() > PictureDownload::mostBytes || !file.open(QIODevice::ReadOnly))
        return {};
    return decodedRowPicture(file.read(PictureDownload::mostBytes), isGivenUp);
}

void writePictureFile(const QString& path, const QImage& picture, const std::atomic<bool>& isGivenUp) {
    const QByteArray bytes = encoded(picture);
    QSaveFile file(path);
    if (bytes.isEmpty() || isGivenUp || !file.open(QIODevice::WriteOnly))
        return;
    file.write(bytes);
    if (isGivenUp)
        file.cancelWriting();
    file.commit();
}

} // namespace quenby
