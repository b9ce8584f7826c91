#include "platform/linux/desktop/NotificationPicture.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QGuiApplication>
#include <QIcon>
#include <QPixmap>

namespace quenby {
QDBusArgument& operator<<(QDBusArgument& to, const BusPicture& picture) {
    to.beginStructure();
    to << picture.width << picture.height << picture.rowLength << picture.hasAlpha << picture.bitsPerSample
       << picture.channels << picture.pixels;
    to.endStructure();
    return to;
}

const QDBusArgument& operator>>(const QDBusArgument& from, BusPicture& picture) {
    from.beginStructure();
    from >> picture.width >> picture.height >> picture.rowLength >> picture.hasAlpha >> picture.bitsPerSample >>
        picture.channels >> picture.pixels;
    from.endStructure();
    return from;
}

namespace {

constexpr int largest = 96;  // pixels, either way
constexpr int iconSize = 64; // pixels; services scale it to the size of their icons

QImage fitting(const QImage& picture) {
    if (picture.width() <= largest && picture.height() <= largest)
        return picture;
    return picture.scaled(largest, largest, Qt::KeepAspectRatio, Qt::SmoothTransformation);
}

} // namespace

QVariant pictureForBus(const QImage& picture) {
    [[maybe_unused]] static const QMetaType registered = qDBusRegisterMetaType<BusPicture>();
    // Four bytes a pixel leave no gaps between the rows; services differ in what they expect after the last one.
    const QImage sent = fitting(picture).convertToFormat(QImage::Format_RGBA8888);
    BusPicture result;
    result.width = sent.width();
    result.height = sent.height();
    result.rowLength = static_cast<int>(sent.bytesPerLine());
    result.pixels = QByteArray(reinterpret_cast<const char*>(sent.constBits()), sent.sizeInBytes());
    return QVariant::fromValue(result);
}

QImage programPicture() {
    const QIcon icon = QGuiApplication::windowIcon();
    // By its true size: the notification service has a scale of its own.
    return icon.isNull() ? QImage() : icon.pixmap(QSize(iconSize, iconSize), 1.0).toImage();
}

} // namespace quenby
