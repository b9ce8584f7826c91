#include "platform/linux/desktop/StripWindow.h"

#include "core/LocalPaths.h"
#include "platform/linux/desktop/Surrounding.h"

#include <QDragEnterEvent>
#include <QGuiApplication>
#include <QMimeData>
#include <QPainter>
#include <QScreen>

namespace quenby {
namespace {

// In logical pixels. The margin makes an item of no width something that can be seen and hit.
constexpr int sideMargin = 6;
constexpr int edgeMargin = 3;
// Leaves the buttons of maximised windows free.
constexpr int distanceFromRight = 160;
constexpr int gapBetweenStrips = 4;

constexpr int mostCorrections = 5;

QList<QByteArray> draggedPaths(const QDropEvent& event) {
    return localPathsOfList(event.mimeData()->data(QStringLiteral("text/uri-list")));
}

// A tool tip guesses whether its text is markup; this leaves it no choice.
QString plainToolTip(const QString& text) {
    return text.isEmpty()
               ? text
               : QStringLiteral("<p style=\"white-space:pre\">") % text.toHtmlEscaped() % QStringLiteral("</p>");
}

void acceptCopy(QDropEvent& event) {
    event.setDropAction(Qt::CopyAction);
    event.accept();
}

} // namespace

StripWindow::StripWindow(const StatusItemFace& face, Neighbour neighbour)
    : QWidget(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::WindowDoesNotAcceptFocus)
    , face_(face)
    , neighbour_(std::move(neighbour)) {
    // Window managers keep a dock above other windows, on every desktop, and out of their lists.
    setAttribute(Qt::WA_X11NetWmWindowTypeDock);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_OpaquePaintEvent);
    // The program does not end because a window beside it was closed.
    setAttribute(Qt::WA_QuitOnClose, false);
    setAcceptDrops(true);
    setWindowTitle(QStringLiteral("Quenby Status"));
    connect(qApp, &QGuiApplication::primaryScreenChanged, this, &StripWindow::watchScreen);
    watchScreen(QGuiApplication::primaryScreen());
    renew();
}

StripWindow::~StripWindow() { endDrag(); }

void StripWindow::renew() {
    setAccessibleName(face_.title());
    setAccessibleDescription(face_.toolTip());
    setToolTip(plainToolTip(face_.toolTip()));
    place();
    update();
}

void StripWindow::watchScreen(QScreen* screen) {
    if (!screen)
        return;
    connect(screen, &QScreen::geometryChanged, this, &StripWindow::place, Qt::UniqueConnection);
    connect(screen, &QScreen::availableGeometryChanged, this, &StripWindow::place, Qt::UniqueConnection);
    place();
}

void StripWindow::place() {
    const QScreen* const screen = QGuiApplication::primaryScreen();
    if (!screen)
        return;
    const QSize size = face_.size() + QSize(2 * sideMargin, 2 * edgeMargin);
    const QRect area = screen->availableGeometry();
    const QRect neighbour = neighbour_ ? neighbour_() : QRect();
    const int end = neighbour.isEmpty() ? area.right() + 1 - distanceFromRight : neighbour.left() - gapBetweenStrips;
    const int x = qMax(area.left(), end - size.width());
    wanted_ = QRect(QPoint(x, area.top()), size);
    corrections_ = 0;
    setFixedSize(size);
    move(wanted_.topLeft());
}

// While a window manager takes the window into its care, the toolkit may be told of a place in between as the last one,
// and then menus open there. Asking again makes the window manager tell the true one. A window manager that will not
// have it so gets its way in the end.
void StripWindow::insistOnPlace() {
    if (geometry() == wanted_ || corrections_ >= mostCorrections)
        return;
    ++corrections_;
    const auto askAgain = [this] { setGeometry(wanted_); };
    QMetaObject::invokeMethod(this, askAgain, Qt::QueuedConnection);
}

void StripWindow::moveEvent(QMoveEvent*) { insistOnPlace(); }

void StripWindow::resizeEvent(QResizeEvent*) { insistOnPlace(); }

void StripWindow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    // A frame that is open towards the screen's edge, on which it hangs.
    painter.fillRect(rect(), palette().color(QPalette::Mid));
    painter.fillRect(rect().adjusted(1, 0, -1, -1), palette().color(QPalette::Window));
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(sideMargin, edgeMargin);
    const QRect item(QPoint(0, 0), face_.size());
    painter.setClipRect(item);
    face_.paint(painter, item, isDark(palette()));
}

void StripWindow::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton)
        Q_EMIT clicked();
    else if (event->button() == Qt::MiddleButton)
        Q_EMIT middleClicked();
    else if (event->button() == Qt::RightButton)
        Q_EMIT menuRequested(mapToGlobal(rect().bottomLeft() + QPoint(0, 1)));
}

void StripWindow::dragEnterEvent(QDragEnterEvent* event) {
    const QList<QByteArray> paths = draggedPaths(*event);
    if (paths.isEmpty() || !face_.acceptsFiles(paths)) {
        event->ignore();
        return;
    }
    acceptCopy(*event);
    if (!isDraggedOver_) {
        isDraggedOver_ = true;
        Q_EMIT dragEntered();
    }
}

void StripWindow::dragMoveEvent(QDragMoveEvent* event) {
    if (isDraggedOver_)
        acceptCopy(*event);
    else
        event->ignore();
}

void StripWindow::dragLeaveEvent(QDragLeaveEvent*) { endDrag(); }

void StripWindow::dropEvent(QDropEvent* event) {
    const QList<QByteArray> paths = draggedPaths(*event);
    if (!paths.isEmpty()) {
        acceptCopy(*event);
        Q_EMIT dropped(paths);
    }
    endDrag();
}

void StripWindow::endDrag() {
    if (!isDraggedOver_)
        return;
    isDraggedOver_ = false;
    Q_EMIT dragEnded();
}

} // namespace quenby
