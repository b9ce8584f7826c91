#include "workspace/window/WorkspaceWindow.h"

#include "platform/Defaults.h"
#include "workspace/window/AccountView.h"
#include "workspace/window/WelcomeView.h"

#include <QEvent>
#include <QScreen>
#include <QShortcut>
#include <QStackedWidget>

namespace quenby {
namespace {

constexpr QSize usualSize(720, 640);
constexpr int smallestWidth = 500; // the views tell how high they must be

QString placeKey() { return QStringLiteral("WorkspaceWindowGeometry"); }

} // namespace

WorkspaceWindow::WorkspaceWindow(Defaults& defaults)
    : defaults_(defaults)
    , views_(new QStackedWidget(this))
    , welcomeView_(new WelcomeView(views_))
    , accountView_(new AccountView(views_)) {
    setWindowTitle(QStringLiteral("Quenby"));
    setObjectName(QStringLiteral("WorkspaceWindow"));
    views_->addWidget(welcomeView_);
    views_->addWidget(accountView_);
    setCentralWidget(views_);
    setMinimumWidth(smallestWidth);
    restorePlace();
    connect(new QShortcut(QKeySequence::Close, this), &QShortcut::activated, this, &QWidget::close);
    showWelcome();
}

WorkspaceWindow::~WorkspaceWindow() {
    if (isVisible())
        keepPlace();
}

void WorkspaceWindow::showWelcome() {
    views_->setCurrentWidget(welcomeView_);
    welcomeView_->focusFirst();
}

void WorkspaceWindow::showAccount() {
    views_->setCurrentWidget(accountView_);
    accountView_->focusFirst();
}

bool WorkspaceWindow::isShowingWelcome() const { return views_->currentWidget() == welcomeView_; }

void WorkspaceWindow::setCommandsMenu(QMenu* menu) {
    welcomeView_->setCommandsMenu(menu);
    accountView_->setCommandsMenu(menu);
}

void WorkspaceWindow::bringToFront() {
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateWindow();
}

void WorkspaceWindow::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        Q_EMIT becameKey();
}

void WorkspaceWindow::hideEvent(QHideEvent* event) {
    // A minimised window is told the same, and is still where it was.
    keepPlace();
    QMainWindow::hideEvent(event);
}

void WorkspaceWindow::restorePlace() {
    // Text, so that it stays readable to every store of settings. One that makes no sense is as good as none.
    const QByteArray place = QByteArray::fromBase64(defaults_.valueForKey(placeKey()).toString().toLatin1());
    if (place.isEmpty() || !restoreGeometry(place))
        resize(usualSize.boundedTo(screen()->availableSize()));
}

void WorkspaceWindow::keepPlace() {
    const QString place = QString::fromLatin1(saveGeometry().toBase64());
    if (defaults_.valueForKey(placeKey()).toString() != place)
        defaults_.setValueForKey(placeKey(), place);
}

} // namespace quenby
