#include "workspace/tabbar/TabPainter.h"

#include <QFontMetrics>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace quenby {
namespace {

constexpr qreal cornerRadius = 8;
constexpr qreal smallRadius = 5;
constexpr int hoverInset = 3;
constexpr int separatorHeight = 16;
constexpr int fadeWidth = 22;
constexpr int badgePadding = 6;
constexpr float badgeFontScale = 0.85F;
// How much of the text's colour is in what is painted.
constexpr float barShade = 0.07F;
constexpr float edge = 0.18F;
constexpr float hoverFill = 0.07F;
constexpr float pressedFill = 0.16F;
constexpr float backgroundText = 0.75F; // of tabs that are not current; still easy to read
constexpr float glyphInk = 0.7F;
constexpr float faintInk = 0.2F;

QColor mixed(const QColor& below, const QColor& above, float strength) {
    const auto part = [strength](float from, float to) { return from + (to - from) * strength; };
    return QColor::fromRgbF(part(below.redF(), above.redF()), part(below.greenF(), above.greenF()),
                            part(below.blueF(), above.blueF()));
}

QColor withStrength(QColor colour, float strength) {
    colour.setAlphaF(strength);
    return colour;
}

QColor textOn(const QColor& ground) {
    constexpr int bright = 150; // of 255, as an eye sees it
    return qGray(ground.rgb()) > bright ? QColor(Qt::black) : QColor(Qt::white);
}

// Round at the top, open at the bottom.
QPainterPath tabOutline(const QRectF& frame) {
    QPainterPath path(frame.bottomLeft());
    path.lineTo(frame.left(), frame.top() + cornerRadius);
    path.quadTo(frame.topLeft(), {frame.left() + cornerRadius, frame.top()});
    path.lineTo(frame.right() - cornerRadius, frame.top());
    path.quadTo(frame.topRight(), {frame.right(), frame.top() + cornerRadius});
    path.lineTo(frame.bottomRight());
    return path;
}

QFont badgeFont(QFont font) {
    if (font.pointSizeF() > 0)
        font.setPointSizeF(font.pointSizeF() * badgeFontScale);
    return font;
}

// A text of this direction vanishes where it leaves its place.
QBrush fading(const QRect& place, Qt::LayoutDirection direction, const QColor& colour) {
    const qreal over = std::min<qreal>(fadeWidth, place.width() / 2.0);
    const bool isLeftwards = direction == Qt::RightToLeft;
    const QPointF end = isLeftwards ? QPointF(place.left(), 0) : QPointF(place.right() + 1, 0);
    QLinearGradient gradient(end + QPointF(isLeftwards ? over : -over, 0), end);
    gradient.setColorAt(0, colour);
    gradient.setColorAt(1, withStrength(colour, 0));
    return gradient;
}

// A sheet with a folded corner.
void paintBlankPage(QPainter& painter, const QRectF& place, const QColor& colour) {
    constexpr qreal fold = 4;
    const QRectF sheet = place.adjusted(3, 1.5, -3, -1.5);
    QPainterPath path(sheet.topLeft());
    path.lineTo(sheet.right() - fold, sheet.top());
    path.lineTo(sheet.right(), sheet.top() + fold);
    path.lineTo(sheet.bottomRight());
    path.lineTo(sheet.bottomLeft());
    path.closeSubpath();
    path.moveTo(sheet.right() - fold, sheet.top());
    path.lineTo(sheet.right() - fold, sheet.top() + fold);
    path.lineTo(sheet.right(), sheet.top() + fold);
    painter.setPen(QPen(colour, 1.2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(path);
}

} // namespace

QIcon blankPageIcon(const QPalette& palette, qreal devicePixelRatio) {
    const QRect place(0, 0, 16, 16);
    QPixmap picture(place.size() * devicePixelRatio);
    picture.setDevicePixelRatio(devicePixelRatio);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    paintBlankPage(painter, place, withStrength(palette.color(QPalette::WindowText), glyphInk));
    return picture;
}

TabContent TabLook::content(const QFontMetrics& metrics) const {
    const int digits = badge.isEmpty() ? 0 : static_cast<int>(metrics.horizontalAdvance(badge) * badgeFontScale);
    return {showsCloseButton, isEdited, badge.isEmpty() ? 0 : std::max(digits + 2 * badgePadding, badgeHeight)};
}

TabPainter::TabPainter(QPainter& painter, const QPalette& palette, Qt::LayoutDirection direction, const QRegion& dirty)
    : painter_(painter)
    , palette_(palette)
    , direction_(direction)
    , dirty_(dirty)
    , hairline_(1 / std::max(1.0, painter.deviceTransform().m11())) {
    painter_.setRenderHint(QPainter::Antialiasing);
}

void TabPainter::paintBar(const QRect& bar) {
    painter_.fillRect(bar, mixed(palette_.color(QPalette::Window), palette_.color(QPalette::WindowText), barShade));
    QRectF line(bar);
    line.setTop(line.bottom() - hairline_);
    painter_.fillRect(onDevicePixels(line), ink(edge));
}

void TabPainter::paintTab(const QRect& frame, const TabLook& look) {
    if (!isDirty(frame))
        return;
    paintShape(frame, look);
    const TabParts parts = tabParts(frame, direction_, look.content(painter_.fontMetrics()));
    if (isDirty(parts.icon))
        paintIcon(parts.icon, look);
    if (isDirty(parts.title))
        paintTitle(parts.title, look);
    if (isDirty(parts.editedMark)) {
        painter_.setPen(Qt::NoPen);
        painter_.setBrush(palette_.color(QPalette::Highlight));
        painter_.drawEllipse(QRectF(parts.editedMark));
    }
    if (isDirty(parts.badge))
        paintBadge(parts.badge, look);
    if (isDirty(parts.closeButton))
        paintCloseButton(parts.closeButton, look);
}

void TabPainter::paintShape(const QRect& frame, const TabLook& look) {
    painter_.setPen(Qt::NoPen);
    painter_.setBrush(Qt::NoBrush);
    if (look.isCurrent || look.isLifted) {
        const QRectF snapped = onDevicePixels(frame);
        painter_.fillPath(tabOutline(snapped), palette_.color(QPalette::Base));
        painter_.setPen(QPen(ink(look.isLifted ? 2 * edge : edge), hairline_));
        const qreal half = hairline_ / 2;
        painter_.drawPath(tabOutline(snapped.adjusted(half, half, -half, 0)));
        painter_.setPen(Qt::NoPen);
    } else if (look.isUnderPointer || look.isDropTarget) {
        painter_.setBrush(look.isDropTarget ? withStrength(palette_.color(QPalette::Highlight), 2 * pressedFill)
                                            : ink(hoverFill));
        painter_.drawRoundedRect(frame.adjusted(2, hoverInset - 1, -2, -hoverInset - 1), smallRadius, smallRadius);
    }
    if (look.isCurrent && look.isDropTarget) {
        painter_.setBrush(withStrength(palette_.color(QPalette::Highlight), pressedFill));
        painter_.drawRoundedRect(frame.adjusted(4, 4, -4, -4), smallRadius, smallRadius);
    }
    if (look.hasSeparator) {
        const qreal x = direction_ == Qt::RightToLeft ? frame.left() : frame.right() + 1 - hairline_;
        const qreal y = frame.top() + (frame.height() - separatorHeight) / 2;
        painter_.fillRect(onDevicePixels(QRectF(x, y, hairline_, separatorHeight)), ink(faintInk));
    }
    if (look.hasFocusRing)
        paintFocusRing(QRectF(frame).adjusted(4, 4, -4, -4), smallRadius);
}

void TabPainter::paintIcon(const QRect& place, const TabLook& look) {
    if (look.spinnerStep >= 0)
        return paintSpinner(place, look.spinnerStep);
    if (!look.icon.isNull())
        return look.icon.paint(&painter_, place);
    paintBlankPage(painter_, place, ink(glyphInk));
}

// An arc that turns on a faint ring.
void TabPainter::paintSpinner(const QRect& place, int step) {
    constexpr int turn = 360 * 16; // the painter's unit
    const QRectF ring = QRectF(place).adjusted(2.5, 2.5, -2.5, -2.5);
    painter_.setBrush(Qt::NoBrush);
    painter_.setPen(QPen(ink(faintInk), 2));
    painter_.drawEllipse(ring);
    painter_.setPen(QPen(palette_.color(QPalette::Highlight), 2, Qt::SolidLine, Qt::RoundCap));
    painter_.drawArc(ring, turn / 4 - step * turn / spinnerSteps, -turn / 4);
}

void TabPainter::paintTitle(const QRect& place, const TabLook& look) {
    painter_.setPen(look.isCurrent ? palette_.color(QPalette::Text)
                                   : mixed(palette_.color(QPalette::Window), palette_.color(QPalette::WindowText),
                                           look.isUnderPointer ? 1 : backgroundText));
    // In the text's own direction, at the side where the bar's lines begin; one that is too long shows its beginning.
    const bool isCut = painter_.fontMetrics().horizontalAdvance(look.label) > place.width();
    const Qt::LayoutDirection own = look.label.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight;
    const bool isAtRight = (isCut ? own : direction_) == Qt::RightToLeft;
    if (isCut)
        painter_.setPen(QPen(fading(place, own, painter_.pen().color()), 1));
    painter_.setLayoutDirection(own);
    painter_.save();
    painter_.setClipRect(place, Qt::IntersectClip);
    painter_.drawText(
        place,
        static_cast<int>((isAtRight ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignAbsolute | Qt::AlignVCenter) |
            Qt::TextSingleLine,
        look.label);
    painter_.restore();
    painter_.setLayoutDirection(direction_);
}

void TabPainter::paintBadge(const QRect& place, const TabLook& look) {
    const QColor ground = look.badgeColor.isValid() ? look.badgeColor
                                                    : mixed(palette_.color(QPalette::Window),
                                                            palette_.color(QPalette::WindowText), glyphInk - faintInk);
    painter_.setPen(Qt::NoPen);
    painter_.setBrush(ground);
    painter_.drawRoundedRect(place, badgeHeight / 2.0, badgeHeight / 2.0);
    const QFont font = painter_.font();
    painter_.setFont(badgeFont(font));
    painter_.setPen(textOn(ground));
    painter_.setLayoutDirection(Qt::LeftToRight);
    painter_.drawText(place, Qt::AlignCenter | Qt::TextSingleLine, look.badge);
    painter_.setFont(font);
}

void TabPainter::paintCloseButton(const QRect& place, const TabLook& look) {
    if (look.isCloseUnderPointer) {
        painter_.setPen(Qt::NoPen);
        painter_.setBrush(ink(look.isClosePressed ? 2 * pressedFill : pressedFill));
        painter_.drawEllipse(QRectF(place));
    }
    painter_.setPen(QPen(ink(look.isCloseUnderPointer ? 1 : glyphInk), 1.4, Qt::SolidLine, Qt::RoundCap));
    const QRectF cross = QRectF(place).adjusted(5.5, 5.5, -5.5, -5.5);
    painter_.drawLine(cross.topLeft(), cross.bottomRight());
    painter_.drawLine(cross.topRight(), cross.bottomLeft());
}

void TabPainter::paintButton(const QRect& frame, const BarButtonLook& look) {
    painter_.setPen(Qt::NoPen);
    if (look.isPressed || look.isUnderPointer) {
        painter_.setBrush(ink(look.isPressed ? pressedFill : hoverFill));
        painter_.drawRoundedRect(frame, smallRadius, smallRadius);
    }
    painter_.setPen(QPen(ink(look.isUnderPointer ? 1 : glyphInk), 1.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter_.setBrush(Qt::NoBrush);
    const QPointF centre = QRectF(frame).center();
    if (look.glyph == BarGlyph::plus) {
        constexpr qreal arm = 5;
        painter_.drawLine(centre - QPointF(arm, 0), centre + QPointF(arm, 0));
        painter_.drawLine(centre - QPointF(0, arm), centre + QPointF(0, arm));
    } else {
        const QPointF wing(4.5, -2);
        painter_.drawPolyline(
            QPolygonF{centre + wing, centre + QPointF(0, 2.5), centre + QPointF(-wing.x(), wing.y())});
    }
    if (look.hasFocus)
        paintFocusRing(QRectF(frame).adjusted(1, 1, -1, -1), smallRadius);
}

void TabPainter::paintFocusRing(const QRectF& frame, qreal radius) {
    painter_.setPen(QPen(palette_.color(QPalette::Highlight), 2));
    painter_.setBrush(Qt::NoBrush);
    painter_.drawRoundedRect(frame, radius, radius);
}

bool TabPainter::isDirty(const QRect& place) const { return !place.isEmpty() && dirty_.intersects(place); }

QRectF TabPainter::onDevicePixels(const QRectF& rect) const {
    const QTransform& toDevice = painter_.deviceTransform();
    const QRectF device = toDevice.mapRect(rect);
    const QPointF from(std::round(device.left()), std::round(device.top()));
    const QPointF to(std::max(std::round(device.right()), from.x() + 1),
                     std::max(std::round(device.bottom()), from.y() + 1));
    return toDevice.inverted().mapRect(QRectF(from, to));
}

QColor TabPainter::ink(float strength) const {
    return withStrength(palette_.color(QPalette::WindowText), std::min(strength, 1.0F));
}

} // namespace quenby
