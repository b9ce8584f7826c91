#include "preferences/account/ServiceUsageBar.h"

#include "core/ByteCountText.h"
#include "widgets/PlainToolTip.h"

#include <QCoreApplication>
#include <QEvent>
#include <QPainter>
#include <QPainterPath>
#include <QStyle>
#include <QtNumeric>

#include <algorithm>
#include <array>
#include <limits>

namespace quenby {
namespace {

constexpr int barHeight = 8; // logical pixels, like all of these
constexpr int barToCaptions = 8;
constexpr int square = 8; // before a caption's text
constexpr int squareToText = 6;
constexpr int betweenCaptions = 16;
constexpr int betweenLines = 4;
constexpr int usualWidth = 480;
constexpr qreal thinnestPiece = 2; // a service that uses anything can be seen
constexpr qreal betweenPieces = 1;
constexpr float grooveStrength = 0.15F;
constexpr qsizetype mostPieces = 5;

// Of about the same lightness, so that none stands out, and half way between a light and a dark ground.
const std::array<QColor, mostPieces>& pieceColours() {
    static const std::array<QColor, mostPieces> colours{QColor(0x4a, 0x7f, 0xd0), QColor(0xcc, 0x5f, 0x58),
                                                        QColor(0xb5, 0x87, 0x1e), QColor(0x3f, 0x93, 0x68),
                                                        QColor(0x8e, 0x6c, 0xc8)};
    return colours;
}

QColor colourOf(const QList<ServiceUsageBar::Piece>& pieces, qsizetype index) {
    constexpr QColor rest(0x85, 0x85, 0x85);
    return pieces[index].isRest ? rest : pieceColours()[static_cast<size_t>(index)];
}

qint64 added(qint64 one, qint64 other) {
    qint64 sum = 0;
    return qAddOverflow(one, other, &sum) ? std::numeric_limits<qint64>::max() : sum;
}

// In the services' own order, which stays the same from one answer to the next.
QList<ServiceUsageBar::Piece> piecesOf(const AccountUsage& usage) {
    QList<qint64> sizes;
    for (const ServiceUsage& service : usage.services)
        sizes.append(service.bytes);
    std::sort(sizes.begin(), sizes.end(), std::greater<>());
    const bool areMany = sizes.size() > mostPieces;
    const qint64 leastShown = areMany ? sizes[mostPieces - 2] : 1;
    // There may be more of the least size than there is room for.
    auto placesOfLeast = areMany ? std::count(sizes.begin(), sizes.begin() + mostPieces - 1, leastShown) : 0;
    QList<ServiceUsageBar::Piece> pieces;
    qint64 shown = 0;
    for (const ServiceUsage& service : usage.services) {
        const bool isLeast = areMany && service.bytes == leastShown;
        if (service.bytes < leastShown || (isLeast && placesOfLeast-- <= 0))
            continue;
        pieces.append({service.name, service.bytes});
        shown = added(shown, service.bytes);
    }
    if (usage.used > shown)
        pieces.append({QCoreApplication::translate("quenby::ServiceUsageBar", "Other"), usage.used - shown, true});
    return pieces;
}

} // namespace

QString usageText(const AccountUsage& usage) {
    const QString used = byteCountText(usage.used);
    if (usage.total <= 0)
        return QCoreApplication::translate("quenby::ServiceUsageBar", "%1 used").arg(used);
    const QString text =
        QCoreApplication::translate("quenby::ServiceUsageBar", "%1 of %2 used").arg(used, byteCountText(usage.total));
    const bool isFull = usage.used >= usage.total;
    return isFull ? QCoreApplication::translate("quenby::ServiceUsageBar", "%1: no room is left").arg(text) : text;
}

ServiceUsageBar::ServiceUsageBar(QWidget* parent)
    : QWidget(parent) {
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    setAccessibleName(tr("Storage used"));
}

void ServiceUsageBar::setUsage(const std::optional<AccountUsage>& usage) {
    if (usage == usage_)
        return;
    usage_ = usage;
    pieces_ = usage ? piecesOf(*usage) : QList<Piece>();
    setAccessibleDescription(inWords());
    QStringList lines;
    if (usage) {
        for (const ServiceUsage& service : usage->services)
            lines.append(tr("%1: %2").arg(service.name, byteCountText(service.bytes)));
    }
    setToolTip(lines.isEmpty() ? QString() : plainToolTip(lines.join(QLatin1Char('\n'))));
    updateGeometry();
    update();
}

QSize ServiceUsageBar::sizeHint() const { return {usualWidth, heightForWidth(usualWidth)}; }

QSize ServiceUsageBar::minimumSizeHint() const {
    int widest = 0;
    for (const Caption& caption : captionsFor(0))
        widest = std::max(widest, caption.place.width());
    return {std::min(widest, usualWidth), heightForWidth(usualWidth)};
}

int ServiceUsageBar::heightForWidth(int width) const {
    const QList<Caption> captions = captionsFor(width);
    const int below =
        captions.isEmpty() ? barHeight + barToCaptions + fontMetrics().height() : captions.last().place.bottom() + 1;
    return std::max(below, barHeight);
}

void ServiceUsageBar::paintEvent(QPaintEvent*) {
    if (!usage_)
        return;
    QPainter painter(this);
    paintBar(painter);
    paintCaptions(painter);
}

void ServiceUsageBar::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        updateGeometry();
}

