#include "app/uploads/UploadQueue.h"

#include "app/uploads/UploadTask.h"
#include "app/uploads/journal/UploadJournal.h"
#include "app/uploads/queue/SourceLook.h"
#include "app/uploads/transfer/GeneratedIdentifiers.h"
#include "app/uploads/transfer/UploadTrouble.h"
#include "driveapi/GTLServiceDrive.h"

#include <QLoggingCategory>
#include <QRandomGenerator>

#include <algorithm>
#include <cerrno>

namespace quenby {
namespace {

Q_LOGGING_CATEGORY(queueLog, "quenby.uploads.queue", QtInfoMsg)

using namespace std::chrono_literals;

// Before an upload that got nowhere has another turn. tryNow() comes earlier.
constexpr auto restAfterTrouble = 5min;

// Uploads of no account at all: somebody has to sign in.
Error nobodySignedIn() {
    return Error(FetcherErrorCode::fetchCouldNotBegin,
                 {{errorKey::reason, QStringLiteral("no user is signed in; sign in, then upload it again")}});
}

} // namespace

UploadQueue::UploadQueue(DriveServiceProvider driveService, DestinationFolders& folders,
                         std::shared_ptr<TimeSource> timeSource, UploadLimits limits)
    : driveService_(std::move(driveService))
    , folders_(folders)
    , timeSource_(std::move(timeSource))
    , limits_(limits)
    , lastPlace_(timeSource_->now().toMSecsSinceEpoch() * 1000) {}

UploadQueue::~UploadQueue() = default;

// --- What is kept ---------------------------------------------------------------------------------------------------

void UploadQueue::setJournal(UploadJournal& journal) {
    journal_ = &journal;
    isReading_ = true;
    journal.load(this, [this](const Result<QList<JournalEntry>>& entries) { loaded(entries); });
    if (!order_.isEmpty())
        writeNew(order_);
}

void UploadQueue::loaded(const Result<QList<JournalEntry>>& entries) {
    isReading_ = false;
    QList<qint64> numbers;
    for (const JournalEntry& entry : entries ? *entries : QList<JournalEntry>()) {
        if (auto upload = queuedUpload(entry)) {
            numbers.append(entry.number);
            insert(std::move(*upload));
        } else {
            qCWarning(queueLog, "an upload that was written down can't be read and is left out");
            journal_->remove({entry.number});
        }
    }
    sortByPlace();
    if (!numbers.isEmpty())
        Q_EMIT added(numbers);
    Q_EMIT orderChanged(); // what was added meanwhile comes after them
    Q_EMIT wasRead();
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

void UploadQueue::setAccount(const QString& account) {
    if (std::exchange(account_, account) == account)
        return;
    identifiers_.reset();
    interruptThoseThatMayNot();
    Q_EMIT accountChanged();
    startMore();
    tellWaitingCount();
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
    for (const qint64 number : numbers)
        entries.append(journalEntry(entries_.at(number)));
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

// --- Uploads --------------------------------------------------------------------------------------------------------

void UploadQueue::add(const QList<UploadRequest>& requests) {
    if (!driveService_())
        return refuse(requests);
    QList<qint64> numbers;
    for (const UploadRequest& request : requests) {
        QueuedUpload upload;
        upload.request = request;
        upload.request.number = newNumber();
        upload.place = ++lastPlace_;
        upload.account = account_;
        upload.queuedAt = timeSource_->now();
        numbers.append(upload.request.number);
        insert(std::move(upload));
    }
    Q_EMIT added(numbers);
    writeNew(numbers);
    lookAtSources(numbers);
    tellWaitingCount();
}

// Of no other upload, also of those that are still being read.
qint64 UploadQueue::newNumber() const {
    qint64 number = 0;
    while (number <= 0 || entries_.contains(number))
        number = static_cast<qint64>(QRandomGenerator::global()->generate64() >> 1);
    return number;
}

void UploadQueue::sortByPlace() {
    std::stable_sort(order_.begin(), order_.end(),
                     [this](qint64 left, qint64 right) { return entries_.at(left).place < entries_.at(right).place; });
}

void UploadQueue::refuse(const QList<UploadRequest>& requests) {
    for (UploadRequest request : requests) {
        request.number = newNumber();
        QMetaObject::invokeMethod(
            this,
            [this, request] {
                Q_EMIT finished(request, nobodySignedIn());
                Q_EMIT over(request);
            },
            Qt::QueuedConnection);
    }
}

void UploadQueue::insert(QueuedUpload upload) {
    const qint64 number = upload.request.number;
    lastPlace_ = std::max(lastPlace_, upload.place);
    order_.append(number);
    entries_.insert_or_assign(number, std::move(upload));
}

void UploadQueue::cancelAll() {
    QList<qint64> ours;
    for (const auto& [number, upload] : entries_) {
        if (isOurs(upload))
            ours.append(number);
    }
    cancel(ours);
}

void UploadQueue::cancel(const QList<qint64>& numbers) {
    for (const qint64 number : numbers) {
        interrupt(number, UploadState::waiting);
        if (erase(number))
            Q_EMIT removed(number);
    }
    if (journal_)
        journal_->remove(numbers);
    startMore();
    tellWaitingCount();
}

void UploadQueue::pause(const QList<qint64>& numbers) {
    for (const qint64 number : numbers) {
        const auto found = entries_.find(number);
        if (found == entries_.end() || !(found->second.waits() || found->second.state == UploadState::running))
            continue;
        interrupt(number, UploadState::paused);
        found->second.isFresh = false;
        setState(found->second, UploadState::paused);
        rewrite(found->second);
    }
    startMore();
    tellWaitingCount();
}

void UploadQueue::resume(const QList<qint64>& numbers) {
    for (const qint64 number : numbers) {
        const auto found = entries_.find(number);
        if (found == entries_.end() ||
            (found->second.state != UploadState::paused && found->second.state != UploadState::resting))
            continue;
        setState(found->second, UploadState::waiting);
        rewrite(found->second);
    }
    startMore();
    tellWaitingCount();
}

void UploadQueue::retry(const QList<qint64>& numbers) {
    for (const qint64 number : numbers) {
        const auto found = entries_.find(number);
        if (found == entries_.end() ||
            (found->second.state != UploadState::failed && found->second.state != UploadState::changed))
            continue;
        QueuedUpload& upload = found->second;
        // What the Drive holds may be of the file as it was. The identifier stays: nothing has come into being by it.
        upload.session.location.clear();
        upload.session.held = 0;
        upload.source.reset();
        upload.isFresh = true;
        upload.sent = 0;
        setState(upload, UploadState::waiting);
        rewrite(upload);
    }
    startMore();
    tellWaitingCount();
}

void UploadQueue::setOrder(const QList<qint64>& numbers) {
    QList<qint64> first;
    for (const qint64 number : numbers) {
        if (entries_.contains(number) && !first.contains(number))
            first.append(number);
    }
    qint64 place = 0;
    for (const auto& [number, upload] : entries_)
        place = std::min(place, upload.place);
    place -= first.size();
    QList<JournalEntry> moved;
    for (const qint64 number : std::as_const(first)) {
        QueuedUpload& upload = entries_.at(number);
        upload.place = place++;
        moved.append(journalEntry(upload));
    }
    sortByPlace();
    if (journal_ && !moved.isEmpty())
        journal_->write(moved);
    Q_EMIT orderChanged();
    startMore();
}

void UploadQueue::adoptOthers() {
    for (auto& [number, upload] : entries_) {
        if (isOurs(upload))
            continue;
        upload.account = account_;
        // A session and an identifier are of the other account's Drive.
        upload.session = {};
        rewrite(upload);
    }
    Q_EMIT accountChanged();
    startMore();
    tellWaitingCount();
}

void UploadQueue::forgetOthers() {
    QList<qint64> others;
    for (const auto& [number, upload] : entries_) {
        if (!isOurs(upload))
            others.append(number);
    }
    cancel(others);
}

// --- All at once ----------------------------------------------------------------------------------------------------

void UploadQueue::setHeldBack(bool isHeldBack) {
    if (std::exchange(isHeldBack_, isHeldBack) == isHeldBack)
        return;
    interruptThoseThatMayNot();
    startMore();
    tellWaitingCount();
}

void UploadQueue::setMaxSendSpeed(qint64 bytesPerSecond) {
    maxSendSpeed_ = std::max<qint64>(bytesPerSecond, 0);
    shareSpeed();
}

// Each that runs gets the same share; one that needs less leaves the rest unused until it is over.
void UploadQueue::shareSpeed() {
    const qint64 count = std::max<qint64>(static_cast<qint64>(running_.size()), 1);
    const qint64 share = maxSendSpeed_ > 0 ? std::max<qint64>(maxSendSpeed_ / count, 1) : 0;
    for (const auto& [number, task] : running_)
        task->setMaxSendSpeed(share);
}

void UploadQueue::tryNow() {
    for (const qint64 number : resting_.values())
        setState(entries_.at(number), UploadState::waiting);
    for (const auto& [number, task] : running_)
        task->tryNow();
    startMore();
}

// --- What there is --------------------------------------------------------------------------------------------------

const QueuedUpload* UploadQueue::find(qint64 number) const {
    const auto found = entries_.find(number);
    return found == entries_.end() ? nullptr : &found->second;
}

QList<UploadRequest> UploadQueue::remaining() const {
    QList<UploadRequest> requests;
    for (const qint64 number : order_) {
        const QueuedUpload& upload = entries_.at(number);
        if (isOurs(upload) && upload.isToBeDone())
            requests.append(upload.request);
    }
    return requests;
}

QStringList UploadQueue::otherAccounts() const {
    QStringList accounts;
    for (const auto& [number, upload] : entries_) {
        if (!isOurs(upload) && !accounts.contains(upload.account))
            accounts.append(upload.account);
    }
    return accounts;
}

qsizetype UploadQueue::otherCount() const {
    return std::count_if(entries_.begin(), entries_.end(), [this](const auto& entry) { return !isOurs(entry.second); });
}

size_t UploadQueue::waitingCount() const {
    return static_cast<size_t>(std::count_if(entries_.begin(), entries_.end(), [this](const auto& entry) {
        return isOurs(entry.second) && entry.second.waits();
    }));
}

bool UploadQueue::isAnyIn(const QByteArray& folder) const {
    return isReading_ ||
           std::any_of(entries_.begin(), entries_.end(), [below = QByteArray(folder + '/')](const auto& entry) {
               return entry.second.request.path.startsWith(below);
           });
}

// --- Turns ----------------------------------------------------------------------------------------------------------

bool UploadQueue::mayRun(const QueuedUpload& upload) const {
    return !isReleased_ && !isHeldBack_ && upload.isWrittenDown && isOurs(upload);
}

void UploadQueue::startMore() {
    if (isReleased_ || isHeldBack_ || isReading_ || !driveService_())
        return;
    const auto now = timeSource_->elapsed();
    QList<qint64> next; // starting one may change the order
    for (const qint64 number : std::as_const(order_)) {
        if (running_.size() + static_cast<size_t>(next.size()) >= limits_.uploadsAtOnce)
            break;
        const QueuedUpload& upload = entries_.at(number);
        const bool hasRested = upload.state == UploadState::resting && upload.restsUntil <= now;
        if ((upload.state == UploadState::waiting || hasRested) && mayRun(upload))
            next.append(number);
    }
    for (const qint64 number : std::as_const(next)) {
        if (const auto upload = entries_.find(number); upload != entries_.end() && !running_.contains(number))
            start(upload->second);
    }
    if (!next.isEmpty())
        shareSpeed();
    wakeLater();
}

// When the one that ended has closed its file.
void UploadQueue::startMoreSoon() {
    QMetaObject::invokeMethod(
        this, [this] { startMore(); }, Qt::QueuedConnection);
}

void UploadQueue::start(QueuedUpload& upload) {
    const qint64 number = upload.request.number;
    const auto service = driveService_();
    if (!identifiers_ || identifiersService_.lock() != service) {
        identifiers_ = std::make_shared<GeneratedIdentifiers>(service);
        identifiersService_ = service;
    }
    auto task = std::make_unique<UploadTask>(
        UploadTask::Surroundings{
            .service = service,
            .folders = folders_,
            .timeSource = timeSource_,
            .patience = limits_.patience,
            .identifiers = identifiers_,
            .keep = [this, number](const UploadSession& session,
                                   const std::function<void()>& kept) { keep(number, session, kept); }},
        upload);
    const UploadRequest request = upload.request;
    connect(task.get(), &UploadTask::folderFound, this, [this, request](const QString& identifier) {
        // Whoever waits for the same folder need not look for it again.
        for (auto& [other, waiting] : entries_) {
            if (waiting.state == UploadState::waiting && waiting.request.folderName == request.folderName &&
                waiting.account == account_)
                waiting.request.parentId = identifier;
        }
    });
    connect(task.get(), &UploadTask::started, this, [this, request] { Q_EMIT started(request); });
    connect(task.get(), &UploadTask::opened, this, [this, number](const SourceFacts& source) {
        QueuedUpload& opened = entries_.at(number);
        opened.source = source;
        opened.total = source.size;
    });
    connect(task.get(), &UploadTask::progressed, this, [this, request](qint64 sent, qint64 total) {
        QueuedUpload& sending = entries_.at(request.number);
        sending.sent = sent;
        sending.total = total;
        sending.reason.clear();
        Q_EMIT progressed(request, sent, total);
        Q_EMIT changed(request.number);
    });
    connect(task.get(), &UploadTask::troubled, this, [this, request](const Error& error) {
        entries_.at(request.number).reason = error.description();
        Q_EMIT troubled(request, error);
        Q_EMIT changed(request.number);
    });
    connect(task.get(), &UploadTask::finished, this,
            [this, number](const Result<UploadRun::Outcome>& outcome) { taskFinished(number, outcome); });
    connect(task.get(), &UploadTask::leftOut, this, [this, number](const Error& error) { taskLeftOut(number, error); });
    connect(task.get(), &UploadTask::foundChange, this, [this, number] { taskFoundChange(number); });
    UploadTask* const begun = running_.emplace(number, std::move(task)).first->second.get();
    setState(upload, UploadState::running);
    begun->start();
    tellWaitingCount();
}

// A task ends from inside one of its own signals: it is kept until the event loop's next turn.
void UploadQueue::end(qint64 number) {
    auto task = running_.extract(number);
    if (task.empty())
        return;
    task.mapped()->disconnect(this);
    task.mapped()->setParent(this); // it does not outlive us
    task.mapped().release()->stop();
}

void UploadQueue::taskFinished(qint64 number, const Result<UploadRun::Outcome>& outcome) {
    end(number);
    QueuedUpload& upload = entries_.at(number);
    if (!outcome && comesBack(upload, outcome.error()))
        return startMoreSoon();
    const UploadRequest request = upload.request;
    const bool isToStay = !outcome && !request.removeSource; // to be tried again by the user
    if (isToStay) {
        setState(upload, UploadState::failed, outcome.error().description());
        rewrite(upload);
    } else {
        erase(number);
    }
    Q_EMIT finished(request, outcome);
    if (!isToStay) {
        Q_EMIT removed(number);
        forget(request);
    }
    startMoreSoon();
    tellWaitingCount();
}

// The source goes after what was written down of it: else a run in between would find a file that is not there.
void UploadQueue::forget(const UploadRequest& request) {
    if (journal_)
        journal_->remove({request.number}, this, [this, request](const MaybeError&) { Q_EMIT over(request); });
    else
        Q_EMIT over(request);
}

// Trouble that may pass has outlasted the patience: others get its place.
bool UploadQueue::comesBack(QueuedUpload& upload, const Error& error) {
    if (!limits_.comesBack || troubleOf(error, false) != UploadTrouble::passing)
        return false;
    upload.isFresh = false;
    upload.restsUntil = timeSource_->elapsed() + restAfterTrouble;
    setState(upload, UploadState::resting, error.description());
    rewrite(upload);
    Q_EMIT troubled(upload.request, error);
    return true;
}

void UploadQueue::taskLeftOut(qint64 number, const Error& error) {
    end(number);
    QueuedUpload& upload = entries_.at(number);
    if (comesBack(upload, error))
        return startMoreSoon();
    const UploadRequest request = upload.request;
    const bool isGone = error.is(errorDomain::posix, ENOENT);
    if (journal_ && !isGone) { // silently, but not lost
        setState(upload, UploadState::failed, error.description());
        rewrite(upload);
        Q_EMIT leftOut(request, error);
    } else {
        erase(number);
        Q_EMIT leftOut(request, error);
        Q_EMIT removed(number);
        forget(request);
    }
    startMoreSoon();
    tellWaitingCount();
}

void UploadQueue::taskFoundChange(qint64 number) {
    end(number);
    QueuedUpload& upload = entries_.at(number);
    setState(upload, UploadState::changed);
    rewrite(upload);
    const UploadRequest request = upload.request;
    Q_EMIT sourceChanged(request);
    startMoreSoon();
    tellWaitingCount();
}

// What it has come to by now stays of use.
void UploadQueue::interrupt(qint64 number, UploadState becomes) {
    if (!running_.contains(number))
        return;
    end(number);
    QueuedUpload& upload = entries_.at(number);
    upload.isFresh = false;
    upload.session.held = upload.sent;
    rewrite(upload);
    setState(upload, becomes);
}

void UploadQueue::interruptThoseThatMayNot() {
    QList<qint64> numbers;
    for (const auto& [number, task] : running_) {
        if (!mayRun(entries_.at(number)))
            numbers.append(number);
    }
    for (const qint64 number : std::as_const(numbers))
        interrupt(number, UploadState::waiting);
}

bool UploadQueue::erase(qint64 number) {
    resting_.remove(number);
    return entries_.erase(number) > 0 && order_.removeOne(number);
}

void UploadQueue::setState(QueuedUpload& upload, UploadState state, const QString& reason) {
    upload.reason = reason;
    upload.state = state;
    if (state == UploadState::resting)
        resting_.insert(upload.request.number);
    else
        resting_.remove(upload.request.number);
    Q_EMIT changed(upload.request.number);
}

// Many ends in a row are counted once.
void UploadQueue::tellWaitingCount() {
    if (std::exchange(isCountToBeTold_, true))
        return;
    QMetaObject::invokeMethod(
        this,
        [this] {
            isCountToBeTold_ = false;
            Q_EMIT waitingCountChanged();
        },
        Qt::QueuedConnection);
}

void UploadQueue::lookAtSources(const QList<qint64>& numbers) {
    if (!journal_) // it matters to the next run alone
        return;
    QList<QByteArray> paths;
    for (const qint64 number : numbers)
        paths.append(entries_.at(number).request.path);
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
            Q_EMIT changed(found->first);
        }
        if (!looked.isEmpty() && !isReleased_)
            journal_->write(looked);
    });
}

// When the first of those that rest is due.
void UploadQueue::wakeLater() {
    std::optional<std::chrono::milliseconds> earliest;
    for (const qint64 number : std::as_const(resting_)) {
        if (const QueuedUpload& upload = entries_.at(number); mayRun(upload))
            earliest = std::min(earliest.value_or(upload.restsUntil), upload.restsUntil);
    }
    wakeUp_.reset();
    if (!earliest)
        return;
    const auto delay = std::max(*earliest - timeSource_->elapsed(), std::chrono::milliseconds(1));
    wakeUp_ = timeSource_->startTimer(delay, [this] { startMore(); });
}

} // namespace quenby
