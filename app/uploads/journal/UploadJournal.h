// Keeps every upload that is not over in a file, so that none is lost whatever ends the program: a crash, a signal, the
// power. The file is the user's alone (mode 0600), because it holds upload locations.
//
// It is read and written on a thread of its own, in the order of the calls; nothing here waits but flush(). Several
// calls that wait together become one transaction. Threads: called on the thread that made it, which runs an event
// loop.
//
// A file that is damaged or of a later version is put aside under another name, and the journal begins empty: told by
// troubled(). So is a disk that is full: what could not be written is tried again with the next call, and its handler
// gets the error. A file that is damaged or deleted meanwhile is made anew, with all that was read and written before.
#pragma once

#include "app/uploads/journal/JournalEntry.h"
#include "core/Error.h"
#include "core/Result.h"

#include <QList>
#include <QObject>

#include <functional>
#include <memory>

namespace quenby {

class UploadJournal : public QObject {
    Q_OBJECT

public:
    using Loaded = std::function<void(const Result<QList<JournalEntry>>& entries)>; // by place
    using Written = std::function<void(const MaybeError& error)>;

    // The folder is made when it is missing (mode 0700). Nothing is opened yet.
    explicit UploadJournal(const QByteArray& path);
    // Waits until everything is written.
    ~UploadJournal() override;

    // First of all calls. When it fails, whatever the file holds is left as it is for the next run of the program, and
    // writing fails as well.
    void load(QObject* context, Loaded loaded);
    // Each takes the place of the one with its number, or is new. No error: they are on the disk.
    void write(const QList<JournalEntry>& entries, QObject* context, Written written);
    // Without an answer; trouble is told by the signal.
    void write(const QList<JournalEntry>& entries);
    void remove(const QList<qint64>& numbers, QObject* context, Written written);
    void remove(const QList<qint64>& numbers);
    // Some of what was read means nothing to the reader. It is left as it is, and told by troubled(), before this
    // returns.
    void tellUnreadable();
    // Returns when everything of before is on the disk, or cannot be. For the end of the program.
    void flush();

Q_SIGNALS:
    // The reason is a sentence for people: what happened, and what to do. The same trouble is told once.
    void troubled(const quenby::Error& error);

private:
    class Writer;
    const QByteArray path_;
    const std::unique_ptr<Writer> writer_;
};

} // namespace quenby
