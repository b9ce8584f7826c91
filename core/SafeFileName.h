// Titles of the Drive as names of local files.
#pragma once

#include <QByteArray>
#include <QString>

namespace quenby {

// A name that every local file system takes and no shell or file manager is surprised by: no slash, no control or
// formatting character (such as those that turn a text's direction), no leading dot, not empty, at most 255 bytes with
// the extension kept.
QByteArray safeFileName(const QString& title);

// The name for the n-th try when it is taken: "a.txt", then "a (2).txt", "a (3).txt" and so on, at most 255 bytes.
QByteArray numberedFileName(const QByteArray& name, int number);

} // namespace quenby
