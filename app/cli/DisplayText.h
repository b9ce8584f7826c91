// Text as a terminal may show it: one line, nothing that moves the cursor, and of a known width.
#pragma once

#include <QByteArray>
#include <QString>

namespace quenby {

// Control characters, line breaks and what turns the direction of writing become \xNN or \uNNNN.
QString printableText(const QString& text);

// A file's name or path: as printableText, and bytes that are not UTF-8 become \xNN.
QString printablePath(const QByteArray& path);

// The path for a JSON string: itself when it is UTF-8 (JSON escapes the rest), else printablePath.
QString jsonPath(const QByteArray& path);

// How many columns of a terminal the text takes.
int displayColumns(const QString& text);

// The text with its middle left out, so that it takes at most so many columns.
QString elidedInTheMiddle(const QString& text, int columns);

} // namespace quenby
