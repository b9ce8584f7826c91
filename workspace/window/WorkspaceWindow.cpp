#include "workspace/window/WorkspaceWindow.h"

#include "platform/Defaults.h"
#include "workspace/window/AccountView.h"
#include "workspace/window/WelcomeView.h"
#include "workspace/window/WorkspacePane.h"
#include "workspace/window/WorkspaceToolBar.h"

#include <QAction>
#include <QEvent>
#include <QScreen>
#include <QShortcut>
#include <QStackedWidget>

namespace quenby {
namespace {

constexpr QSize usualSize(1180, 760);
constexpr int smallestWidth = 500; // the views tell how high they must be

QString placeKey() { return QStringLiteral("WorkspaceWindowGeometry"); }

} // namespace

WorkspaceWindow::WorkspaceWindow(Defaults& defaults)
    : defaults_(defaults)
    , views_(new QStackedWidget(this))
    , welcomeView_(new WelcomeView(views_))
    , pane_(new WorkspacePane(defaults, views_)) {
    setWindowTitle(QStringLiteral("Quenby"));
    setObjectName(QStringLiteral("WorkspaceWindow"));
    views_->addWidget(welcomeView_);
    views_->addWidget(pane_);
    setCentralWidget(views_);
    setMinimumWidth(smallestWidth);
    restorePlace();
    // Where there are tabs, the same keys close one of them.
    connect(new QShortcut(QKeySequence::Close, welcomeView_), &QShortcut::activated, this, &QWidget::close);
    connect(new QShortcut(QKeySequence(Qt::Key_F11), this), &QShortcut::activated, this,
            &WorkspaceWindow::FullScreenButtonToolbarAction);
    connect(toolBar().action(ToolBarCommand::fullScreen), &QAction::triggered, this,
            &WorkspaceWindow::FullScreenButtonToolbarAction);
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
    views_->setCurrentWidget(pane_);
    pane_->focusFirst();
}

AccountView& WorkspaceWindow::accountView() const { return pane_->accountView(); }

WorkspaceToolBar& WorkspaceWindow::toolBar() const { return pane_->toolBar(); }

void WorkspaceWindow::setTabs(QWidget* tabs) { pane_->setTabs(tabs); }

void WorkspaceWindow::setDownloadsView(QWidget* view) { pane_->setDownloadsView(view); }

void WorkspaceWindow::showAddress(const QString& address) { pane_->showAddress(address); }

bool WorkspaceWindow::isShowingWelcome() const { return views_->currentWidget() == welcomeView_; }

void WorkspaceWindow::setCommandsMenu(QMenu* menu) {
    welcomeView_->setCommandsMenu(menu);
    toolBar().setCommandsMenu(menu);
}

void WorkspaceWindow::bringToFront() {
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateWindow();
}

// --- Full screen ----------------------------------------------------------------------------------------------------

void WorkspaceWindow::setFullScreen(bool isOn) {
    setWindowState(isOn ? windowState() | Qt::WindowFullScreen : windowState() & ~Qt::WindowFullScreen);
}

void WorkspaceWindow::FullScreenButtonToolbarAction() { setFullScreen(!isFullScreen()); }

void WorkspaceWindow::setPageFullScreen(bool isOn) {
    if (isOn == isPageFullScreen_)
        return;
    isPageFullScreen_ = isOn;
    if (isOn)
        wasFullScreen_ = isFullScreen();
    pane_->setPageAlone(isOn);
    setFullScreen(isOn || wasFullScreen_);
}

void WorkspaceWindow::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::WindowStateChange) {
        toolBar().action(ToolBarCommand::fullScreen)->setChecked(isFullScreen());
        if (isPageFullScreen_ && !isFullScreen()) {
            setPageFullScreen(false);
            Q_EMIT pageFullScreenLeft();
        }
    }
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
