// What the queue writes down, and how a new run of the program takes it up.
#include "app/uploads/UploadQueue.h"

#include "app/uploads/UploadTask.h"
#include "app/uploads/journal/UploadJournal.h"
#include "app/uploads/queue/SourceLook.h"

namespace quenby {

void UploadQueue::setJournal(UploadJournal& journal) {
    journal_ = &journal;
    isReading_ = true;
    connect(&journal, &UploadJournal::troubled, this, [this] { isMoreWrittenDown_ = true; });
    journal.load(this, [this](const Result<QList<JournalEntry>>& entries) { loaded(entries); });
    if (!order_.isEmpty())
        writeNew(order_);
}

void UploadQueue::loaded(const Result<QList<JournalEntry>>& entries) {
    isReading_ = false;
    QList<qint64> numbers;
    bool isOneUnreadable = false;
    for (const JournalEntry& entry : entries ? *entries : QList<JournalEntry>()) {
        auto upload = queuedUpload(entry);
        isOneUnreadable = isOneUnreadable || !upload;
        if (!upload)
            continue; // it stays where it is
        numbers.append(entry.number);
        insert(std::move(*upload));
    }
    isMoreWrittenDown_ = isMoreWrittenDown_ || !entries || isOneUnreadable;
    sortByPlace();
    if (!numbers.isEmpty())
        Q_EMIT added(numbers);
    Q_EMIT orderChanged(); // what was added meanwhile comes after them
    Q_EMIT wasRead();
    if (isOneUnreadable)
        journal_->tellUnreadable();
    startMore();
    tellWaitingCount();
}

void UploadQueue::release() {
    isReleased_ = true;
    wakeUp_.reset();
    while (!running_.empty())
        interrupt(running_.begin()->first, UploadState::waiting);
    if (journal_)
        journal_->flush();
}

void UploadQueue::writeNew(const QList<qint64>& numbers) {
    const auto isWritten = [this, numbers](const MaybeError&) {
        // A journal in trouble tells of it itself; the upload is not kept waiting for a disk that is full.
        for (const qint64 number : numbers) {
            if (const auto upload = entries_.find(number); upload != entries_.end())
                upload->second.isWrittenDown = true;
        }
        startMore();
    };
    if (!journal_)
        return isWritten({});
    QList<JournalEntry> entries;
    for (const qint64 number : numbers) {
        if (const QueuedUpload* const upload = find(number))
            entries.append(journalEntry(*upload));
    }
    journal_->write(entries, this, isWritten);
}

void UploadQueue::rewrite(const QueuedUpload& upload) {
    if (journal_ && upload.isWrittenDown && !isReleased_)
        journal_->write({journalEntry(upload)});
}

void UploadQueue::keep(qint64 number, const UploadSession& session, const std::function<void()>& kept) {
    const auto found = entries_.find(number);
    if (found == entries_.end() || isReleased_)
        return;
    found->second.session = session;
    if (!journal_)
        return kept();
    // Also when it could not be written: what is lost then is what was sent, not the file.
    journal_->write({journalEntry(found->second)}, this, [this, number, kept](const MaybeError&) {
        if (running_.contains(number))
            kept();
    });
}

// The source goes after what was written down of it: else a run in between would find a file that is not there.
void UploadQueue::forget(const UploadRequest& request) {
    if (journal_)
        journal_->remove({request.number}, this, [this, request](const MaybeError&) { Q_EMIT over(request); });
    else
        Q_EMIT over(request);
}

void UploadQueue::lookAtSources(const QList<qint64>& numbers) {
    if (!journal_) // it matters to the next run alone
        return;
    QList<QByteArray> paths;
    for (const qint64 number : numbers) {
        const QueuedUpload* const upload = find(number);
        paths.append(upload ? upload->request.path : QByteArray());
    }
    quenby::lookAtSources(paths, this, [this, numbers](const QList<std::optional<SourceFacts>>& sources) {
        QList<JournalEntry> looked;
        for (qsizetype i = 0; i < numbers.size(); ++i) {
            const auto found = entries_.find(numbers.at(i));
            if (found == entries_.end() || found->second.source || !sources.at(i))
                continue;
            found->second.source = sources.at(i);
            if (found->second.total < 0)
                found->second.total = sources.at(i)->size;
            looked.append(journalEntry(found->second));
        }
        if (!looked.isEmpty() && !isReleased_)
            journal_->write(looked);
        for (const JournalEntry& entry : std::as_const(looked)) // whoever hears of it may cancel it
            Q_EMIT changed(entry.number);
    });
}

} // namespace quenby
