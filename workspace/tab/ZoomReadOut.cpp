#include "workspace/tab/ZoomReadOut.h"

#include <QPainter>
#include <QStyle>

namespace quenby {
namespace {

using namespace std::chrono_literals;

constexpr auto readingTime = 1500ms;
constexpr int fromTheCorner = 16;
constexpr qreal cornerRadius = 6;

} // namespace

ZoomReadOut::ZoomReadOut(std::shared_ptr<TimeSource> timeSource, QWidget* parent)
    : QLabel(parent)
    , timeSource_(std::move(timeSource)) {
    setAlignment(Qt::AlignCenter);
    setContentsMargins(12, 6, 12, 6);
    setForegroundRole(QPalette::ToolTipText);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    hide();
}

void ZoomReadOut::tell(qreal factor) {
    setText(QStringLiteral("%1 %").arg(qRound(factor * 100)));
    const QRect room = parentWidget()->rect().marginsRemoved({fromTheCorner, fromTheCorner, fromTheCorner, 0});
    setGeometry(QStyle::alignedRect(layoutDirection(), Qt::AlignRight | Qt::AlignTop, sizeHint(), room));
    show();
    raise();
    hiding_ = timeSource_->startTimer(readingTime, [this] { hide(); });
}

void ZoomReadOut::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor line = palette().color(QPalette::ToolTipText);
    line.setAlphaF(0.3F);
    painter.setPen(line);
    painter.setBrush(palette().toolTipBase());
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), cornerRadius, cornerRadius);
    painter.end();
    QLabel::paintEvent(event);
}

} // namespace quenby
