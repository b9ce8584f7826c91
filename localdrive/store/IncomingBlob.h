// A file content on its way in: a named part file below `incoming/` that grows at its end and outlives the process, so
// that an upload can go on after a restart.
//
// Threads: one at a time. Never holds the content in memory.
#pragma once

#include "core/Result.h"

#include <QByteArray>
#include <QCryptographicHash>
#include <QFile>
#include <QString>

namespace quenby::localdrive {

// A complete content that waits for its place in the Drive: BlobStore::adopt() puts it there.
struct StagedBlob {
    QString path;
    qint64 size = 0;
    QString md5; // hexadecimal, lower case
};

class IncomingBlob {
public:
    IncomingBlob(IncomingBlob&&) = delete;
    IncomingBlob& operator=(IncomingBlob&&) = delete;

    // Bytes that the part file holds.
    qint64 size() const { return size_; }

    // Writes at the offset, which must not lie behind the end: bytes that are there already (a client that sends them
    // again) are skipped, the rest is appended. When the disk is full or fails, the part file is cut back to where it
    // was.
    Result<void> append(qint64 offset, QByteArrayView bytes);

    // Puts everything appended so far on disk. Call it before telling a client how much has arrived.
    Result<void> sync();

    // sync(), then the facts of the whole. The MD5 is computed while bytes are appended; after a restart the earlier
    // ones are read once more.
    Result<StagedBlob> finish();

private:
    friend class BlobStore;
    explicit IncomingBlob(const QString& path);
    Result<void> open();
    Result<void> hashUpTo(qint64 end);
    Error failure(const char* action) const;

    QFile file_;
    qint64 size_ = 0;
    QCryptographicHash md5_{QCryptographicHash::Md5};
    qint64 hashed_ = 0; // bytes that md5_ has seen, from the start
};

} // namespace quenby::localdrive
