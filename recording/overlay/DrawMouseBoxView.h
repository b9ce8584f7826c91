// What covers one screen while it is chosen what to record: the dimmed screen, on which a click chooses all of it and a
// drag a rectangle; its handles, the start button and a few words about it.
//
// The rectangle that it tells is in points with the origin at the view's lower left, y upwards. Threads: the main
// thread.
#pragma once

#include "recording/overlay/CircleImageView.h"
#include "recording/overlay/OutlineLayer.h"
#include "recording/overlay/OverlayGround.h"
#include "recording/selection/SelectionModel.h"

#include <QTimer>
#include <QWidget>

#include <array>

namespace quenby {

class InstructionLabel;
class StartButton;

class DrawMouseBoxView final : public QWidget {
    Q_OBJECT

public:
    // The state outlives the view. The main screen's size is in points, whichever screen the view covers.
    DrawMouseBoxView(RecordingState& state, const QSizeF& mainScreen, QWidget* parent);
    ~DrawMouseBoxView() override;

    // What lies below, where nothing shines through; null where it does.
    void setPicture(const QImage& picture);

    const SelectionModel& selection() const { return selection_; }

Q_SIGNALS:
    // A rectangle, or the whole screen. Once: afterwards the pointer does nothing here any more.
    void didSelectRect(const QRectF& rect);
    // The user wants none of it.
    void abandoned();
    // The pointer is used here, so the keyboard should come here as well.
    void pressed();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void CropSelection();
    void SetCircleFrames();
    void choose(const QRectF& rect);
    void showSelection();
    void showSelectionInTime();
    void updateOutline(const QRectF& before, const QRectF& after);
    void updateLabel();
    void updateCursor(const QPointF& position);
    QPointF fromView(const QPointF& position) const;
    QRectF toView(const QRectF& rectangle) const;
    QRectF shownSelection() const;

    SelectionModel selection_;
    OverlayGround ground_;
    OutlineLayer shapeLayer_{this};
    std::array<CircleImageView, 8> images_; // img1 to img8
    InstructionLabel* const btnFullRecording_;
    StartButton* const buttonView_;
    QTimer nextFrame_;
    bool isBehind_ = false; // the selection is further than what is shown, until the next frame
    QRectF shown_;          // the selection as it was painted last, in the view's points; empty before there is one
    bool isOutlineShown_ = false;
    bool isChosen_ = false;
};

} // namespace quenby
