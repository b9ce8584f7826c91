#include "platform/linux/screencapture/PictureFile.h"

#include "platform/linux/screencapture/ReplacingFile.h"

#include <QImageWriter>

#include <cerrno>

namespace quenby {
namespace {

constexpr qreal dotsPerPoint = 96 / 0.0254; // per metre: 96 points make an inch
// Of the encoder's 0 (largest, fastest) to 100: beyond this, files hardly get smaller, and take several times as long.
constexpr int compression = 40;

} // namespace

MaybeError savePicture(QImage picture, qreal scale, const QByteArray& path) {
    ReplacingFile file(path);
    if (auto error = file.open())
        return error;
    picture.setDotsPerMeterX(qRound(dotsPerPoint * scale));
    picture.setDotsPerMeterY(qRound(dotsPerPoint * scale));
    QImageWriter writer(&file.device(), QByteArrayLiteral("png"));
    writer.setCompression(compression);
    writer.setText(QStringLiteral("Software"), QStringLiteral("Quenby"));
    errno = 0;
    if (!writer.write(picture))
        return file.error(errno != 0 ? errno : EIO);
    return file.commit();
}

} // namespace quenby
