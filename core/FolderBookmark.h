// Names a folder so that it is found again in a later run, and another one that took its place is not taken for it.
//
// A bookmark is opaque: printable bytes, which settings may keep as text. Both calls ask the file system and may wait
// for it. Threads: any.
#pragma once

#include "core/Result.h"

#include <QByteArray>

namespace quenby {

// Of an existing folder; the path is absolute. Errors: errorDomain::posix.
Result<QByteArray> makeFolderBookmark(const QByteArray& path);

// The path, when the same folder lies there still. Errors: errorDomain::posix; EINVAL for bytes that are no bookmark,
// ESTALE when another folder lies there now, else what the file system says.
Result<QByteArray> resolveFolderBookmark(const QByteArray& bookmark);

} // namespace quenby
