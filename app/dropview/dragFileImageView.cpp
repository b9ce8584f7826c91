#include "app/dropview/dragFileImageView.h"

#include "app/dropview/DropPicture.h"
#include "app/dropview/DroppedFiles.h"

#include <QDragEnterEvent>
#include <QPainter>

namespace quenby {
namespace {

constexpr qreal cornerRadius = 10;

QColor lightGrey() { return QColor::fromRgbF(2 / 3.0F, 2 / 3.0F, 2 / 3.0F); }

// Uploading copies; nothing is ever moved out of its folder by a drop.
void takeAsCopy(QDropEvent& event) {
    event.setDropAction(Qt::CopyAction);
    event.accept();
}

} // namespace

dragFileImageView::dragFileImageView(QWidget* parent)
    : QWidget(parent) {
    setAcceptDrops(true);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    setAccessibleName(QStringLiteral("Drop files here to upload them"));
}

void dragFileImageView::setBackgroundColour(const QColor& colour) {
    backgroundColour_ = colour;
    update();
}

void dragFileImageView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(backgroundColour_);
    painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), cornerRadius, cornerRadius);

    const bool isHighlighted = backgroundColour_ != QColor(Qt::transparent);
    // The highlight is light on every desktop.
    const QColor ink = isHighlighted ? QColor(Qt::black) : palette().color(QPalette::WindowText);
    QColor accent = ink;
    accent.setAlphaF(isHighlighted ? 0.7F : 0.35F);
    paintDropPicture(painter, rect(), {ink, accent, accessibleName(), font()});
}

void dragFileImageView::dragEnterEvent(QDragEnterEvent* event) {
    if (!holdsRegularFile(droppedPaths(*event->mimeData()))) {
        event->ignore();
        return;
    }
    Q_EMIT raiseRequested();
    setBackgroundColour(lightGrey());
    takeAsCopy(*event);
}

// What was taken on entry is taken everywhere inside.
void dragFileImageView::dragMoveEvent(QDragMoveEvent* event) { takeAsCopy(*event); }

void dragFileImageView::dragLeaveEvent(QDragLeaveEvent*) { setBackgroundColour(Qt::transparent); }

void dragFileImageView::dropEvent(QDropEvent* event) {
    setBackgroundColour(Qt::transparent);
    const QList<QByteArray> paths = droppedPaths(*event->mimeData());
    if (paths.isEmpty()) {
        event->ignore();
        return;
    }
    takeAsCopy(*event);
    if (holdsRegularFile(paths))
        Q_EMIT filesDropped(paths);
}

} // namespace quenby
