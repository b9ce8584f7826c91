// Whether two paths mean the same folder to a person: slashes and dots make no difference, nor do links.
//
// Paths are absolute, as bytes. Only paths that read differently are looked up, and the file system may be waited for
// then. Threads: any.
#pragma once

#include <QByteArray>

namespace quenby {

bool isSameFolder(const QByteArray& one, const QByteArray& other);
// The folder itself, or something below it.
bool isInFolder(const QByteArray& path, const QByteArray& folder);
// Of the root: the root.
QByteArray parentFolder(const QByteArray& folder);

// Without needless slashes and dots; links stay.
QByteArray cleanedPath(const QByteArray& path);
// Without links; null when nothing is there.
QByteArray canonicalPath(const QByteArray& path);

} // namespace quenby
