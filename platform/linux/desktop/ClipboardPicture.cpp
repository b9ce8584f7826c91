#include "platform/linux/desktop/ClipboardPicture.h"

#include <QBuffer>
#include <QFile>
#include <QImageReader>
#include <QImageWriter>
#include <QLoggingCategory>
#include <QMimeData>
#include <QSaveFile>

#include <algorithm>

namespace quenby {
namespace {

Q_LOGGING_CATEGORY(clipboardLog, "quenby.clipboard", QtInfoMsg)

constexpr int lempelZivWelch = 1; // of the toolkit's TIFF writer
constexpr qint64 bytesOfPixel = 4;

// The toolkit's, for pictures that were copied within this program. Its hasImage() would ask an owner that does not
// answer for every format there is, and wait for seconds each time.
const QString decodedType = QStringLiteral("application/x-qt-image");

bool isPicture(const QString& type) { return type.startsWith(QLatin1String("image/")); }

// First those that lose nothing; TIFF before PNG, which takes many owners seconds to make.
QStringList readableTypes(const QStringList& offered) {
    const QStringList preferred{QStringLiteral("image/tiff"), QStringLiteral("image/png"), QStringLiteral("image/webp"),
                                QStringLiteral("image/bmp"), QStringLiteral("image/jpeg")};
    QStringList types;
    for (const QString& type : preferred + offered) {
        if (isPicture(type) && offered.contains(type) && !types.contains(type) &&
            !QImageReader::imageFormatsForMimeType(type.toLatin1()).isEmpty())
            types.append(type);
    }
    return types;
}

bool isTooLarge(QSize size) {
    const qint64 limit = qint64{QImageReader::allocationLimit()} * 1024 * 1024; // 0: none
    return limit > 0 && size.isValid() && qint64{size.width()} * size.height() * bytesOfPixel > limit;
}

QImage decoded(const ClipboardPicture& picture) {
    if (!picture.image.isNull())
        return picture.image;
    QBuffer buffer;
    buffer.setData(picture.bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer, picture.format);
    reader.setAutoDetectImageFormat(false);
    reader.setAutoTransform(true);
    return isTooLarge(reader.size()) ? QImage() : reader.read();
}

} // namespace

bool hasPicture(const QMimeData& data) {
    const QStringList types = data.formats();
    return types.contains(decodedType) || std::any_of(types.cbegin(), types.cend(), isPicture);
}

ClipboardPicture fetchPicture(const QMimeData& data) {
    const QStringList offered = data.formats();
    const QStringList types = readableTypes(offered);
    if (types.isEmpty())
        return {{}, {}, offered.contains(decodedType) ? data.imageData().value<QImage>() : QImage()};
    const QByteArray format = QImageReader::imageFormatsForMimeType(types.first().toLatin1()).first();
    return {format, data.data(types.first()), {}};
}

bool writeAsTiff(const ClipboardPicture& picture, const QByteArray& path) {
    const QImage image = decoded(picture);
    if (image.isNull())
        return false;
    QSaveFile file(QFile::decodeName(path));
    if (!file.open(QIODevice::WriteOnly))
        return false;
    QImageWriter writer(&file, "tiff");
    writer.setCompression(lempelZivWelch);
    if (writer.write(image) && file.commit())
        return true;
    qCWarning(clipboardLog, "a copied picture could not be written: %s",
              qUtf8Printable(writer.error() == QImageWriter::UnsupportedFormatError
                                 ? QStringLiteral("there is no TIFF; install qt6-image-formats-plugins")
                                 : file.errorString()));
    return false;
}

} // namespace quenby
