#include "app/uploads/journal/JournalWriter.h"

#include "app/uploads/journal/JournalPlace.h"
#include "app/uploads/journal/JournalTrouble.h"

#include <cerrno>
#include <system_error>

namespace quenby {

UploadJournal::Writer::Writer(const QByteArray& path, Troubled troubled)
    : troubled_(std::move(troubled))
    , file_(path) {
    try {
        thread_ = std::thread([this] { work(); });
    } catch (const std::system_error&) {
        // Slow is better than forgetful.
    }
}

UploadJournal::Writer::~Writer() {
    order({}); // a last try for what could not be written
    {
        const std::lock_guard lock(mutex_);
        isEnding_ = true;
    }
    ordered_.notify_one();
    if (thread_.joinable())
        thread_.join();
}

void UploadJournal::Writer::order(Order order) {
    if (!thread_.joinable()) {
        carryOut({std::move(order)});
        return;
    }
    {
        const std::lock_guard lock(mutex_);
        orders_.push_back(std::move(order));
    }
    ordered_.notify_one();
}

void UploadJournal::Writer::wait() {
    std::unique_lock lock(mutex_);
    rested_.wait(lock, [this] { return orders_.empty() && !isWorking_; });
}

void UploadJournal::Writer::work() {
    std::unique_lock lock(mutex_);
    for (;;) {
        ordered_.wait(lock, [this] { return !orders_.empty() || isEnding_; });
        if (orders_.empty())
            break;
        const std::vector<Order> orders = std::exchange(orders_, {});
        isWorking_ = true;
        lock.unlock();
        carryOut(orders);
        lock.lock();
        isWorking_ = false;
        rested_.notify_all();
    }
    file_.close(); // where it was opened
}

void UploadJournal::Writer::carryOut(const std::vector<Order>& orders) {
    // What was ordered while the disk was busy becomes one transaction.
    std::vector<WrittenGate> waiting;
    const auto saveForThem = [&] {
        const MaybeError error = save();
        for (const WrittenGate& gate : waiting)
            gate.deliver(error);
        waiting.clear();
    };
    for (const Order& order : orders) {
        if (order.loaded) {
            saveForThem();
            order.loaded.deliver(load());
        } else {
            want(order);
            waiting.push_back(order.done);
        }
    }
    saveForThem();
}

void UploadJournal::Writer::want(const Order& order) {
    for (const JournalEntry& entry : order.written) {
        wanted_[entry.number] = entry;
        unsaved_.insert(entry.number);
    }
    for (const qint64 number : order.removed) {
        wanted_.erase(number);
        unsaved_.insert(number);
    }
}

Result<QList<JournalEntry>> UploadJournal::Writer::load() {
    QList<JournalEntry> found;
    const MaybeError error = onOpenFile([&]() -> MaybeError {
        auto entries = file_.entries();
        if (!entries)
            return entries.error();
        found = *std::move(entries);
        return std::nullopt;
    });
    if (error)
        return *error;
    isLoaded_ = true;
    for (const JournalEntry& entry : std::as_const(found))
        if (!unsaved_.contains(entry.number))
            wanted_.insert_or_assign(entry.number, entry);
    return found;
}

MaybeError UploadJournal::Writer::save() {
    if (unsaved_.empty())
        return std::nullopt;
    return onOpenFile([this]() -> MaybeError {
        if (!isLoaded_) {
            const auto entries = file_.entries();
            if (!entries || !entries->isEmpty())
                return entries ? unreadJournal(file_.path()) : entries.error();
            isLoaded_ = true;
        }
        std::vector<const JournalEntry*> written;
        std::vector<qint64> removed;
        for (const qint64 number : unsaved_) {
            const auto entry = wanted_.find(number);
            if (entry != wanted_.end())
                written.push_back(&entry->second);
            else
                removed.push_back(number);
        }
        MaybeError error = file_.change(written, removed);
        if (!error)
            unsaved_.clear();
        return error;
    });
}

// Tells what went wrong. A file that turns out to be of no use is put aside, and the task done with a new one.
template <typename Task>
MaybeError UploadJournal::Writer::onOpenFile(Task task) {
    for (bool isNew = false;; isNew = true) {
        MaybeError error;
        if (!file_.isOpen()) {
            error = file_.open();
            // Whichever file it is now.
            if (!error)
                for (const auto& [number, entry] : wanted_)
                    unsaved_.insert(number);
        }
        if (!error)
            error = task();
        if (!error) {
            told_.clear();
            return std::nullopt;
        }
        const bool isUseless = isDamagedJournal(*error) || isLaterJournal(*error);
        if (isUseless && !isNew && !(error = putAside(*error)))
            continue;
        if (error->is(errorDomain::posix, EACCES))
            file_.close(); // it may have been opened for reading only
        tell(*error);
        return error;
    }
}

MaybeError UploadJournal::Writer::putAside(const Error& reason) {
    file_.close();
    const QByteArray aside = putJournalAside(file_.path(), isLaterJournal(reason) ? "later" : "damaged");
    if (aside.isEmpty())
        return journalTrouble(errno, file_.path());
    tell(putAsideJournal(reason, aside));
    return std::nullopt;
}

void UploadJournal::Writer::tell(const Error& error) {
    const QString before = std::exchange(told_, error.description());
    if (told_ != before)
        troubled_(error);
}

} // namespace quenby
