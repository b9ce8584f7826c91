#include "app/pictures/PictureDecoder.h"

#include "app/pictures/InterruptibleBytes.h"
#include "app/pictures/PictureFormat.h"

#include <QImageReader>

#include <chrono>

namespace quenby {
namespace {

using namespace std::chrono_literals;

constexpr auto patience = 5s;
// A decoder may hold all of them at four bytes each, and some more.
constexpr qint64 mostPixels = 16'000'000;

bool isTooLarge(QSize size) { return size.isEmpty() || qint64{size.width()} * size.height() > mostPixels; }

// The size to decode to. A picture that lies on its side is turned after it was scaled.
QSize fitted(QSize size, bool liesOnItsSide) {
    const QSize room = liesOnItsSide ? rowPictureSize.transposed() : rowPictureSize;
    if (size.width() <= room.width() && size.height() <= room.height())
        return size;
    return size.scaled(room, Qt::KeepAspectRatio).expandedTo({1, 1});
}

// The pixels alone, as they are painted fastest: no texts, no colour profile.
QImage bare(const QImage& image) {
    const QImage pixels =
        image.convertToFormat(image.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
    return QImage(pixels.constBits(), pixels.width(), pixels.height(), pixels.bytesPerLine(), pixels.format()).copy();
}

} // namespace

QImage decodedRowPicture(const QByteArray& bytes, const std::atomic<bool>& isGivenUp) {
    const PictureFormat* format = pictureFormatOf(bytes);
    if (!format || !format->isWhole(bytes))
        return {};
    InterruptibleBytes device(format->essence ? format->essence(bytes) : bytes, QDeadlineTimer(patience), isGivenUp);
    QImageReader reader(&device, format->name);
    reader.setAutoDetectImageFormat(false);
    reader.setAutoTransform(true);
    const QSize declared = reader.size();
    if (isTooLarge(declared))
        return {};
    const QSize fitting = fitted(declared, reader.transformation().testFlag(QImageIOHandler::TransformationRotate90));
    if (fitting != declared)
        reader.setScaledSize(fitting);
    QImage image = reader.read();
    if (image.isNull() || device.wasInterrupted())
        return {};
    // What was declared need not be what came.
    if (const QSize size = fitted(image.size(), false); size != image.size())
        image = image.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    return bare(image);
}

} // namespace quenby
