#include "popover/changes/TableRow.h"

#include "popover/changes/RowPicture.h"
#include "popover/changes/ShareButton.h"
#include "popover/changes/SharePanel.h"
#include "widgets/PlainToolTip.h"

#include <QHelpEvent>
#include <QPainter>
#include <QTextOption>
#include <QToolTip>

#include <algorithm>
#include <cmath>

namespace quenby {
namespace {

constexpr int textPixels = 13;
constexpr int longestToolTip = 400; // characters
constexpr QRect shareButtonFrame(18, 6, 56, 29);

QStaticText lineOf(const QString& text, const QFont& font) {
    QStaticText line(text);
    line.setTextFormat(Qt::PlainText);
    QTextOption option;
    option.setTextDirection(Qt::LeftToRight); // the verb stands behind the name, whatever language the name is in
    option.setWrapMode(QTextOption::NoWrap);
    line.setTextOption(option);
    line.prepare({}, font);
    return line;
}

void paintLine(QPainter& painter, const QRect& frame, Qt::LayoutDirection direction, const QStaticText& line) {
    const QSizeF size = line.size();
    const qreal x = direction == Qt::RightToLeft ? frame.right() + 1 - size.width() : frame.left();
    painter.drawStaticText(QPointF(x, frame.top() + (frame.height() - size.height()) / 2), line);
}

// On whole pixels of the screen: between them, every other line would be thicker.
void paintSeparator(QPainter& painter, const QRectF& frame, const QColor& colour) {
    const QTransform toScreen = painter.deviceTransform();
    QRectF line = toScreen.mapRect(frame);
    const qreal height = std::max(std::floor(line.height()), 1.0);
    line.setTop(std::floor(line.bottom()) - height);
    line.setHeight(height);
    painter.fillRect(toScreen.inverted().mapRect(line), colour);
}

void paintFocus(QPainter& painter, const QRect& row, const QColor& colour) {
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(colour, 2));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(QRectF(row).adjusted(3, 2, -3, -3), 5, 5);
}

} // namespace

TableRow::TableRow(QWidget* parent)
    : QWidget(parent)
    , shareButtonView_(new SharePanel(this))
    , shareButton_(new ShareButton(shareButtonView_)) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFixedHeight(rowHeight);
    setCursor(Qt::PointingHandCursor);
    setFocusPolicy(Qt::ClickFocus);
    shareButton_->setGeometry(shareButtonFrame);
    shareButtonView_->hide();
    connect(shareButton_, &ShareButton::clicked, this, &TableRow::share);
    takeColours();
    layOut();
}

void TableRow::setRecord(const ChangeRecord& record) {
    const bool wasSummary = isSummary(record_);
    record_ = record;
    if (isSummary(record) != wasSummary) {
        scaled_ = {};
        update(frames_.picture);
    }
    const QString titleBefore = NameFile();
    texts_ = rowTexts(record);
    setAccessibleDescription(texts_.isOpenable() ? QStringLiteral("Enter opens the file, Shift and Enter shares it")
                                                 : QString());
    updateShare();
    if (NameFile() == titleBefore)
        return;
    layOut();
    updateSpoken();
    update(frames_.title);
}

void TableRow::setTimeChanges(const QString& text) {
    if (text == TimeChanges_)
        return;
    TimeChanges_ = text;
    layOutTime();
    updateSpoken();
    update(frames_.time);
}

void TableRow::setIconFile(const QImage& picture) {
    if (picture.cacheKey() == IconFile_.cacheKey())
        return;
    IconFile_ = picture;
    scaled_ = {};
    update(frames_.picture);
}

void TableRow::mouseEntered() { setHovered(true); }

void TableRow::mouseExited() { setHovered(false); }

void TableRow::setHovered(bool isHovered) {
    if (isHovered == isHovered_)
        return;
    isHovered_ = isHovered;
    updateShare();
    update();
}

void TableRow::setMarked(bool isMarked) {
    if (isMarked == isMarked_)
        return;
    isMarked_ = isMarked;
    updateShare();
    update();
}

// Focus that the row has already tells of no new reason.
void TableRow::takeKeyboard() {
    setFocus(Qt::OtherFocusReason);
    setMarked(hasFocus());
}

void TableRow::setOpacity(qreal opacity) {
    if (opacity == opacity_)
        return;
    opacity_ = opacity;
    setAttribute(Qt::WA_OpaquePaintEvent, opacity >= 1);
    updateShare();
    update();
}

bool TableRow::event(QEvent* event) {
    if (event->type() != QEvent::ToolTip)
        return QWidget::event(event);
    const auto* help = static_cast<QHelpEvent*>(event);
    if (isTitleCut_ && frames_.title.contains(help->pos())) {
        QToolTip::showText(help->globalPos(), plainToolTip(texts_.title().left(longestToolTip)), this, frames_.title);
    } else {
        QToolTip::hideText();
    }
    return true;
}

