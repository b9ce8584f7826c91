#include "platform/linux/desktop/TrayHost.h"

#include "platform/linux/desktop/FaceIconEngine.h"
#include "platform/linux/desktop/Surrounding.h"

#include <QEvent>
#include <QGuiApplication>
#include <QMenu>

namespace quenby {

TrayHost::TrayHost(TrayKind kind)
    : kind_(kind) {
    connect(&icon_, &QSystemTrayIcon::activated, this, &TrayHost::take);
    qApp->installEventFilter(this);
}

TrayHost::~TrayHost() = default;

QString TrayHost::protocol() const {
    return kind_ == TrayKind::statusNotifier ? QStringLiteral("StatusNotifierItem") : QStringLiteral("XEmbed");
}

void TrayHost::show(const StatusItemFace& face, QMenu& menu) {
    face_ = &face;
    picture_ = QImage();
    update();
    if (kind_ == TrayKind::statusNotifier)
        menuCopy_ = std::make_unique<TrayMenuCopy>(menu);
    icon_.setContextMenu(menuCopy_ ? &menuCopy_->menu() : &menu);
    icon_.show();
}

void TrayHost::update() {
    if (!face_)
        return;
    const QIcon icon(new FaceIconEngine(*face_, isDark(QGuiApplication::palette())));
    // The largest size that is sent shows every difference.
    const QImage picture = icon.pixmap(64).toImage();
    if (picture != picture_) {
        picture_ = picture;
        icon_.setIcon(icon);
    }
    if (const QString toolTip = face_->toolTip(); toolTip != icon_.toolTip())
        icon_.setToolTip(toolTip);
}

QRect TrayHost::geometry() const { return icon_.geometry(); }

bool TrayHost::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::ApplicationPaletteChange && watched == qApp)
        update();
    return StatusItemHost::eventFilter(watched, event);
}

void TrayHost::take(QSystemTrayIcon::ActivationReason reason) {
    // A double click began with a click, and the menu is the tray's own.
    if (reason == QSystemTrayIcon::Trigger)
        Q_EMIT clicked();
    else if (reason == QSystemTrayIcon::MiddleClick)
        Q_EMIT middleClicked();
}

} // namespace quenby
