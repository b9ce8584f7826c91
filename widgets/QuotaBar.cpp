#include "widgets/QuotaBar.h"

#include "widgets/ProgressPainting.h"

#include <QPainter>

namespace quenby {
namespace {

constexpr int barHeight = 8;

} // namespace

QuotaBar::QuotaBar(QWidget* parent)
    : QProgressBar(parent) {
    setRange(0, 100);
    setTextVisible(false);
    setFixedHeight(barHeight);
    setAccessibleName(QStringLiteral("Storage used"));
    QSizePolicy policy = sizePolicy();
    policy.setRetainSizeWhenHidden(true); // the window must not jump when the account arrives
    setSizePolicy(policy);
}

void QuotaBar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    paintProgress(painter, rect(),
                  {palette().color(QPalette::WindowText), palette().color(QPalette::Highlight), layoutDirection()},
                  value());
}

} // namespace quenby
