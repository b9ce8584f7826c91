// A tool tip guesses whether its text is markup; this leaves it no choice.
#pragma once

#include <QString>

namespace quenby {

inline QString plainToolTip(const QString& text) {
    return QStringLiteral("<p>") + text.toHtmlEscaped().replace(QLatin1Char('\n'), QStringLiteral("<br>")) +
           QStringLiteral("</p>");
}

} // namespace quenby
