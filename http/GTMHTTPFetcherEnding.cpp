// GTMHTTPFetcher: the end of an attempt, the decision to retry, the delay before the next attempt, and stopping.
#include "http/GTMHTTPFetcher.h"

#include "http/FetchAttempt.h"
#include "http/GTMHTTPFetcherService.h"
#include "http/HTTPLog.h"

namespace quenby {

bool GTMHTTPFetcher::isCurrent(quint64 generation) const { return keptAlive_ && generation_ == generation; }

void GTMHTTPFetcher::attemptDidFail(const Error& error) {
    attempt_.write().connection = nullptr;
    const bool hasRefreshed = refreshAuthorization();
    if (!mayRetry(hasRefreshed)) {
        attemptDidEnd(error, false);
        return;
    }
    const bool suggestion = hasRefreshed || isRetryError(error);
    if (!queueMailbox_ || (!retrySelector() && !retryBlock())) {
        attemptDidEnd(error, askRetryHooks(suggestion, error));
        return;
    }
    // The hooks answer on the delegate queue's thread; until then the fetch is between two attempts.
    state_ = State::deciding;
    queueMailbox_->post([self = shared_from_this(), ticket = callbackTicket(), generation = generation_,
                         selector = retrySelector(), block = retryBlock(), suggestion, error] {
        if (!ticket.isPending())
            return;
        bool retry = selector ? selector(*self, suggestion, error) : suggestion;
        retry = block ? block(retry, error) : retry;
        self->post([self, generation, retry, error] {
            if (self->isCurrent(generation) && self->state_ == State::deciding)
                self->attemptDidEnd(error, retry);
        });
    });
}

// A refused access token is replaced once in a fetcher's life.
bool GTMHTTPFetcher::refreshAuthorization() {
    constexpr int unauthorized = 401;
    if (!authorizer_ || !response() || response()->statusCode != unauthorized || hasAttemptedAuthRefresh_ ||
        !authorizer_->primeForRefresh(attempt_->wireRequest))
        return false;
    hasAttemptedAuthRefresh_ = true;
    request_.headers.remove("Authorization");
    return true;
}

bool GTMHTTPFetcher::mayRetry(bool hasRefreshedAuthorization) const {
    if (request_.bodyStream && request_.bodyStream->isSequential())
        return false; // its bytes are gone
    return hasRefreshedAuthorization || retry_.allowsRetry(timeSource()->elapsed() - initialRequestTime_);
}

bool GTMHTTPFetcher::askRetryHooks(bool suggestedWillRetry, const Error& error) {
    const auto selector = retrySelector(); // copies: a hook may stop the fetch, which releases both
    const auto block = retryBlock();
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
    const QByteArray data = downloadedData(); // its own: whoever hears of the end may begin the next fetch
    requestDidEnd(data, error);
}

void GTMHTTPFetcher::beginRetryTimer() {
    FetchAttempt& attempt = attempt_.write();
    attempt.connection = nullptr;
    state_ = State::retryDelay;
    const auto retryAfter = retryAfterSeconds(responseHeaders(), timeSource()->now());
    attempt.retryTimer = timeSource()->startTimer(retry_.takeDelay(retryAfter), [this] { retryTimerFired(); });
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
    if (!attempt_->retryTimer)
        return;
    attempt_.write().retryTimer = nullptr;
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
    if (attempt_->connection) {
        attempt_->connection->cancel();
        attempt_.write().connection = nullptr;
    }
    state_ = State::idle;
    postStopNotification();
    if (generation_ != generation)
        return; // a listener has begun the next fetch, to which all the rest belongs now
    attempt_->authorization.cancel();
    attempt_.reset();
    if (release == ReleaseCallbacks::yes) {
        hooks_.reset();
        authorizer_ = nullptr;
        keptAlive_ = nullptr;
        givePlaceBack();
    }
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
    if (!logger())
        return;
    deferredRecord_ = std::make_unique<FetchRecord>();
    FetchRecord& record = *deferredRecord_;
    record.comment = comment();
    record.started = attempt_->date;
    record.duration = timeSource()->elapsed() - attempt_->time;
    record.originalURL = attempt_->originalURL;
    record.request = attempt_->wireRequest;
    record.isURLSecret = isURLSecret_;
    record.willRetry = willRetry;
    record.response = response();
    record.responseBody = downloadedData();
    record.responseLength = downloadedLength();
    record.error = error;
    if (!shouldDeferResponseBodyLogging_)
        logDeferredRecord();
}

void GTMHTTPFetcher::logDeferredRecord() {
    const auto record = std::exchange(deferredRecord_, nullptr);
    if (record && logger())
        logger()->attemptDidEnd(*record);
}

void GTMHTTPFetcher::setShouldDeferResponseBodyLogging(bool defer) {
    shouldDeferResponseBodyLogging_ = defer;
    if (!defer)
        logDeferredRecord();
}

} // namespace quenby
