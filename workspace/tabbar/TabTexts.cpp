#include "workspace/tabbar/TabTexts.h"

#include "widgets/PlainToolTip.h"
#include "workspace/tabbar/DemoModel.h"

namespace quenby {
namespace {

constexpr qsizetype mostCharacters = 300;
constexpr qsizetype mostInMenu = 60;
constexpr qint64 mostCounted = 999;

bool turnsDirection(QChar character) {
    const char16_t code = character.unicode();
    return code == u'\u061C' || code == u'\u200E' || code == u'\u200F' || (code >= u'\u202A' && code <= u'\u202E') ||
           (code >= u'\u2066' && code <= u'\u2069');
}

QString shortened(const QString& text, qsizetype most) {
    if (text.size() <= most)
        return text;
    const qsizetype kept = text.at(most - 2).isHighSurrogate() ? most - 2 : most - 1;
    return text.first(kept) + QChar(0x2026);
}

} // namespace

QString tabLabel(const DemoModel& model) {
    QString line;
    const QString title = model.title().left(2 * mostCharacters); // blanks may go yet; a page's title may be endless
    line.reserve(title.size());
    for (const QChar character : title) {
        if (!turnsDirection(character))
            line += character.category() == QChar::Other_Control ? QChar(QLatin1Char(' ')) : character;
    }
    line = shortened(line.simplified(), mostCharacters);
    return line.isEmpty() ? QStringLiteral("Untitled") : line;
}

QString toolTipOf(const DemoModel& model) { return plainToolTip(tabLabel(model)); }

QString tabMenuText(const DemoModel& model) {
    return shortened(tabLabel(model), mostInMenu).replace(QLatin1Char('&'), QStringLiteral("&&"));
}

QString tabAccessibleName(const DemoModel& model) {
    QString name = tabLabel(model);
    if (model.isProcessing())
        name += QStringLiteral(", loading");
    if (model.showObjectCount())
        name += QStringLiteral(", %1 %2").arg(model.objectCount()).arg(accessibilityString(model.objectCount()));
    if (model.isEdited())
        name += QStringLiteral(", edited");
    return name;
}

QString objectCountText(qint64 count) {
    return count > mostCounted ? QString::number(mostCounted) + QLatin1Char('+') : QString::number(count);
}

QString accessibilityString(qint64 objectCount) {
    return objectCount == 1 ? QStringLiteral("item") : QStringLiteral("items");
}

} // namespace quenby
