// A scroller that floats over what it scrolls and takes no room from it: a knob alone, which fades out when nothing
// moves. It speaks for the hidden scroll bar of a scroll area.
//
// Threads: the main thread. Sizes in logical pixels.
#pragma once

#include "core/TimeSource.h"

#include <QScrollBar>
#include <QVariantAnimation>

#include <memory>
#include <optional>

namespace quenby {

class RFOverlayScroller : public QScrollBar {
    Q_OBJECT

public:
    // Follows the bar, and the bar follows it. The bar outlives the scroller.
    RFOverlayScroller(QScrollBar& bar, std::shared_ptr<TimeSource> timeSource, QWidget* parent);
    ~RFOverlayScroller() override;

    static constexpr int zeroWidth = 0;      // what it takes from the rows
    static constexpr int floatingWidth = 14; // what it floats over
    // 0 to 1.
    qreal alphaValue() const { return alphaValue_; }
    QRect knob() const;

    void fadeOut();

protected:
    void sliderChange(SliderChange change) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void fadeIn();
    void fadeOutLater();
    void setAlphaValue(qreal alpha);

    const std::shared_ptr<TimeSource> timeSource_;
    std::unique_ptr<Timer> fadingOut_;
    QVariantAnimation fade_;
    qreal alphaValue_ = 0;
    std::optional<int> grip_; // while dragged: how far below the knob's top the pointer took hold of it
};

} // namespace quenby
