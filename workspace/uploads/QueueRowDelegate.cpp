#include "workspace/uploads/QueueRowDelegate.h"

#include "widgets/Glyphs.h"
#include "widgets/ProgressPainting.h"
#include "workspace/uploads/QueueRows.h"
#include "workspace/uploads/QueueText.h"

#include <QApplication>
#include <QPainter>

#include <algorithm>

namespace quenby {
namespace {

using State = QueueRow::State;

constexpr int margin = 12;  // left and right
constexpr int padding = 8;  // above and below
constexpr int iconGap = 12; // beside the picture
constexpr int lineGap = 3;
constexpr int signGap = 6; // beside the sign of trouble
constexpr int barHeight = 6;
constexpr int smallestIcon = 32;
constexpr float softStrength = 0.72F; // of the text's colour, in the second line
constexpr float pausedStrength = 0.5F;
constexpr int middleLightness = 128;

bool hasBar(const QueueRow& row) {
    if (row.state == State::running)
        return true;
    const bool goesOn = row.state == State::paused || row.state == State::resting || row.state == State::waiting;
    return goesOn && row.sent > 0 && row.total > 0;
}

bool needsTheUser(State state) { return state == State::failed || state == State::changed; }

QColor withStrength(QColor colour, float strength) {
    colour.setAlphaF(strength);
    return colour;
}

struct RowColours {
    QColor name;
    QColor detail;
    QColor bar;
};

// A contrast of more than 5 to 1 on white and on the dark grounds of desktops.
QColor warningColour(State state, const QColor& ground) {
    const bool isLight = ground.lightness() >= middleLightness;
    if (state == State::failed)
        return isLight ? QColor(0xb3, 0x26, 0x1e) : QColor(0xff, 0x8a, 0x80);
    return isLight ? QColor(0x85, 0x55, 0x00) : QColor(0xf0, 0xb8, 0x4a);
}

RowColours coloursOf(const QStyleOptionViewItem& option, State state) {
    const QPalette::ColorGroup group =
        option.state.testFlag(QStyle::State_Active) ? QPalette::Active : QPalette::Inactive;
    const bool isSelected = option.state.testFlag(QStyle::State_Selected);
    RowColours colours;
    colours.name = option.palette.color(group, isSelected ? QPalette::HighlightedText : QPalette::Text);
    if (isSelected)
        colours.detail = colours.name; // any other colour may be hard to read there
    else if (needsTheUser(state))
        colours.detail = warningColour(state, option.palette.color(group, QPalette::Base));
    else
        colours.detail = withStrength(colours.name, softStrength);
    if (state != State::running)
        colours.bar = withStrength(colours.name, pausedStrength);
    else
        colours.bar = isSelected ? colours.name : option.palette.color(group, QPalette::Highlight);
    return colours;
}

int iconSide(const QFontMetrics& metrics) { return std::max(smallestIcon, 2 * metrics.height()); }

int linesHeight(const QFontMetrics& metrics) { return 2 * metrics.height() + lineGap; }

// Where everything stands in a row, on the side where the window's lines begin.
struct RowPlaces {
    RowPlaces(const QStyleOptionViewItem& option, bool withBar) {
        const QFontMetrics& metrics = option.fontMetrics;
        const QRect inner = option.rect.adjusted(margin, padding, -margin, -padding);
        const int side = iconSide(metrics);
        const int height = linesHeight(metrics) + (withBar ? lineGap + barHeight : 0);
        const int left = inner.left() + side + iconGap;
        const int top = inner.top() + (inner.height() - height) / 2;
        const int width = inner.right() + 1 - left;
        const auto placed = [&option](const QRect& rect) {
            return QStyle::visualRect(option.direction, option.rect, rect);
        };
        icon = placed({inner.left(), inner.top() + (inner.height() - side) / 2, side, side});
        name = placed({left, top, width, metrics.height()});
        detail = placed({left, top + metrics.height() + lineGap, width, metrics.height()});
        bar = placed({left, top + linesHeight(metrics) + lineGap, width, barHeight});
    }

    QRect icon;
    QRect name;
    QRect detail;
    QRect bar;
};

// At the side where lines begin, but in the direction of its own language: the numbers of an English text stay where
// they belong when the window runs from right to left.
void paintText(QPainter& painter, const QStyleOptionViewItem& option, const QRect& rect, const QString& text,
               Qt::TextElideMode cut) {
    const Qt::Alignment side = QStyle::visualAlignment(option.direction, Qt::AlignLeft);
    painter.setLayoutDirection(text.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
    painter.drawText(rect, static_cast<int>(side | Qt::AlignAbsolute | Qt::AlignVCenter) | Qt::TextSingleLine,
                     option.fontMetrics.elidedText(text, cut, rect.width()));
}

void paintSign(QPainter& painter, const QRect& place, const QColor& colour) {
    static const QPainterPath sign = warningGlyph();
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(place.topLeft());
    painter.scale(place.width() / glyphGrid, place.height() / glyphGrid);
    painter.fillPath(sign, colour);
    painter.restore();
}

void paintDetail(QPainter& painter, const QStyleOptionViewItem& option, QRect place, const QueueRow& row) {
    if (needsTheUser(row.state)) {
        const QRect whole = place;
        const int side = place.height();
        const QRect sign(place.topLeft(), QSize(side, side));
        paintSign(painter, QStyle::visualRect(option.direction, whole, sign), painter.pen().color());
        place = QStyle::visualRect(option.direction, whole, whole.adjusted(side + signGap, 0, 0, 0));
    }
    paintText(painter, option, place, queueStateText(row), Qt::ElideRight);
}

} // namespace

void QueueRowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    const auto row = index.data(QueueRows::rowRole).value<QueueRow>();
    const QStyle* style = option.widget ? option.widget->style() : QApplication::style();
    const RowPlaces places(option, hasBar(row));
    const RowColours colours = coloursOf(option, row.state);
    style->drawPrimitive(QStyle::PE_PanelItemViewItem, &option, painter, option.widget);
    painter->save();
    painter->setFont(option.font);
    icons_.icon(row.name).paint(painter, places.icon);
    painter->setPen(colours.name);
    paintText(*painter, option, places.name, row.name, Qt::ElideMiddle);
    painter->setPen(colours.detail);
    paintDetail(*painter, option, places.detail, row);
    painter->restore();
    if (hasBar(row))
        paintProgress(*painter, places.bar, {colours.name, colours.bar, option.direction}, queuePercent(row));
    if (option.state.testFlag(QStyle::State_HasFocus)) {
        QStyleOptionFocusRect focus;
        focus.QStyleOption::operator=(option);
        focus.backgroundColor =
            option.palette.color(option.state.testFlag(QStyle::State_Selected) ? QPalette::Highlight : QPalette::Base);
        style->drawPrimitive(QStyle::PE_FrameFocusRect, &focus, painter, option.widget);
    }
}

QSize QueueRowDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const {
    const int lines = linesHeight(option.fontMetrics) + lineGap + barHeight;
    return {200, std::max(lines, iconSide(option.fontMetrics)) + 2 * padding};
}

} // namespace quenby