// In as many lines as they need.
QList<ServiceUsageBar::Caption> ServiceUsageBar::captionsFor(int width) const {
    const QFontMetrics metrics = fontMetrics();
    QList<Caption> captions;
    QPoint next(0, barHeight + barToCaptions);
    for (const Piece& piece : pieces_) {
        const QString text = tr("%1 %2").arg(piece.name, byteCountText(piece.bytes));
        const QSize size(square + squareToText + metrics.horizontalAdvance(text), metrics.height());
        if (next.x() > 0 && next.x() + size.width() > width)
            next = QPoint(0, next.y() + size.height() + betweenLines);
        captions.append({QRect(next, size), text});
        next.rx() += size.width() + betweenCaptions;
    }
    return captions;
}

void ServiceUsageBar::paintBar(QPainter& painter) const {
    const QRectF bar(0, 0, width(), barHeight);
    painter.save();
    QPainterPath shape;
    shape.addRoundedRect(bar, barHeight / 2.0, barHeight / 2.0);
    QColor groove = palette().color(QPalette::WindowText);
    groove.setAlphaF(grooveStrength);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(shape, groove);
    // Over the quota, or without one, the bar is full.
    const auto whole = static_cast<qreal>(std::max(usage_->total, std::max<qint64>(usage_->used, 1)));
    const bool isMirrored = layoutDirection() == Qt::RightToLeft;
    qreal from = 0;
    for (qsizetype i = 0; i < pieces_.size(); ++i) {
        const qreal exact = bar.width() * static_cast<qreal>(pieces_[i].bytes) / whole;
        const qreal to = std::min(bar.width(), from + std::max(exact, thinnestPiece));
        const bool isLast = i + 1 == pieces_.size();
        QRectF piece(from, 0, to - from - (isLast ? 0 : betweenPieces), barHeight);
        if (isMirrored)
            piece.moveRight(bar.width() - from);
        QPainterPath area;
        area.addRect(piece);
        painter.fillPath(area.intersected(shape), colourOf(pieces_, i));
        from = to;
    }
    painter.restore();
}

void ServiceUsageBar::paintCaptions(QPainter& painter) const {
    const QList<Caption> captions = captionsFor(width());
    painter.setPen(palette().color(QPalette::WindowText));
    for (qsizetype i = 0; i < captions.size(); ++i) {
        const QRect place = QStyle::visualRect(layoutDirection(), rect(), captions[i].place);
        QRect mark(place.left(), place.center().y() - square / 2 + 1, square, square);
        if (layoutDirection() == Qt::RightToLeft)
            mark.moveRight(place.right());
        painter.fillRect(mark, colourOf(pieces_, i));
        const int beside = square + squareToText;
        const QRect text =
            layoutDirection() == Qt::RightToLeft ? place.adjusted(0, 0, -beside, 0) : place.adjusted(beside, 0, 0, 0);
        painter.drawText(text, Qt::AlignVCenter | Qt::AlignHCenter | Qt::TextSingleLine, captions[i].text);
    }
}

QString ServiceUsageBar::inWords() const {
    if (!usage_)
        return tr("Not known");
    QStringList parts;
    for (const ServiceUsage& service : usage_->services)
        parts.append(tr("%1 %2").arg(service.name, byteCountText(service.bytes)));
    const QString all = usageText(*usage_);
    return parts.isEmpty() ? all : tr("%1: %2").arg(all, parts.join(tr(", ")));
}

} // namespace quenby
