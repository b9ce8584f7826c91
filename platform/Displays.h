// The screens of this desktop: where each of them lies, in points and in pixels.
//
// Points are the toolkit's logical units, global, the origin at the top left of the desktop, y downwards. Pixels are
// the device's own, within the picture of the whole desktop. Threads: the main thread.
#pragma once

#include "platform/Service.h"

#include <QImage>
#include <QList>
#include <QObject>
#include <QRect>
#include <QString>

class QScreen;

namespace quenby {

struct Display {
    quint32 identifier = 0; // of this display for as long as it is connected; never 0
    QString name;           // the output's: "HDMI-1"
    QRect frame;            // points
    QRect pixels;           // in the desktop's picture; on Wayland, where there is none, its origin is (0, 0)
    qreal scale = 1;        // pixels for one point

    friend bool operator==(const Display&, const Display&) = default;
};

class Displays : public QObject, public PlatformService {
    Q_OBJECT

public:
    // In the platform's order. Never empty while the program has a display.
    virtual QList<Display> all() const = 0;
    // The main one: it holds the panel, and the coordinates of recordings start at its lower left.
    virtual Display main() const = 0;
    // The toolkit's name for it; null when it has gone.
    virtual QScreen* screen(const Display& display) const = 0;
    // Whether a translucent window lets through what lies below. Without it, an overlay shows a picture instead.
    virtual bool isComposited() const = 0;
    // What the display shows now, in pixels; null where the desktop does not give it away (Wayland).
    virtual QImage picture(const Display& display) const = 0;

Q_SIGNALS:
    // One came, went, was moved, rotated or scaled.
    void changed();
};

} // namespace quenby
