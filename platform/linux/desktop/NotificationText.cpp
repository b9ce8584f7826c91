#include "platform/linux/desktop/NotificationText.h"

#include <QTextBoundaryFinder>

namespace quenby {
namespace {

// More than any service shows; without a limit a name of megabytes would travel over the bus.
constexpr qsizetype longestTitle = 200;
constexpr qsizetype longestBody = 2000;

// Controls draw as boxes, and a NUL ends a text on the bus.
QString withoutControls(const QString& text, bool keepLines) {
    QString result;
    result.reserve(text.size());
    for (const QChar c : text) {
        if (c == QLatin1Char('\n') && keepLines)
            result += c;
        else
            result += c.category() == QChar::Other_Control ? QLatin1Char(' ') : c;
    }
    return result;
}

// Cut between two characters as people see them.
QString elided(const QString& text, qsizetype longest) {
    if (text.size() <= longest)
        return text;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    finder.setPosition(longest - 1);
    if (!finder.isAtBoundary())
        finder.toPreviousBoundary();
    return text.first(qMax(finder.position(), qsizetype(0))) + QChar(0x2026);
}

} // namespace

QString notificationTitle(const QString& title) {
    return elided(withoutControls(title, false).trimmed(), longestTitle);
}

QString notificationBody(const QString& text, bool serviceReadsMarkup) {
    QString body = elided(withoutControls(text, true).trimmed(), longestBody);
    if (!serviceReadsMarkup)
        return body;
    body.replace(QLatin1Char('&'), QLatin1String("&amp;"));
    body.replace(QLatin1Char('<'), QLatin1String("&lt;"));
    return body.replace(QLatin1Char('>'), QLatin1String("&gt;"));
}

} // namespace quenby
