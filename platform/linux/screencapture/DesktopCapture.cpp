#include "platform/linux/screencapture/DesktopCapture.h"

#include "platform/linux/screencapture/DesktopPicture.h"
#include "platform/linux/screencapture/PictureFile.h"
#include "platform/linux/screencapture/WindowList.h"
#include "platform/linux/screencapture/XScreens.h"

#include <QGuiApplication>
#include <QScreen>

#include <cerrno>

namespace quenby {

DesktopCapture::DesktopCapture(const QByteArray& path)
    : path_(path) {}

DesktopCapture::~DesktopCapture() = default;

void DesktopCapture::start() {
    const auto display = XDisplay::ofApplication();
    picture_ = display ? takeDesktopPicture(*display) : QImage();
    if (picture_.isNull())
        return fail(ENOTSUP, QStringLiteral("The picture of the screen could not be read from the display. Try again "
                                            "with fewer colours or screens, or use another tool."));
    screens_ = readScreens(*display);
    overlay_ = std::make_unique<CaptureOverlay>(
        *display, picture_, CaptureGround{display->desktop(), screens_, readWindows(*display, screens_)});
    // Queued: the overlay must not go while it tells.
    connect(overlay_.get(), &CaptureOverlay::chosen, this, &DesktopCapture::save, Qt::QueuedConnection);
    connect(overlay_.get(), &CaptureOverlay::cancelled, this, &DesktopCapture::cancel, Qt::QueuedConnection);
    const auto refuse = [this] {
        fail(EBUSY, QStringLiteral("Another program keeps the pointer or the keyboard to itself. Close its menu or "
                                   "window, and take the picture again."));
    };
    connect(overlay_.get(), &CaptureOverlay::refused, this, refuse, Qt::QueuedConnection);
    watchScreens();
    overlay_->open();
}

void DesktopCapture::cancel() { end(std::nullopt); }

// The picture would no longer be what the screens show, nor the overlay lie where they are.
void DesktopCapture::watchScreens() {
    const auto stop = [this] {
        fail(ECANCELED, QStringLiteral("The screens changed while a part of them was being chosen. Take the picture "
                                       "again."));
    };
    connect(qApp, &QGuiApplication::screenAdded, this, stop);
    connect(qApp, &QGuiApplication::screenRemoved, this, stop);
    for (const QScreen* screen : QGuiApplication::screens())
        connect(screen, &QScreen::geometryChanged, this, stop);
}

void DesktopCapture::save(const QRect& rectangle) {
    if (hasEnded_)
        return;
    // Saving takes a moment, in which the user goes on working.
    overlay_.reset();
    end(savePicture(picture_.copy(rectangle), scaleOf(screens_, rectangle), path_));
}

void DesktopCapture::fail(int code, const QString& reason) {
    end(Error(errorDomain::posix, code, {{errorKey::reason, reason}}));
}

void DesktopCapture::end(const MaybeError& error) {
    if (std::exchange(hasEnded_, true))
        return;
    overlay_.reset();
    QMetaObject::invokeMethod(
        this, [this, error] { Q_EMIT ended(error); }, Qt::QueuedConnection);
}

} // namespace quenby
