#include "popover/changes/RowLook.h"

#include <QStyle>

#include <algorithm>

namespace quenby {
namespace {

constexpr float sharePanelStrength = 0.85F;
constexpr float separatorStrength = 0.5F;

QColor mixed(const QColor& over, float strength, const QColor& ground) {
    const auto mix = [&](float a, float b) { return a * strength + b * (1 - strength); };
    return QColor::fromRgbF(mix(over.redF(), ground.redF()), mix(over.greenF(), ground.greenF()),
                            mix(over.blueF(), ground.blueF()));
}

QColor translucent(QColor colour, float strength) {
    colour.setAlphaF(strength);
    return colour;
}

} // namespace

RowFrames rowFrames(int width, Qt::LayoutDirection direction) {
    const QRect row(0, 0, width, rowHeight);
    const int textWidth = std::max(width - 110, 0);
    const auto placed = [&](const QRect& frame) { return QStyle::visualRect(direction, row, frame); };
    return {placed({90, 14, textWidth, 20}), placed({90, 33, textWidth, 20}), placed({12, 7, 70, 50}),
            placed({width - 100, 13, 80, 40}), placed({4, rowHeight - 1, std::max(width - 4, 0), 1})};
}

RowColours rowColours(const QPalette& palette) {
    const QColor base = palette.color(QPalette::Base);
    const QColor text = palette.color(QPalette::Text);
    const QColor highlight = palette.color(QPalette::Highlight);
    RowColours colours;
    colours.title = text;
    colours.focus = highlight;
    if (text.lightness() <= base.lightness()) {
        const QColor lightGrey(170, 170, 170);
        colours.ground = Qt::white;
        colours.hover = QColor(242, 248, 255);
        colours.time = QColor(110, 110, 110); // the lightest grey that is still easy to read on both grounds
        colours.symbol = QColor(70, 86, 104);
        colours.border = lightGrey;
        colours.emptyPicture = QColor(247, 247, 247);
        colours.separator = translucent(lightGrey, separatorStrength);
    } else {
        const QColor grey = mixed(text, 0.35F, base);
        colours.ground = base;
        colours.hover = mixed(highlight, 0.2F, base);
        colours.time = mixed(text, 0.68F, base);
        colours.symbol = mixed(text, 0.85F, base);
        colours.border = grey;
        colours.emptyPicture = mixed(text, 0.05F, base);
        colours.separator = translucent(grey, separatorStrength);
    }
    colours.sharePanel = translucent(colours.hover, sharePanelStrength);
    return colours;
}

} // namespace quenby
