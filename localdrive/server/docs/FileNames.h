// Titles as names of files. A title may be anything; a name must not lead out of its folder, and every file system
// should take it.
#pragma once

#include <QByteArray>
#include <QString>

namespace quenby::localdrive {

// The title as one part of a path, with the extension (".txt", or empty) behind it unless it ends so already. At most
// 200 bytes in UTF-8, which leaves room for numbers.
QString fileName(const QString& title, const QString& extension = {});

// The same with " (N)" before the extension that it has.
QString numbered(const QString& name, int number);

// "attachment" with that name, for readers old and new (RFC 6266).
QByteArray attachmentNamed(const QString& name);

} // namespace quenby::localdrive
