// The monitors as the X server has them: exactly, in pixels. The toolkit divides their sizes by the scale and rounds.
#pragma once

#include <QList>
#include <QRect>
#include <QString>

struct xcb_connection_t;

namespace quenby {

struct ScreenMonitor {
    QString name;
    QRect pixels; // in the root window
};

// Empty when the server cannot tell. Asks the server and waits for its answer.
QList<ScreenMonitor> readMonitors(xcb_connection_t* connection, quint32 root);

// The pixels of the toolkit's screen of this name, geometry and scale: those of the monitor that it stands for, or,
// when there is none, about what the geometry and the scale make, within the root window. The toolkit leaves the origin
// of a screen in pixels. Pure. Threads: any.
QRect pixelsOfScreen(const QString& name, const QRect& geometry, qreal scale, const QList<ScreenMonitor>& monitors,
                     const QRect& root);

} // namespace quenby
