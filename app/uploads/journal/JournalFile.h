// The SQLite database that a journal is kept in.
//
// Durability: a rollback journal with synchronous=FULL, so that a change that was carried out survives a killed program
// and a power failure, and one that was interrupted is undone by the next open(). There is no write-ahead log: it would
// keep upload locations after they were removed, and reading it needs room on a disk that may be full.
//
// Threads: one at a time, and the same from open() to close(). Every call may wait for the disk, and up to ten seconds
// for another program that holds the file.
#pragma once

#include "app/uploads/journal/JournalEntry.h"
#include "core/Error.h"
#include "core/Result.h"

#include <QList>

#include <memory>
#include <vector>

namespace quenby {

class JournalFile {
public:
    explicit JournalFile(const QByteArray& path);
    ~JournalFile();
    JournalFile(const JournalFile&) = delete;
    JournalFile& operator=(const JournalFile&) = delete;

    const QByteArray& path() const { return path_; }

    // False as well when the name leads to another file by now, or to none: what would be written would be lost.
    bool isOpen() const;
    // Makes the file when it is missing. Errors as in JournalTrouble.h. One that may not be written is opened for
    // reading.
    MaybeError open();
    void close();

    // Only while it is open. By place.
    Result<QList<JournalEntry>> entries();
    // All or nothing.
    MaybeError change(const std::vector<const JournalEntry*>& written, const std::vector<qint64>& removed);

private:
    class Connection;

    MaybeError begin();

    const QByteArray path_;
    std::unique_ptr<Connection> connection_;
    quint64 device_ = 0; // with the next, what tells the open file from any other
    quint64 inode_ = 0;
};

} // namespace quenby
