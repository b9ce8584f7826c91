// The file of a recording: hidden while it is written, named when it is whole.
//
// Threads: one. The calls may wait for the disk.
#pragma once

#include "core/Result.h"

#include <QByteArray>

#include <memory>

namespace quenby {

class MovieOnDisk {
public:
    // The path that the movie shall have. Fails with a sentence: the folder is not there or cannot be written to.
    static Result<std::unique_ptr<MovieOnDisk>> create(const QByteArray& path);
    // Removes what has not been named.
    ~MovieOnDisk();
    MovieOnDisk(const MovieOnDisk&) = delete;
    MovieOnDisk& operator=(const MovieOnDisk&) = delete;

    // Open for reading and writing; this object's.
    int descriptor() const { return descriptor_; }
    // What the file's disk has left for this user, in bytes; nothing when it does not say.
    std::optional<qint64> freeSpace() const;
    // Empties it.
    bool startAgain();
    // For a movie whose end was not written: cuts off what cannot be played. False when nothing can.
    bool keepWholePieces();
    // Makes sure that it lies on the disk and gives it its name, or a free one beside it when that is taken by now.
    // The path that it got. When it fails, the file stays as it is under its hidden name.
    Result<QByteArray> giveName();

private:
    MovieOnDisk(QByteArray path, int descriptor);

    const QByteArray path_;
    const QByteArray hiddenPath_;
    const int descriptor_;
    bool isKept_ = false;
};

} // namespace quenby
