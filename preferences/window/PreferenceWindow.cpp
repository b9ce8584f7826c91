#include "preferences/window/PreferenceWindow.h"

#include "preferences/window/PaneBar.h"

#include <QCloseEvent>
#include <QCursor>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLayout>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QShortcut>
#include <QStyle>

#include <algorithm>

namespace quenby {
namespace {

// All in logical pixels.
constexpr int usualWidth = 540;
constexpr int frameAllowance = 48; // what the desktop may put around a window, when the screen is hardly high enough

constexpr Qt::WindowFlags normalWindow = Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                                         Qt::WindowSystemMenuHint | Qt::WindowMinimizeButtonHint |
                                         Qt::WindowCloseButtonHint;

// A layout within a layout goes by what it wanted before, until the outer one is activated. For a view that is not seen
// yet, the toolkit does that too late.
QSize neededSize(const QWidget& view) {
    if (view.layout())
        view.layout()->activate();
    return view.minimumSizeHint().expandedTo(view.minimumSize());
}

int heightFor(const QWidget& view, int width) {
    const int needed = neededSize(view).height();
    return view.hasHeightForWidth() ? std::max(needed, view.heightForWidth(width)) : needed;
}

} // namespace

PreferenceWindow::PreferenceWindow()
    : QWidget(nullptr, normalWindow)
    , bar_(new PaneBar(this)) {
    setObjectName(QStringLiteral("PreferenceWindow"));
    setAttribute(Qt::WA_QuitOnClose, false);
    setWindowTitle(tr("Preferences"));
    animation_.setEasingCurve(QEasingCurve::InOutQuad);
    connect(&animation_, &QVariantAnimation::valueChanged, this,
            [this](const QVariant& height) { setHeight(height.toInt()); });
    connect(bar_, &PaneBar::currentChanged, this, &PreferenceWindow::turnTo);
    connect(new QShortcut(QKeySequence::Close, this), &QShortcut::activated, this, &QWidget::close);
}

// --- The panes ------------------------------------------------------------------------------------------------------

void PreferenceWindow::addPane(const Pane& pane) {
    bar_->addItem(pane.name, pane.glyph); // which the Tab key reaches before the view
    auto* area = new QScrollArea(this);
    area->setFrameShape(QFrame::NoFrame);
    area->setFocusPolicy(Qt::NoFocus);
    area->setWidgetResizable(true);
    area->setWidget(pane.view);
    area->hide();
    pane.view->setAccessibleName(pane.name);
    area->viewport()->installEventFilter(this);
    rooms_.append({area, pane.height});
}

void PreferenceWindow::showPane(int index) { bar_->setCurrent(index); }

void PreferenceWindow::turnTo(int index) {
    // Keys that are pressed next must not reach whatever comes after a control that is no longer seen.
    if (bar_->isAncestorOf(focusWidget()))
        bar_->setFocus();
    else
        setFocus();
    layOut();
    for (int i = 0; i < rooms_.size(); ++i)
        rooms_.at(i).area->setVisible(i == index);
    goToPane();
}

// --- The height -----------------------------------------------------------------------------------------------------

// As far as the screen reaches; what is wider is scrolled.
int PreferenceWindow::widthOfPanes() const {
    int width = std::max(usualWidth, bar_->sizeHint().width());
    for (const Room& room : rooms_)
        width = std::max(width, neededSize(*room.area->widget()).width());
    return std::min(width, screen()->availableGeometry().width());
}

int PreferenceWindow::neededHeight() const {
    const Room& room = rooms_.at(bar_->current());
    const QWidget& view = *room.area->widget();
    const int width = widthOfPanes();
    const int scrollBar = neededSize(view).width() > width ? room.area->horizontalScrollBar()->sizeHint().height() : 0;
    return std::max(room.height, bar_->sizeHint().height() + heightFor(view, width) + scrollBar);
}

int PreferenceWindow::heightOfPane() const {
    return std::min(neededHeight(), screen()->availableGeometry().height() - frameAllowance);
}

// A view has the room of its rest from the first moment on, and nothing in it moves while the window follows.
void PreferenceWindow::layOut() {
    const int barHeight = bar_->sizeHint().height();
    bar_->setGeometry(0, 0, width(), barHeight);
    if (bar_->current() < 0)
        return;
    QScrollArea* area = rooms_.at(bar_->current()).area;
    const int height = heightOfPane();
    // Once it is there, a scroll bar narrows a text until that needs the bar.
    area->setVerticalScrollBarPolicy(height < neededHeight() ? Qt::ScrollBarAsNeeded : Qt::ScrollBarAlwaysOff);
    area->setGeometry(0, barHeight, width(), height - barHeight);
}

void PreferenceWindow::setHeight(int height) {
    const QSize size(widthOfPanes(), height);
    setBaseSize(size); // at a scale such as 1.5, the toolkit lets windows grow in steps, which begin here
    setFixedSize(size);
}

void PreferenceWindow::fitToPane() {
    if (bar_->current() < 0)
        return;
    animation_.stop();
    setHeight(heightOfPane());
    layOut();
}

void PreferenceWindow::goToPane() {
    const int duration = style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this);
    if (!isVisible() || isMinimized() || duration <= 0)
        return fitToPane();
    layOut();
    const int target = heightOfPane();
    const bool isUnderWay = animation_.state() == QAbstractAnimation::Running;
    const int goal = isUnderWay ? animation_.endValue().toInt() : height();
    if (goal == target && width() == widthOfPanes())
        return;
    const int from = isUnderWay ? animation_.currentValue().toInt() : height();
    animation_.stop();
    animation_.setDuration(duration);
    animation_.setStartValue(from);
    animation_.setEndValue(target);
    animation_.start();
}

void PreferenceWindow::moveToMiddle() {
    const QScreen* under = QGuiApplication::screenAt(QCursor::pos());
    const QRect room = (under ? under : screen())->availableGeometry();
    QRect place(QPoint(), size());
    place.moveCenter(room.center());
    move(place.topLeft());
}

// --- Events ---------------------------------------------------------------------------------------------------------

bool PreferenceWindow::event(QEvent* event) {
    if (event->type() == QEvent::LayoutRequest && bar_->current() >= 0)
        goToPane();
    return QWidget::event(event);
}

// A view that needs more room than before, or less, tells what it stands in. Several such events come as one.
bool PreferenceWindow::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::LayoutRequest)
        QCoreApplication::postEvent(this, new QEvent(QEvent::LayoutRequest));
    return QWidget::eventFilter(watched, event);
}

void PreferenceWindow::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::Cancel))
        close();
    else
        QWidget::keyPressEvent(event);
}

void PreferenceWindow::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    layOut();
}

void PreferenceWindow::closeEvent(QCloseEvent* event) {
    event->accept();
    Q_EMIT closed();
}

} // namespace quenby