void TableRow::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    switch (event->type()) {
    case QEvent::PaletteChange:
        takeColours();
        break;
    case QEvent::StyleChange:
        scaled_ = {};
        [[fallthrough]];
    case QEvent::FontChange:
    case QEvent::LayoutDirectionChange:
        layOut();
        layOutTime();
        update();
        break;
    default:
        break;
    }
}

// Only keys bring a mark: no click, no window that opens, and no row that follows on one that went.
void TableRow::focusInEvent(QFocusEvent* event) {
    const Qt::FocusReason reason = event->reason();
    if (reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason)
        setMarked(reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason);
    Q_EMIT tookFocus();
}

void TableRow::focusOutEvent(QFocusEvent* event) {
    if (event->reason() != Qt::ActiveWindowFocusReason && event->reason() != Qt::PopupFocusReason)
        setMarked(false);
}

void TableRow::hideEvent(QHideEvent*) { setMarked(false); }

void TableRow::mousePressEvent(QMouseEvent* event) { isPressed_ = event->button() == Qt::LeftButton; }

void TableRow::mouseReleaseEvent(QMouseEvent* event) {
    if (!isPressed_ || event->button() != Qt::LeftButton)
        return;
    isPressed_ = false;
    if (rect().contains(event->position().toPoint()))
        Q_EMIT clicked();
}

// A row that was laid out before it was shown is told of its size only then.
void TableRow::resizeEvent(QResizeEvent*) {
    if (rowFrames(width(), layoutDirection()).separator == frames_.separator)
        return;
    layOut();
    layOutTime();
}

void TableRow::layOut() {
    frames_ = rowFrames(width(), layoutDirection());
    shareButtonView_->setGeometry(frames_.sharePanel);
    titleFont_ = font();
    titleFont_.setPixelSize(textPixels);
    titleFont_.setBold(true);
    // Only the name is cut: its ending and the verb both matter.
    const QFontMetrics metrics(titleFont_);
    const int nameWidth = frames_.title.width() - metrics.horizontalAdvance(texts_.shownTitle({}));
    const QString shownName = metrics.elidedText(texts_.name, Qt::ElideMiddle, std::max(nameWidth, 0));
    isTitleCut_ = shownName != texts_.name;
    titleLine_ = lineOf(texts_.shownTitle(shownName), titleFont_);
}

void TableRow::layOutTime() {
    timeFont_ = font();
    timeFont_.setPixelSize(textPixels);
    timeLine_ =
        lineOf(QFontMetrics(timeFont_).elidedText(TimeChanges_, Qt::ElideRight, frames_.time.width()), timeFont_);
}

void TableRow::takeColours() {
    colours_ = rowColours(palette());
    shareButtonView_->setColour(colours_.sharePanel);
    shareButton_->setColour(colours_.symbol);
    update();
}

void TableRow::updateShare() {
    shareButtonView_->setVisible(texts_.isOpenable() && (isHovered_ || isMarked_) && opacity_ >= 1);
}

void TableRow::updateSpoken() { setAccessibleName(texts_.spoken(TimeChanges_)); }

const QPixmap& TableRow::scaledPicture() {
    const qreal ratio = devicePixelRatioF();
    if (!scaled_.isNull() && scaled_.devicePixelRatio() == ratio)
        return scaled_;
    const QSize room = frames_.picture.size();
    scaled_ = isSummary(record_) ? cautionPicture(room, ratio) : fittedPicture(IconFile_, room, ratio);
    return scaled_;
}

void TableRow::paintPicture(QPainter& painter) {
    const QRectF frame(frames_.picture);
    const QPixmap& picture = scaledPicture();
    if (picture.isNull()) {
        painter.fillRect(frame, colours_.emptyPicture);
        paintSheet(painter, frame, colours_.border);
    } else {
        // On whole pixels of the screen, where the picture is as sharp as it was made.
        const qreal ratio = picture.devicePixelRatio();
        const QSizeF margins = frame.size() - picture.deviceIndependentSize();
        const auto half = [ratio](qreal margin) { return std::floor(margin * ratio / 2) / ratio; };
        painter.drawPixmap(frame.topLeft() + QPointF(half(margins.width()), half(margins.height())), picture);
    }
    paintPictureBorder(painter, frame, colours_.border);
}

void TableRow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setOpacity(opacity_);
    painter.fillRect(rect(), isHovered_ || isMarked_ ? colours_.hover : colours_.ground);
    paintSeparator(painter, frames_.separator, colours_.separator);
    paintPicture(painter);
    painter.setFont(titleFont_);
    painter.setPen(colours_.title);
    paintLine(painter, frames_.title, layoutDirection(), titleLine_);
    painter.setFont(timeFont_);
    painter.setPen(colours_.time);
    paintLine(painter, frames_.time, layoutDirection(), timeLine_);
    if (isMarked_)
        paintFocus(painter, rect(), colours_.focus);
}

} // namespace quenby
