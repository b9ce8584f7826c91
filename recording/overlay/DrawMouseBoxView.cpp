#include "recording/overlay/DrawMouseBoxView.h"

#include "recording/overlay/InstructionLabel.h"
#include "recording/overlay/PixelGrid.h"
#include "recording/overlay/StartButton.h"
#include "recording/selection/SelectionHandles.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

namespace quenby {
namespace {

static_assert(handleCount == std::tuple_size_v<std::array<CircleImageView, 8>>);

// From the selection's edges to the end of what is painted around it.
constexpr qreal reachOfHandles = handleSide / 2 + 1;

constexpr qreal slowestScreen = 60; // frames a second

std::optional<Qt::CursorShape> shapeOf(SelectionCursor cursor) {
    switch (cursor) {
    case SelectionCursor::cross:
        return Qt::CrossCursor;
    case SelectionCursor::openHand:
        return Qt::OpenHandCursor;
    case SelectionCursor::diagonalUpwards:
        return Qt::SizeBDiagCursor;
    case SelectionCursor::diagonalDownwards:
        return Qt::SizeFDiagCursor;
    case SelectionCursor::resizeUpDownCursor:
        return Qt::SizeVerCursor;
    case SelectionCursor::resizeLeftRightCursor:
        return Qt::SizeHorCursor;
    case SelectionCursor::unchanged:
        break;
    }
    return std::nullopt;
}

} // namespace

DrawMouseBoxView::DrawMouseBoxView(RecordingState& state, const QSizeF& mainScreen, QWidget* parent)
    : QWidget(parent)
    , selection_(state, mainScreen)
    , btnFullRecording_(new InstructionLabel(this))
    , buttonView_(new StartButton(this)) {
    setObjectName(QStringLiteral("DrawMouseBoxView"));
    setAccessibleName(QStringLiteral("Recording Area"));
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setCursor(Qt::CrossCursor);
    for (size_t index = 0; index < images_.size(); ++index)
        images_[index].setTag(static_cast<int>(index) + 1);
    buttonView_->hide();
    connect(buttonView_, &StartButton::clicked, this, &DrawMouseBoxView::CropSelection);
    nextFrame_.setSingleShot(true);
    nextFrame_.setTimerType(Qt::PreciseTimer);
    connect(&nextFrame_, &QTimer::timeout, this, [this] {
        if (isBehind_)
            showSelectionInTime();
    });
    connect(&shapeLayer_, &OutlineLayer::walked, this, [this](const QRegion& frame) { update(frame); });
}

DrawMouseBoxView::~DrawMouseBoxView() = default;

void DrawMouseBoxView::setPicture(const QImage& picture) {
    ground_.setPicture(picture);
    ground_.fitPicture(allPixels(rect(), devicePixelRatioF()).size());
    // Every pixel is painted anew then, and nothing else has to be put below.
    setAttribute(Qt::WA_OpaquePaintEvent, !ground_.isTranslucent());
    update();
}

// --- From the view's points, whose y grows downwards, to the selection's, and back -----------------------------------

QPointF DrawMouseBoxView::fromView(const QPointF& position) const {
    // The pointer stands on a pixel. On the last one it means the screen's edge, which it cannot reach.
    const qreal pixel = 1 / devicePixelRatioF();
    const auto reached = [pixel](qreal value, int length) {
        return value >= length - pixel && value < length ? length : value;
    };
    return {reached(position.x(), width()), height() - reached(position.y(), height())};
}

QRectF DrawMouseBoxView::toView(const QRectF& rectangle) const {
    return {rectangle.left(), height() - rectangle.bottom(), rectangle.width(), rectangle.height()};
}

// --- What is shown
// ----------------------------------------------------------------------------------------------------

QRectF DrawMouseBoxView::shownSelection() const {
    const qreal ratio = devicePixelRatioF();
    return pointsOf(nearestPixels(toView(selection_.selectionRect()), ratio), ratio);
}

// A pointer may tell of a thousand moves a second; the screen shows no more than it has frames.
void DrawMouseBoxView::showSelectionInTime() {
    isBehind_ = nextFrame_.isActive();
    if (isBehind_)
        return;
    showSelection();
    nextFrame_.start(static_cast<int>(1000 / std::max(slowestScreen, screen()->refreshRate())));
}

// Brings to the screen what the selection has become, and nothing else of it.
void DrawMouseBoxView::showSelection() {
    isBehind_ = false;
    updateLabel();
    const QRectF now = shownSelection();
    if (now != shown_ || isOutlineShown_ != selection_.isOutlineShown()) {
        updateOutline(shown_, now);
        shown_ = now;
        isOutlineShown_ = selection_.isOutlineShown();
        shapeLayer_.setPath(nearestPixels(shown_, devicePixelRatioF()), devicePixelRatioF());
        if (isOutlineShown_ && isVisible())
            shapeLayer_.start();
    }
    SetCircleFrames();
}

// The hole changes where only one of the two lies; what is in both stays clear, but for the edges and their handles.
void DrawMouseBoxView::updateOutline(const QRectF& before, const QRectF& after) {
    QRegion changed = QRegion(before.toAlignedRect()).xored(QRegion(after.toAlignedRect()));
    if (isOutlineShown_)
        changed += frameAround(before, reachOfHandles);
    if (selection_.isOutlineShown())
        changed += frameAround(after, reachOfHandles);
    update(changed);
}

void DrawMouseBoxView::SetCircleFrames() {
    for (CircleImageView& image : images_)
        image.setFrame(toView(frameOfHandle(image.tag(), selection_.selectionRect())));
    if (selection_.isStartButtonShown()) {
        const StartButtonPlace place = selection_.startButton();
        // On a whole pixel, too, where a point is not a whole number of pixels.
        const QPointF corner = toView(place.frame).topLeft();
        const int step = devicePixelRatioF() == std::floor(devicePixelRatioF()) ? 1 : 2;
        buttonView_->setGeometry(QRect(QPoint(qRound(corner.x() / step) * step, qRound(corner.y() / step) * step),
                                       startButtonSize.toSize()));
        buttonView_->setOnBrightScreen(place.isOverSelection);
    }
    buttonView_->setVisible(selection_.isStartButtonShown());
}

void DrawMouseBoxView::updateLabel() { btnFullRecording_->setVisible(selection_.isLabelShown()); }

void DrawMouseBoxView::updateCursor(const QPointF& position) {
    const auto shape = shapeOf(selection_.cursorAt(fromView(position)));
    if (shape && cursor().shape() != *shape)
        setCursor(*shape);
}

void DrawMouseBoxView::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    const QRect hole = isOutlineShown_ ? nearestPixels(shown_, devicePixelRatioF()) : QRect();
    ground_.drawRect(painter, event->region(), hole);
    if (!isOutlineShown_)
        return;
    shapeLayer_.drawRect(painter);
    for (const CircleImageView& image : images_)
        image.drawRect(painter);
}

