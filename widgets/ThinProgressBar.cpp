#include "widgets/ThinProgressBar.h"

#include "widgets/ProgressPainting.h"

#include <QPainter>

namespace quenby {

ThinProgressBar::ThinProgressBar(int height, QWidget* parent)
    : QProgressBar(parent) {
    setRange(0, 100);
    setTextVisible(false);
    setFixedHeight(height);
}

void ThinProgressBar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    paintProgress(painter, rect(),
                  {palette().color(QPalette::WindowText), palette().color(QPalette::Highlight), layoutDirection()},
                  value());
}

} // namespace quenby
