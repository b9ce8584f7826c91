// The smallest PDF that shows a line of text. The same text makes the same bytes.
#pragma once

#include <QByteArray>
#include <QString>

namespace quenby::localdrive {

// Characters outside ASCII would need a font of their own; they become "?".
QByteArray inventedPdf(const QString& line);

} // namespace quenby::localdrive
