// The picture of a notification, as it travels over the bus.
#pragma once

#include <QByteArray>
#include <QImage>
#include <QVariant>

class QDBusArgument;

namespace quenby {

// The value of the hint "image-data" (D-Bus: iiibiiay): rows from the top, each pixel as red, green, blue and alpha.
struct BusPicture {
    int width = 0; // pixels, as the height
    int height = 0;
    int rowLength = 0; // bytes
    bool hasAlpha = true;
    int bitsPerSample = 8;
    int channels = 4;
    QByteArray pixels;
};

QDBusArgument& operator<<(QDBusArgument& to, const BusPicture& picture);
const QDBusArgument& operator>>(const QDBusArgument& from, BusPicture& picture);

// A BusPicture that is not larger than a notification has room for. The picture must not be null.
QVariant pictureForBus(const QImage& picture);

// The program's icon, as its windows have it; null without one. Threads: the main thread.
QImage programPicture();

} // namespace quenby
