// What a drag offers: the files' paths, and whether there is anything among them to upload. Threads: any.
#pragma once

#include <QByteArray>
#include <QList>

class QMimeData;

namespace quenby {

// The local files and folders of a drag, as absolute paths in the bytes that the file system knows, which need not be
// text. Addresses that are no local files are left out.
QList<QByteArray> droppedPaths(const QMimeData& data);

// Whether one of them is a regular file, or a link to one. Looks no further than the first.
bool holdsRegularFile(const QList<QByteArray>& paths);

} // namespace quenby
