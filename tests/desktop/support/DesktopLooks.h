// What a person sees of the program on the desktop: its item in the panel's tray, and its notifications (of dunst).
#pragma once

#include "tests/desktop/support/QuenbyProcess.h"

#include <QGuiApplication>
#include <QImage>
#include <QPixmap>
#include <QProcess>
#include <QScreen>

namespace quenby::testing {

// The panel lies along the lower edge; its tray is at the right end, and has nothing but our item.
inline QPoint trayItem() { return QGuiApplication::primaryScreen()->geometry().bottomRight() - QPoint(15, 15); }

// A gauge is drawn: there is more than the panel's own ground.
inline bool isItemSeen() {
    const QPoint item = trayItem();
    const QImage picture =
        QGuiApplication::primaryScreen()->grabWindow(0, item.x() - 11, item.y() - 11, 23, 23).toImage();
    int darkest = 255;
    int lightest = 0;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x) {
            darkest = qMin(darkest, qGray(picture.pixel(x, y)));
            lightest = qMax(lightest, qGray(picture.pixel(x, y)));
        }
    return lightest - darkest > 90;
}

// What the notification service's own command answers.
inline QByteArray notificationService(const QStringList& arguments) {
    QProcess tool;
    tool.start(QStringLiteral("dunstctl"), arguments);
    tool.waitForFinished(QuenbyProcess::patience);
    return tool.readAllStandardOutput().trimmed();
}

} // namespace quenby::testing
