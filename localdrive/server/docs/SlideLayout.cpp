#include "localdrive/server/docs/SlideLayout.h"

#include <QFontMetrics>
#include <QTextLayout>

#include <algorithm>

namespace quenby::localdrive {
namespace {

constexpr int margin = 64;
constexpr int textWidth = SlideLayout::width - 2 * margin;
constexpr int titleSize = 40;
constexpr int textSizes[] = {26, 20, 15, 12}; // the largest that fits
constexpr int mostHeight = 8 * SlideLayout::usualHeight;

QFont fontOf(int size, bool isTitle) {
    QFont font(QStringLiteral("sans-serif"));
    font.setStyleHint(QFont::SansSerif);
    font.setPixelSize(size);
    font.setBold(isTitle);
    return font;
}

// Appends the text's lines below `y` and returns where they end. What would not fit into the highest slide is left out.
int addText(const QString& text, int size, bool isTitle, int y, QList<SlideLine>& lines) {
    const QFont font = fontOf(size, isTitle);
    const QFontMetrics metrics(font);
    const int lineHeight = metrics.height() + size / 4;
    for (const QString& paragraph : text.split(QLatin1Char('\n'))) {
        if (paragraph.isEmpty())
            y += lineHeight;
        QTextLayout layout(paragraph, font);
        layout.beginLayout();
        for (QTextLine line = layout.createLine(); line.isValid() && y < mostHeight; line = layout.createLine()) {
            line.setLineWidth(textWidth);
            const QString words = paragraph.mid(line.textStart(), line.textLength()).trimmed();
            lines.append({words, margin, y + metrics.ascent(), size, isTitle});
            y += lineHeight;
        }
        layout.endLayout();
        if (y >= mostHeight)
            return mostHeight;
    }
    return y;
}

} // namespace

SlideLayout layoutOf(const Section& section) {
    SlideLayout layout;
    const int top = section.title.isEmpty()
                        ? margin
                        : addText(section.title, titleSize, true, margin, layout.lines) + titleSize / 2;
    if (section.text.isEmpty()) {
        layout.height = std::max(layout.height, top + margin);
        return layout;
    }
    const qsizetype titleLines = layout.lines.size();
    for (const int size : textSizes) {
        layout.lines.resize(titleLines);
        const int bottom = addText(section.text, size, false, top, layout.lines) + margin;
        layout.height = std::max(SlideLayout::usualHeight, bottom);
        if (bottom <= SlideLayout::usualHeight)
            break;
    }
    return layout;
}

QFont slideFont(const SlideLine& line) { return fontOf(line.fontSize, line.isTitle); }

} // namespace quenby::localdrive
