#include "workspace/tabbar/TabLayout.h"

#include "workspace/tabbar/TabBarOptions.h"

#include <QStyle>

#include <algorithm>
#include <numeric>

namespace quenby {
namespace {

constexpr int barMargin = 6; // at both ends
constexpr int topMargin = 4; // above the tabs, which reach down to the page
constexpr int buttonSide = 26;
constexpr int buttonGap = 4;
constexpr int padding = 11; // within a tab, at both ends
constexpr int iconSide = 16;
constexpr int iconOnlyWidth = iconSide + 2 * padding;
constexpr int closeSide = 18;
constexpr int closePadding = 7; // behind the close button: it has air of its own
constexpr int markSide = 6;
constexpr int partGap = 7;
constexpr int leastTitle = 12; // less shows no character
// With the icon and the close button: the current tab can always be closed.
constexpr int closableWidth = padding + iconSide + partGap + closeSide + closePadding;
constexpr int readableWidth = 128; // what the current tab keeps, so that one can read where one is

struct Limits {
    int least;
    int wished;
};

// The current tab's; at most a third of the bar.
int leastCurrentWidth(const TabBarOptions& options, const TabRoom& room) {
    const int readable = std::min({readableWidth, options.tabMaxWidth, room.bar.width() / 3});
    return std::max({options.tabMinWidth, closableWidth, readable});
}

// A tab is never wider than the maximum nor narrower than the minimum, and never too narrow for its icon.
std::vector<Limits> limitsOf(const TabBarOptions& options, const TabRoom& room) {
    const int least = std::max(options.tabMinWidth, iconOnlyWidth);
    std::vector<Limits> limits(static_cast<size_t>(room.count));
    for (size_t index = 0; index < limits.size(); ++index) {
        const bool isFitted = options.tabSizeToFit && index < room.fitWidths.size();
        const int wished = std::min(isFitted ? room.fitWidths[index] : options.tabOptimumWidth, options.tabMaxWidth);
        const int own = static_cast<int>(index) == room.current ? leastCurrentWidth(options, room) : least;
        limits[index] = {own, std::max(wished, own)};
    }
    return limits;
}

int sumAtMost(const Limits* begin, const Limits* end, int cap) {
    return std::accumulate(begin, end, 0, [cap](int sum, const Limits& limits) {
        return sum + std::max(limits.least, std::min(limits.wished, cap));
    });
}

// The widest give way first. Pixels that are left over go to the first of those that gave way, one each.
std::vector<int> shared(const Limits* begin, const Limits* end, int room) {
    int low = 0;
    int high = std::max_element(begin, end, [](const Limits& one, const Limits& other) {
                   return one.wished < other.wished;
               })->wished;
    while (low < high) {
        const int middle = (low + high + 1) / 2;
        if (sumAtMost(begin, end, middle) <= room)
            low = middle;
        else
            high = middle - 1;
    }
    std::vector<int> widths;
    int left = room - sumAtMost(begin, end, low);
    for (const Limits* limits = begin; limits != end; ++limits) {
        const bool gaveWay = limits->wished > low && limits->least <= low;
        const int more = gaveWay && left > 0 ? 1 : 0;
        left -= more;
        widths.push_back(std::max(limits->least, std::min(limits->wished, low)) + more);
    }
    return widths;
}

} // namespace

TabLayout::TabLayout(const TabBarOptions& options, const TabRoom& room)
    : bar_(room.bar)
    , direction_(room.direction) {
    const int buttonRoom = buttonSide + buttonGap;
    int forTabs = room.bar.width() - 2 * barMargin - (options.addTabButton ? buttonRoom : 0);
    const std::vector<Limits> limits = limitsOf(options, room);
    const Limits* all = limits.data();
    int shown = room.count;
    if (sumAtMost(all, all + shown, 0) > forTabs && shown > 1) {
        overflows_ = true;
        if (options.useOverflowMenu)
            forTabs -= buttonRoom;
        const int least = std::max(options.tabMinWidth, iconOnlyWidth);
        const int more = room.current >= 0 ? leastCurrentWidth(options, room) - least : 0;
        shown = std::clamp((forTabs - more) / least, 1, room.count);
        firstShown_ = std::clamp(room.firstShown, 0, room.count - shown);
        if (room.current >= 0)
            firstShown_ = std::clamp(firstShown_, std::max(room.current - shown + 1, 0), room.current);
    }
    if (shown > 0)
        widths_ = shared(all + firstShown_, all + firstShown_ + shown, forTabs);
    int leading = barMargin;
    for (const int width : widths_) {
        leadings_.push_back(leading);
        leading += width;
    }
    if (options.addTabButton) {
        addButton_ = buttonFrame(leading + buttonGap);
        leading += buttonRoom;
    }
    if (overflows_ && options.useOverflowMenu)
        overflowButton_ = buttonFrame(std::max(leading + buttonGap, bar_.width() - barMargin - buttonSide));
}

QRect TabLayout::tab(int index) const { return isShown(index) ? frame(leadingOf(index), widthOf(index)) : QRect(); }

int TabLayout::tabAt(QPoint point) const {
    for (int index = firstShown(); index < endShown(); ++index) {
        if (tab(index).contains(point))
            return index;
    }
    return -1;
}

int TabLayout::leadingOf(int index) const { return leadings_.at(static_cast<size_t>(index - firstShown_)); }

int TabLayout::widthOf(int index) const { return widths_.at(static_cast<size_t>(index - firstShown_)); }

int TabLayout::tabsBegin() const { return barMargin; }

int TabLayout::tabsEnd() const { return widths_.empty() ? barMargin : leadings_.back() + widths_.back(); }

QRect TabLayout::frame(int leading, int width) const {
    return QStyle::visualRect(direction_, QRect(QPoint(), bar_),
                              QRect(leading, topMargin, width, bar_.height() - topMargin));
}

int TabLayout::fromLeading(int x) const { return direction_ == Qt::RightToLeft ? bar_.width() - 1 - x : x; }

QRect TabLayout::buttonFrame(int leading) const {
    const int top = topMargin + (bar_.height() - topMargin - buttonSide) / 2;
    return QStyle::visualRect(direction_, QRect(QPoint(), bar_), QRect(leading, top, buttonSide, buttonSide));
}

int TabLayout::wishedWidth(const TabBarOptions& options, const TabRoom& room) {
    int width = 2 * barMargin + (options.addTabButton ? buttonSide + buttonGap : 0);
    for (const Limits& limits : limitsOf(options, room))
        width += limits.wished;
    return width;
}

int TabLayout::leastWidth() { return 2 * barMargin + closableWidth + 2 * (buttonSide + buttonGap); }

TabParts tabParts(const QRect& frame, Qt::LayoutDirection direction, const TabContent& content) {
    const auto part = [&](int leading, int width, int height) {
        const int top = frame.top() + (frame.height() - height) / 2;
        return QStyle::visualRect(direction, frame, QRect(frame.left() + leading, top, width, height));
    };
    TabParts parts;
    const int width = frame.width();
    if (width < iconSide)
        return parts; // on its way in or out
    const bool isIconOnly = width < closableWidth;
    const int iconLeading = isIconOnly ? (width - iconSide) / 2 : padding;
    parts.icon = part(iconLeading, iconSide, iconSide);
    if (isIconOnly)
        return parts;
    const int titleLeading = padding + iconSide + partGap;
    int trailing = width - padding;
    const auto placed = [&](int partWidth, int height) {
        if (trailing - partWidth < titleLeading)
            return QRect();
        trailing -= partWidth;
        const QRect place = part(trailing, partWidth, height);
        trailing -= partGap;
        return place;
    };
    if (content.hasCloseButton) {
        trailing = width - closePadding;
        parts.closeButton = placed(closeSide, closeSide);
    }
    if (content.badgeWidth > 0)
        parts.badge = placed(content.badgeWidth, badgeHeight);
    if (content.isEdited)
        parts.editedMark = placed(markSide, markSide);
    if (trailing - titleLeading >= leastTitle)
        parts.title = part(titleLeading, trailing - titleLeading, frame.height());
    return parts;
}

int tabFitWidth(int titleWidth, const TabContent& content) {
    int width = padding + iconSide + partGap + titleWidth + padding;
    if (content.hasCloseButton)
        width += closeSide + partGap + closePadding - padding;
    if (content.badgeWidth > 0)
        width += content.badgeWidth + partGap;
    return width + (content.isEdited ? markSide + partGap : 0);
}

} // namespace quenby
