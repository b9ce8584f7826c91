// How the tab bar looks in the style "Aqua": quiet tabs on a shaded bar; the current one is a piece of the page below.
// Colours come from the palette, lines are one device pixel thin and stand on device pixels.
#pragma once

#include "workspace/tabbar/TabLayout.h"

#include <QIcon>
#include <QPalette>

class QPainter;
class QRegion;

namespace quenby {

// What is to be seen of one tab at this moment.
struct TabLook {
    QString label;
    QIcon icon;           // null: a blank page
    int spinnerStep = -1; // in place of the icon; below 0: none
    QString badge;
    QColor badgeColor; // invalid: one of the palette's
    bool isEdited = false;
    bool isCurrent = false;
    bool isUnderPointer = false;
    bool isDropTarget = false;
    bool isLifted = false; // in the user's hand
    bool hasFocusRing = false;
    bool hasSeparator = false; // towards the next tab
    bool showsCloseButton = false;
    bool isCloseUnderPointer = false;
    bool isClosePressed = false;

    TabContent content(const QFontMetrics& metrics) const;
};

// What stands for a page without an icon, where an icon must be.
QIcon blankPageIcon(const QPalette& palette, qreal devicePixelRatio);

enum class BarGlyph { plus, chevron };

struct BarButtonLook {
    BarGlyph glyph;
    bool isUnderPointer = false;
    bool isPressed = false;
    bool hasFocus = false;
};

class TabPainter {
public:
    static constexpr int spinnerSteps = 16; // of one turn

    // Paints only what meets the dirty region.
    TabPainter(QPainter& painter, const QPalette& palette, Qt::LayoutDirection direction, const QRegion& dirty);

    void paintBar(const QRect& bar);
    void paintTab(const QRect& frame, const TabLook& look);
    void paintButton(const QRect& frame, const BarButtonLook& look);

private:
    void paintShape(const QRect& frame, const TabLook& look);
    void paintIcon(const QRect& place, const TabLook& look);
    void paintSpinner(const QRect& place, int step);
    void paintTitle(const QRect& place, const TabLook& look);
    void paintBadge(const QRect& place, const TabLook& look);
    void paintCloseButton(const QRect& place, const TabLook& look);
    void paintFocusRing(const QRectF& frame, qreal radius);
    bool isDirty(const QRect& place) const;
    QRectF onDevicePixels(const QRectF& rect) const;
    QColor ink(float strength) const;

    QPainter& painter_;
    const QPalette& palette_;
    Qt::LayoutDirection direction_;
    const QRegion& dirty_;
    qreal hairline_; // logical pixels of one device pixel
};

} // namespace quenby
