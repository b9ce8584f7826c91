#include "recording/review/ReviewWindow.h"

#include "recording/review/PlayerPane.h"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QShortcut>

namespace quenby {
namespace {

using namespace std::chrono_literals;

constexpr auto keyStep = 1s;
constexpr int volumeStep = 5; // of 100

} // namespace

ReviewWindow::ReviewWindow()
    : QDialog(nullptr, Qt::Window) {
    setObjectName(QStringLiteral("ReviewWindow"));
    setAttribute(Qt::WA_QuitOnClose, false);
    connect(new QShortcut(QKeySequence::Close, this), &QShortcut::activated, this, &QWidget::close);
    connect(new QShortcut(QKeySequence(Qt::Key_F11), this), &QShortcut::activated, this,
            &ReviewWindow::toggleFullScreen);
}

void ReviewWindow::toggleFullScreen() { setWindowState(windowState() ^ Qt::WindowFullScreen); }

void ReviewWindow::reject() {
    if (isFullScreen())
        toggleFullScreen();
}

void ReviewWindow::keyPressEvent(QKeyEvent* event) {
    const Qt::KeyboardModifiers modifiers = event->modifiers() & ~Qt::KeypadModifier;
    if (modifiers == Qt::NoModifier) {
        switch (event->key()) {
        case Qt::Key_Space:
            return player_->togglePlaying();
        case Qt::Key_Left:
            return player_->moveBy(isLeftToRight() ? -keyStep : keyStep);
        case Qt::Key_Right:
            return player_->moveBy(isLeftToRight() ? keyStep : -keyStep);
        case Qt::Key_Up:
            return player_->changeVolumeBy(volumeStep);
        case Qt::Key_Down:
            return player_->changeVolumeBy(-volumeStep);
        case Qt::Key_F:
            return toggleFullScreen();
        default:
            break;
        }
    }
    QDialog::keyPressEvent(event);
}

void ReviewWindow::changeEvent(QEvent* event) {
    QDialog::changeEvent(event);
    if (event->type() == QEvent::WindowStateChange && std::exchange(wasFullScreen_, isFullScreen()) != isFullScreen())
        Q_EMIT fullScreenChanged(isFullScreen());
}

// Not the dialog's own way, which would be Escape's.
void ReviewWindow::closeEvent(QCloseEvent* event) {
    event->accept();
    Q_EMIT closed();
}

} // namespace quenby
