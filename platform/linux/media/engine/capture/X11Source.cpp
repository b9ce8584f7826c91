#include "platform/linux/media/engine/capture/X11Source.h"

#include "platform/linux/media/ServerGrabs.h"
#include "platform/linux/media/engine/capture/EvenCrop.h"

#include <QGuiApplication>
#include <QScreen>

namespace quenby {

void X11Source::prepare(const CaptureInput& input) {
    useNoServerGrabs(); // also in programs that do without the module
    const QRect crop = evenCrop(input.cropRect, input.display.pixels.size());
    if (crop.isEmpty()) {
        const Error error(URLErrorCode::unknown,
                          {{errorKey::reason, QStringLiteral("Nothing of the selection lies on the screen. Select an "
                                                             "area and try again.")}});
        QMetaObject::invokeMethod(
            this, [this, error] { Q_EMIT failed(error); }, Qt::QueuedConnection);
        return;
    }
    CaptureFeed feed;
    feed.description = x11SourceDescription(crop.translated(input.display.pixels.topLeft()), input.maximumFrameRate);
    // A place that is not on the screen makes the element show the whole screen instead.
    feed.onlySize = crop.size();
    watchDisplay(input.display.name);
    QMetaObject::invokeMethod(
        this, [this, feed] { Q_EMIT prepared(feed); }, Qt::QueuedConnection);
}

// The server goes on showing the place where a display was, and nobody sees it any more.
void X11Source::watchDisplay(const QString& name) {
    auto* const application = qobject_cast<QGuiApplication*>(QCoreApplication::instance());
    if (!application || name.isEmpty())
        return;
    connect(application, &QGuiApplication::screenRemoved, this, [this, name](const QScreen* screen) {
        if (screen->name() == name)
            Q_EMIT gone();
    });
}

QByteArray x11SourceDescription(const QRect& pixels, int frameRate) {
    // Asking only for what changed costs half as much again when much does, and saves nothing when little does.
    const auto number = [](int value) { return QByteArray::number(value); };
    return "ximagesrc use-damage=false show-pointer=true startx=" + number(pixels.left()) +
           " starty=" + number(pixels.top()) + " endx=" + number(pixels.right()) + " endy=" + number(pixels.bottom()) +
           " ! capsfilter caps=video/x-raw,framerate=" + number(frameRate) + "/1";
}

} // namespace quenby
