#include "platform/linux/desktop/NotificationText.h"

#include <QTextBoundaryFinder>

namespace quenby {
namespace {

// What can be read at a glance. Some services show whatever they get, over the whole screen.
struct Limits {
    qsizetype characters;
    int lines;
};
constexpr Limits titleLimits{.characters = 120, .lines = 1};
constexpr Limits bodyLimits{.characters = 300, .lines = 8};

bool breaksLine(QChar c) {
    return c == QLatin1Char('\n') || c == QChar::LineSeparator || c == QChar::ParagraphSeparator;
}

// Controls draw as boxes, and a NUL ends a text on the bus.
bool isControl(QChar c) { return c.category() == QChar::Other_Control; }

// Cut between two characters as people see them.
QString elided(const QString& text, qsizetype longest) {
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    finder.setPosition(qMin(text.size(), longest - 1));
    if (!finder.isAtBoundary())
        finder.toPreviousBoundary();
    return text.first(qMax(finder.position(), qsizetype(0))).trimmed() + QChar(0x2026);
}

// Reads no more than it needs: a name may have megabytes.
QString forAGlance(const QString& text, const Limits& limits) {
    QString result;
    int lines = 1;
    for (const QChar c : QStringView(text).trimmed()) {
        if (breaksLine(c) && limits.lines > 1) {
            if (lines++ == limits.lines)
                return elided(result, limits.characters);
            result += QLatin1Char('\n');
        } else if (!breaksLine(c) && !isControl(c)) {
            result += c;
        } else if (!result.isEmpty() && !result.back().isSpace()) {
            result += QLatin1Char(' ');
        }
        if (result.size() > limits.characters)
            return elided(result, limits.characters);
    }
    return result.trimmed();
}

} // namespace

QString notificationTitle(const QString& title) { return forAGlance(title, titleLimits); }

QString notificationBody(const QString& text, bool serviceReadsMarkup) {
    QString body = forAGlance(text, bodyLimits);
    if (!serviceReadsMarkup)
        return body;
    body.replace(QLatin1Char('&'), QLatin1String("&amp;"));
    body.replace(QLatin1Char('<'), QLatin1String("&lt;"));
    return body.replace(QLatin1Char('>'), QLatin1String("&gt;"));
}

} // namespace quenby
