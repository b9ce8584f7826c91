#include "app/changes/ChangeFeed.h"

#include "app/changes/FeedAnswerReader.h"
#include "app/changes/FeedPages.h"
#include "app/changes/RefusedPlace.h"
#include "core/DefaultsKeys.h"
#include "driveapi/GTLDriveChange.h"
#include "driveapi/GTLQueryDrive.h"
#include "driveapi/GTLServiceDrive.h"
#include "http/GTMHTTPFetcher.h"
#include "http/HTTPDate.h"
#include "platform/Defaults.h"

namespace quenby {
namespace {

using namespace std::chrono_literals;

constexpr auto pollInterval = 30s;
// The most that the server puts on a page. An account's whole feed has to fit into the pages that are followed.
constexpr qint64 changesPerPage = 1000;

std::shared_ptr<GTLQueryDrive> pollQuery(const ChangeStore& store) {
    auto query = GTLQueryDrive::queryForChangesList();
    // A page token is good for the query that it came from.
    if (store.isNextPollFirst() || store.isFirstPollCutOff)
        query->setIncludeDeleted(false);
    if (store.maxFileChangeId > 0)
        query->setStartChangeId(store.maxFileChangeId + 1);
    else if (!store.startPageToken.isEmpty())
        query->setPageToken(store.startPageToken);
    query->setMaxResults(changesPerPage);
    query->setFields(feedAnswerFields());
    return query;
}

} // namespace

ChangeFeed::ChangeFeed(std::shared_ptr<GTLServiceDrive> driveService, const Defaults& defaults, SharingAddress strSHARE,
                       std::shared_ptr<TimeSource> timeSource)
    : driveService_(std::move(driveService))
    , defaults_(defaults)
    , strSHARE_(std::move(strSHARE))
    , timeSource_(std::move(timeSource))
    , serverClock_(timeSource_) {}

ChangeFeed::~ChangeFeed() { giveUpPoll(); }

void ChangeFeed::GetChangeListGoogleDrive() {
    isPolling_ = true;
    poll();
    if (isFetchingFirst() != saidFetchingFirst_)
        tellChanged();
}

void ChangeFeed::clear() {
    giveUpPoll();
    const bool showed = !store_.DriveChangeInfoAPI.isEmpty();
    isPolling_ = false;
    isAnswered_ = false;
    store_ = {};
    if (showed || isFetchingFirst() != saidFetchingFirst_)
        tellChanged();
}

void ChangeFeed::addUploaded(const QString& identifier) {
    if (identifier.isEmpty())
        return;
    store_.listNotificationDontDisplay.insert(identifier);
    uploadedMeanwhile_.insert(identifier);
}

QString ChangeFeed::resourceKeyOf(const QString& identifier) const {
    for (const ChangeRecord& record : store_.DriveChangeInfoAPI) {
        if (record.identifier == identifier)
            return record.resourceKey;
    }
    return {};
}

void ChangeFeed::poll() {
    giveUpPoll();
    pages_ = std::make_unique<FeedPages>(driveService_->parseQueue());
    ticket_ = driveService_->executeQuery(
        pollQuery(store_), this,
        [this, number = number_](const GTLServiceTicketPtr& ticket, const GTLObjectPtr&, const MaybeError& error) {
            if (number == number_)
                answered(*ticket, error);
        });
    if (!ticket_) // could not begin, and is answered all the same
        return;
    ticket_->setPageBlock([this, number = number_](const GTLObjectPtr& page) {
        if (number != number_ || !pages_)
            return;
        if (auto list = std::dynamic_pointer_cast<GTLDriveChangeList>(page))
            pages_->add(std::move(list));
        else
            pages_.reset();
    });
}

void ChangeFeed::answered(const GTLServiceTicket& ticket, const MaybeError& error) {
    ticket_.reset();
    if (const auto& fetcher = ticket.objectFetcher())
        serverClock_.heard(parseHTTPDate(fetcher->responseHeaders().value("Date")));
    const FeedSurroundings surroundings{.now = serverClock_.now(),
                                        .strSHARE = strSHARE_(),
                                        .notificationDisplay =
                                            defaults_.boolForKey(defaultsKey::notificationDisplay, true)};
    const std::unique_ptr<FeedPages> pages = std::move(pages_);
    // What is given up after a failure, the number or the token, is what may have been refused.
    if (error && store_.maxFileChangeId > 0 && isPlaceRefused(*error))
        store_.areNumbersRefused = true;
    if (error || !pages || pages->isEmpty())
        return completed(pollCompleted(store_, std::nullopt, surroundings));
    const CompletionGate<PolledStore> gate(this, [this](PolledStore polled) {
        leaveOutUploaded(polled);
        isAnswered_ = true;
        completed(std::move(polled));
    });
    completion_ = gate.ticket();
    uploadedMeanwhile_.clear();
    pages->complete(store_, surroundings, gate);
}

void ChangeFeed::leaveOutUploaded(PolledStore& polled) {
    for (const QString& identifier : std::exchange(uploadedMeanwhile_, {})) {
        const auto isOfFile = [&](const ChangeNotice& notice) { return notice.record.identifier == identifier; };
        if (polled.notices.removeIf(isOfFile) == 0)
            polled.store.listNotificationDontDisplay.insert(identifier);
    }
}

void ChangeFeed::completed(PolledStore polled) {
    store_ = std::move(polled.store);
    nextPoll_ = timeSource_->startTimer(pollInterval, [this] { poll(); });
    const quint64 number = number_; // who hears of it may sign out
    if (polled.hasNews || isFetchingFirst() != saidFetchingFirst_)
        tellChanged();
    for (const ChangeNotice& notice : polled.notices) {
        if (number == number_)
            Q_EMIT noticed(notice);
    }
}

void ChangeFeed::tellChanged() {
    saidFetchingFirst_ = isFetchingFirst();
    Q_EMIT changed();
}

void ChangeFeed::giveUpPoll() {
    ++number_;
    nextPoll_.reset();
    if (ticket_)
        ticket_->cancelTicket();
    ticket_.reset();
    pages_.reset();
    completion_.cancel();
}

} // namespace quenby
