// The thread that works for a journal. It sleeps while there is nothing to do.
//
// It knows what the file is to hold, so that whatever became of the file (damaged, deleted, on a disk that was full),
// the whole of it can be written again. Threads: made, called and destroyed on one; the other is its own.
#pragma once

#include "app/uploads/journal/JournalFile.h"
#include "app/uploads/journal/UploadJournal.h"
#include "core/CompletionGate.h"

#include <condition_variable>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <thread>
#include <utility>
#include <vector>

namespace quenby {

class UploadJournal::Writer {
public:
    using LoadedGate = CompletionGate<Result<QList<JournalEntry>>>;
    using WrittenGate = CompletionGate<MaybeError>;
    // Called on the writer's thread.
    using Troubled = std::function<void(const Error& error)>;

    // One call of the journal. The default is a flush.
    struct Order {
        QList<JournalEntry> written{};
        QList<qint64> removed{};
        WrittenGate done{};
        LoadedGate loaded{}; // set: a load, and nothing else
    };

    Writer(const QByteArray& path, Troubled troubled);
    // Works off what was ordered.
    ~Writer();
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    void order(Order order);
    // Returns when nothing is left to work on.
    void wait();

private:
    // All on the writer's thread:
    void work();
    void carryOut(const std::vector<Order>& orders);
    Result<QList<JournalEntry>> load();
    MaybeError save();
    template <typename Task>
    MaybeError onOpenFile(Task task);
    MaybeError putAside(const Error& reason);
    void want(const Order& order);
    void tell(const Error& error);

    const Troubled troubled_;

    // Of the writer's thread alone:
    JournalFile file_;
    std::map<qint64, JournalEntry> wanted_; // what the file is to hold, by number
    std::set<qint64> unsaved_;              // the numbers with which it may not be as wanted
    bool isLoaded_ = false;                 // so that nothing can be written over what was never read
    QString told_;                          // the trouble there is

    std::mutex mutex_; // guards what follows
    std::condition_variable ordered_;
    std::condition_variable rested_;
    std::vector<Order> orders_;
    bool isWorking_ = false;
    bool isEnding_ = false;

    std::thread thread_; // none: this computer could start no more; then everything is done in order()
};

} // namespace quenby