void DrawMouseBoxView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    ground_.fitPicture(allPixels(rect(), devicePixelRatioF()).size());
    selection_.setOverlaySize(QSizeF(size()));
    btnFullRecording_->placeOn(size());
    showSelection();
    update(); // the origin is below
}

void DrawMouseBoxView::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    showSelection();
    if (isOutlineShown_)
        shapeLayer_.start();
}

void DrawMouseBoxView::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    shapeLayer_.stop();
    selection_.cancelPress();
}

// --- What the user does
// -----------------------------------------------------------------------------------------------

void DrawMouseBoxView::enterEvent(QEnterEvent* event) {
    QWidget::enterEvent(event);
    updateLabel(); // a rectangle may have been begun on another screen
}

void DrawMouseBoxView::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || isChosen_)
        return;
    Q_EMIT pressed();
    selection_.press(fromView(event->position()));
    showSelection();
}

void DrawMouseBoxView::mouseMoveEvent(QMouseEvent* event) {
    if (isChosen_)
        return;
    if (!(event->buttons() & Qt::LeftButton))
        return updateCursor(event->position());
    selection_.drag(fromView(event->position()));
    showSelectionInTime();
}

void DrawMouseBoxView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || isChosen_)
        return;
    switch (selection_.release(fromView(event->position()))) {
    case SelectionOutcome::fullScreenChosen:
        setCursor(Qt::ArrowCursor);
        return choose(selection_.fullScreen());
    case SelectionOutcome::startChosen:
        return CropSelection();
    case SelectionOutcome::nothing:
        break;
    }
    showSelection();
    updateCursor(event->position());
}

// The second press of a quick pair is a press like any other.
void DrawMouseBoxView::mouseDoubleClickEvent(QMouseEvent* event) { mousePressEvent(event); }

void DrawMouseBoxView::CropSelection() { choose(selection_.selectionRect()); }

void DrawMouseBoxView::choose(const QRectF& rect) {
    if (!std::exchange(isChosen_, true))
        Q_EMIT didSelectRect(rect);
}

void DrawMouseBoxView::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape)
        Q_EMIT abandoned();
    else
        event->ignore();
}

} // namespace quenby
