// A file that takes its name only when it is whole, and then in the place of whatever had that name. Until then it lies
// hidden in the same folder. Paths are bytes. Threads: any; it waits for the disk.
#pragma once

#include "core/Error.h"

#include <QByteArray>
#include <QFile>

namespace quenby {

class ReplacingFile {
public:
    explicit ReplacingFile(const QByteArray& path);
    // What was not committed is removed.
    ~ReplacingFile();
    ReplacingFile(const ReplacingFile&) = delete;
    ReplacingFile& operator=(const ReplacingFile&) = delete;

    // The errors' reasons are for people.
    MaybeError open();
    // Open for writing between open() and commit().
    QFile& device() { return file_; }
    MaybeError commit();
    // Of errno, or of what the device told last.
    Error error(int code) const;

private:
    QByteArray path_;
    QByteArray hiddenPath_; // empty: there is none
    QFile file_;
};

// Whether a file can be made in the path's folder, as far as can be told beforehand.
MaybeError whyNotWritable(const QByteArray& path);

// Gives a file another name, over file systems too, and in the place of what is there.
MaybeError moveOver(const QByteArray& from, const QByteArray& to);

} // namespace quenby
