// What tells one state of a file from another. A plain value.
#pragma once

#include "core/Result.h"

#include <QByteArray>

struct stat;

namespace quenby {

struct SourceFacts {
    qint64 size = 0;     // bytes
    qint64 modified = 0; // ns since 1970-01-01T00:00Z, as the file system has it

    // Of a regular file. May wait for its disk: not for the main thread. Errors as SourceFile::open().
    static Result<SourceFacts> of(const QByteArray& path);
    static SourceFacts of(const struct stat& status);

    friend bool operator==(const SourceFacts&, const SourceFacts&) = default;
};

} // namespace quenby
