#include "app/diagnostics/DiagnosticsReport.h"

namespace quenby {
namespace {

// A service of the desktop may answer with a novel.
constexpr qsizetype longestGiven = 4000;
constexpr qsizetype longestShown = 400;

// No more than can be searched for secrets in no time, and no half of a word: it might be half of a secret.
QString searchable(const QString& text) {
    return text.size() > longestGiven ? text.first(longestGiven).section(QLatin1Char(' '), 0, -2) : text;
}

QString shown(const QString& text, const PersonalWords& personal) {
    const QString clean = anonymousText(searchable(text.simplified()), personal);
    return clean.size() > longestShown ? clean.first(longestShown) + QStringLiteral("…") : clean;
}

} // namespace

QString diagnosticsText(const QList<DiagnosticsSection>& sections, const PersonalWords& personal) {
    QStringList paragraphs;
    for (const DiagnosticsSection& section : sections) {
        QString paragraph = section.title + QLatin1Char('\n');
        for (const auto& [what, how] : section.lines)
            paragraph += QStringLiteral("  %1: %2\n").arg(shown(what, personal), shown(how, personal));
        paragraphs.append(paragraph);
    }
    return paragraphs.join(QLatin1Char('\n'));
}

} // namespace quenby
