#include "app/statusitem/StatusItemSizing.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QScreen>

namespace quenby {
namespace {

constexpr qreal fontPixels = 14.5;
constexpr qreal pointsPerInch = 72;

struct Terms {
    bool countsText;
    int icon;
    int padding;
};

constexpr Terms terms(bool showMenubarIcon, bool showUsegeText) {
    if (showMenubarIcon)
        return showUsegeText ? Terms{true, 17, 12} : Terms{true, 0, 5};
    return showUsegeText ? Terms{false, 17, 10} : Terms{true, 17, 0};
}

} // namespace

qreal statusItemWidth(qreal textWidth, bool showMenubarIcon, bool showUsegeText) {
    const Terms used = terms(showMenubarIcon, showUsegeText);
    return (used.countsText ? textWidth : 0) + used.icon + used.padding;
}

QFont statusItemFont(int dotsPerInch) {
    QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    // A size in pixels would have to be a whole number.
    font.setPointSizeF(fontPixels * pointsPerInch / dotsPerInch);
    return font;
}

QFont statusItemFont() {
    const QScreen* screen = QGuiApplication::primaryScreen();
    return statusItemFont(screen ? qRound(screen->logicalDotsPerInchY()) : int(pointsPerInch));
}

qreal widthOfString(const QString& string, const QFont& font) { return QFontMetricsF(font).horizontalAdvance(string); }

} // namespace quenby
