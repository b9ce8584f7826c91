// GTMHTTPFetcher: the end of an attempt, the decision to retry, the delay before the next attempt, and stopping.
#include "http/GTMHTTPFetcher.h"

#include "http/DownloadFile.h"
#include "http/GTMHTTPFetcherService.h"
#include "http/HTTPLog.h"

namespace quenby {

bool GTMHTTPFetcher::isCurrent(quint64 generation) const { return keptAlive_ && generation_ == generation; }

void GTMHTTPFetcher::attemptDidFail(const Error& error) {
    connection_ = nullptr;
    const bool hasRefreshed = refreshAuthorization();
    if (!mayRetry(hasRefreshed)) {
        attemptDidEnd(error, false);
        return;
    }
    const bool suggestion = hasRefreshed || isRetryError(error);
    if (!queueMailbox_ || (!retrySelector_ && !retryBlock_)) {
        attemptDidEnd(error, askRetryHooks(suggestion, error));
        return;
    }
    // The hooks answer on the delegate queue's thread; until then the fetch is between two attempts.
    state_ = State::deciding;
    queueMailbox_->post([self = shared_from_this(), ticket = callbackTicket(), generation = generation_,
                         selector = retrySelector_, block = retryBlock_, suggestion, error] {
        if (!ticket.isPending())
            return;
        bool retry = selector ? selector(*self, suggestion, error) : suggestion;
        retry = block ? block(retry, error) : retry;
        self->mailbox_->post([self, generation, retry, error] {
            if (self->isCurrent(generation) && self->state_ == State::deciding)
                self->attemptDidEnd(error, retry);
        });
    });
}

// A refused access token is replaced once in a fetcher's life.
bool GTMHTTPFetcher::refreshAuthorization() {
    constexpr int unauthorized = 401;
    if (!authorizer_ || !response_ || response_->statusCode != unauthorized || hasAttemptedAuthRefresh_ ||
        !authorizer_->primeForRefresh(wireRequest_))
        return false;
    hasAttemptedAuthRefresh_ = true;
    request_.headers.remove("Authorization");
    return true;
}

bool GTMHTTPFetcher::mayRetry(bool hasRefreshedAuthorization) const {
    if (request_.bodyStream && request_.bodyStream->isSequential())
        return false; // its bytes are gone
    return hasRefreshedAuthorization || retry_.allowsRetry(timeSource_->elapsed() - initialRequestTime_);
}

bool GTMHTTPFetcher::askRetryHooks(bool suggestedWillRetry, const Error& error) {
    const auto selector = retrySelector_; // copies: a hook may stop the fetch, which releases both
    const auto block = retryBlock_;
    const bool willRetry = selector ? selector(*this, suggestedWillRetry, error) : suggestedWillRetry;
    return block ? block(willRetry, error) : willRetry;
}

void GTMHTTPFetcher::attemptDidEnd(const MaybeError& error, bool willRetry) {
    const auto self = shared_from_this();
    const quint64 generation = generation_;
    if (error)
        qCInfo(httpLog, "%s%s", qUtf8Printable(error->description()), willRetry ? ", will be tried again" : "");
    logAttempt(error, willRetry);
    postStopNotification();
    if (!isCurrent(generation))
        return; // a retry hook or a listener has stopped the fetch
    if (willRetry) {
        beginRetryTimer();
        return;
    }
    stopFetch(ReleaseCallbacks::no);
    requestDidEnd(downloadedData_, error);
}

void GTMHTTPFetcher::beginRetryTimer() {
    connection_ = nullptr;
    state_ = State::retryDelay;
    const auto retryAfter = retryAfterSeconds(responseHeaders(), timeSource_->now());
    retryTimer_ = timeSource_->startTimer(retry_.takeDelay(retryAfter), [this] { retryTimerFired(); });
    Q_EMIT notification(kGTMHTTPFetcherRetryDelayStartedNotification);
}

void GTMHTTPFetcher::retryTimerFired() {
    const auto self = shared_from_this();
    const quint64 generation = generation_;
    destroyRetryTimer();
    if (!isCurrent(generation))
        return;
    ++retryCount_;
    stopFetch(ReleaseCallbacks::no);
    givePlaceBack();
    beginFetchMayDelay(true, true);
}

void GTMHTTPFetcher::destroyRetryTimer() {
    if (!retryTimer_)
        return;
    retryTimer_ = nullptr;
    Q_EMIT notification(kGTMHTTPFetcherRetryDelayStoppedNotification);
}

void GTMHTTPFetcher::finishFetch(const QByteArray& data, const MaybeError& error) {
    const auto self = shared_from_this();
    givePlaceBack(); // before anybody hears of the end
    gate_.deliver(self, data, error);
    stopFetch(ReleaseCallbacks::yes);
}

void GTMHTTPFetcher::stopFetch(ReleaseCallbacks release) {
    const auto self = shared_from_this();
    const quint64 generation = generation_;
    if (release == ReleaseCallbacks::yes)
        stopSubFetches();
    destroyRetryTimer();
    if (connection_) {
        connection_->cancel();
        connection_ = nullptr;
    }
    state_ = State::idle;
    postStopNotification();
    if (generation_ != generation)
        return; // a listener has begun the next fetch, to which all the rest belongs now
    authorization_.cancel();
    authorization_ = {};
    if (release == ReleaseCallbacks::yes) {
        sentDataSelector_ = nullptr;
        sentDataBlock_ = nullptr;
        receivedDataSelector_ = nullptr;
        receivedDataBlock_ = nullptr;
        retrySelector_ = nullptr;
        retryBlock_ = nullptr;
        authorizer_ = nullptr;
        keptAlive_ = nullptr;
        givePlaceBack();
    }
    downloadFile_ = nullptr;
}

void GTMHTTPFetcher::givePlaceBack() {
    if (state_ == State::queued)
        state_ = State::idle;
    if (const auto service = std::exchange(throttle_, nullptr))
        service->fetcherDidStop(*this);
}

void GTMHTTPFetcher::postStopNotification() {
    if (std::exchange(isStopNotificationNeeded_, false))
        Q_EMIT notification(kGTMHTTPFetcherStoppedNotification);
}

void GTMHTTPFetcher::logAttempt(const MaybeError& error, bool willRetry) {
    logDeferredRecord();
    if (!logger_)
        return;
    FetchRecord record;
    record.comment = comment_;
    record.started = attemptDate_;
    record.duration = timeSource_->elapsed() - attemptTime_;
    record.originalURL = originalURL_;
    record.request = wireRequest_;
    record.isURLSecret = isURLSecret_;
    record.willRetry = willRetry;
    record.response = response_;
    record.responseBody = downloadedData_;
    record.responseLength = downloadedLength_;
    record.error = error;
    deferredRecord_ = record;
    if (!shouldDeferResponseBodyLogging_)
        logDeferredRecord();
}

void GTMHTTPFetcher::logDeferredRecord() {
    const auto record = std::exchange(deferredRecord_, std::nullopt);
    if (record && logger_)
        logger_->attemptDidEnd(*record);
}

void GTMHTTPFetcher::setShouldDeferResponseBodyLogging(bool defer) {
    shouldDeferResponseBodyLogging_ = defer;
    if (!defer)
        logDeferredRecord();
}

} // namespace quenby
