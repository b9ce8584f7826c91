// What the file system knows of a file. Threads: any; of() may wait for a disk or a network.
#pragma once

#include <QByteArray>
#include <QDateTime>

#include <optional>

namespace quenby {

struct FileStamp {
    quint64 device = 0;
    quint64 inode = 0;
    qint64 size = 0;              // bytes
    bool isRegular = false;       // no folder, device, pipe, socket or link
    std::optional<qint64> birth;  // milliseconds since 1970; not every file system knows it
    qint64 contentsChanged = 0;   // nanoseconds since 1970; anybody can set it
    qint64 attributesChanged = 0; // nanoseconds since 1970; with the contents, the name, the mode…

    // Of the link itself where there is one. Absent when there is no file, or it cannot be reached.
    static std::optional<FileStamp> of(const QByteArray& path);
    static std::optional<FileStamp> of(int descriptor);
    // Of what a link leads to.
    static std::optional<FileStamp> ofTarget(const QByteArray& path);

    // When it was made, as far as one can tell; milliseconds since 1970.
    qint64 creation() const;
    QDateTime creationDate() const;
    // The same file, wherever it is and whatever was done to it. Where births are not known, a file whose contents were
    // changed is taken for another one: the number of a file that was removed is given to the next.
    bool isSameFile(const FileStamp& other) const {
        return device == other.device && inode == other.inode && birth == other.birth &&
               (birth || contentsChanged == other.contentsChanged);
    }

    friend bool operator==(const FileStamp&, const FileStamp&) = default;
};

} // namespace quenby
