#include "platform/linux/desktop/StripHost.h"

#include <QGuiApplication>

namespace quenby {

StripHost::StripHost(StripWindow::Neighbour neighbour)
    : neighbour_(std::move(neighbour)) {}

StripHost::~StripHost() {
    // A drag that is over the window ends with it, and is still told.
    window_.reset();
}

void StripHost::show(const StatusItemFace& face, QMenu&) {
    window_ = std::make_unique<StripWindow>(face, neighbour_);
    connect(window_.get(), &StripWindow::clicked, this, &StripHost::clicked);
    connect(window_.get(), &StripWindow::middleClicked, this, &StripHost::middleClicked);
    connect(window_.get(), &StripWindow::menuRequested, this, &StripHost::menuRequested);
    connect(window_.get(), &StripWindow::dragEntered, this, &StripHost::dragEntered);
    connect(window_.get(), &StripWindow::dragEnded, this, &StripHost::dragEnded);
    connect(window_.get(), &StripWindow::dropped, this, &StripHost::dropped);
    window_->show();
}

void StripHost::update() {
    if (window_)
        window_->renew();
}

QRect StripHost::geometry() const {
    // On Wayland no window knows where it is.
    const bool isPlaceKnown = !QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
    // There is no frame; the one that the toolkit measures may be what a window manager puts around without showing it.
    return window_ && isPlaceKnown ? window_->geometry() : QRect();
}

} // namespace quenby
