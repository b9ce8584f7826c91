// GTMHTTPFetcher: the steps from begin to a started connection.
#include "http/GTMHTTPFetcher.h"

#include "http/CurlConnection.h"
#include "http/DownloadFile.h"
#include "http/GTMCookieStorage.h"
#include "http/GTMHTTPFetchHistory.h"
#include "http/GTMHTTPFetcherService.h"
#include "http/HTTPLog.h"

#include <algorithm>

namespace quenby {
namespace {

Error couldNotBegin(const QString& reason) {
    return Error(FetcherErrorCode::fetchCouldNotBegin, {{errorKey::reason, reason}});
}

bool isScheme(const QUrl& url, const QString& scheme) { return url.scheme().compare(scheme, Qt::CaseInsensitive) == 0; }

bool isLocalhost(const QString& host) {
    return host.compare(QLatin1String("localhost"), Qt::CaseInsensitive) == 0 || host == QLatin1String("::1") ||
           host == QLatin1String("127.0.0.1");
}

} // namespace

bool GTMHTTPFetcher::beginFetchWithDelegate(QObject* delegate, FinishSelector didFinish) {
    if (!delegate || !didFinish)
        return begin(nullptr, {});
    return begin(delegate, [didFinish = std::move(didFinish)](const std::shared_ptr<GTMHTTPFetcher>& fetcher,
                                                              const QByteArray& data, const MaybeError& error) {
        didFinish(*fetcher, data, error);
    });
}

bool GTMHTTPFetcher::beginFetchWithCompletionHandler(QObject* context, CompletionHandler handler) {
    if (!context || !handler)
        return begin(nullptr, {});
    return begin(context, [handler = std::move(handler)](const std::shared_ptr<GTMHTTPFetcher>&, const QByteArray& data,
                                                         const MaybeError& error) { handler(data, error); });
}

bool GTMHTTPFetcher::begin(QObject* context, Gate::Function callback) {
    if (isFetching()) {
        // The second begin fails; the fetch that runs is none of its business.
        Gate(context, std::move(callback))
            .deliver(shared_from_this(), QByteArray(),
                     couldNotBegin(QStringLiteral("The fetch is running already. Wait for its end or stop it first.")));
        return false;
    }
    queueMailbox_ = delegateQueue_ ? Mailbox::forContext(delegateQueue_) : nullptr;
    Gate gate = makeGate(context, std::move(callback));
    {
        const std::lock_guard lock(callbackMutex_);
        std::swap(gate_, gate);
        ++generation_;
    }
    keptAlive_ = shared_from_this();
    return beginFetch();
}

// There is always a gate, so that one ticket tells for every callback whether it may still run.
GTMHTTPFetcher::Gate GTMHTTPFetcher::makeGate(QObject* context, Gate::Function callback) {
    delegateWatch_ = nullptr;
    if (!context)
        return Gate(this, [](const auto&...) {});
    if (!delegateQueue_)
        return Gate(context, std::move(callback));
    Gate gate(delegateQueue_, std::move(callback));
    delegateWatch_ = Mailbox::forContext(context, [ticket = gate.ticket()] { ticket.cancel(); });
    return gate;
}

bool GTMHTTPFetcher::beginRequest() { return beginFetchMayDelay(true, true); }

void GTMHTTPFetcher::beginQueuedFetchSoon() {
    mailbox_->post([self = shared_from_this()] {
        // It may have been stopped meanwhile, or even begun anew and queued again.
        if (self->state_ == State::queued && self->throttle_ && !self->throttle_->isDelayingFetcher(*self))
            self->beginFetchMayDelay(false, true);
    });
}

bool GTMHTTPFetcher::beginFetchMayDelay(bool mayDelay, bool mayAuthorize) {
    const auto self = shared_from_this();
    if (request_.url.isEmpty() || !request_.url.isValid())
        return failToBegin(couldNotBegin(QStringLiteral("The request has no valid address.")));
    if (const MaybeError error = schemeError())
        return failToBegin(*error);
    downloadedData_ = QByteArray();
    downloadedLength_ = 0;
    response_.reset();
    connectionError_.reset();

    if (const auto service = service_.lock(); mayDelay && service) {
        state_ = State::queued;
        throttle_ = service;
        if (!service->fetcherShouldBeginFetching(*this))
            return true;
    }
    state_ = State::idle; // it waits no longer
    return mayAuthorize ? beginInPlace() : sendRequest(false);
}

bool GTMHTTPFetcher::sendRequest(bool mayAuthorize) {
    makePostIfNeeded();
    if (mayAuthorize && authorizer_ && !authorizer_->isAuthorizedRequest(request_))
        return beginAuthorizing();
    if (!rewindPostStream()) {
        return failToBegin(Error(URLErrorCode::requestBodyUnreadable,
                                 {{errorKey::reason, QStringLiteral("The source of the request's body cannot be read "
                                                                    "again from its start.")}}));
    }
    retry_.chooseMaxRetryInterval(request_.isReadOnly());
    prepareWireRequest();
    if (const MaybeError error = prepareDownloadFile())
        return failToBegin(*error);
    if (!startConnection())
        return failToBegin(
            couldNotBegin(QStringLiteral("No connection can be made for ") + requestDescription() + QLatin1Char('.')));
    return true;
}

MaybeError GTMHTTPFetcher::schemeError() const {
    const QUrl& url = request_.url;
    if (isScheme(url, QStringLiteral("https")))
        return std::nullopt;
    const bool isLocal = isLocalhost(url.host());
    const bool isAllowed = isLocal ? allowLocalhostRequest_
                                   : std::any_of(allowedInsecureSchemes_.begin(), allowedInsecureSchemes_.end(),
                                                 [&url](const QString& allowed) { return isScheme(url, allowed); });
    if (isAllowed)
        return std::nullopt;
    const QString message =
        (isLocal ? QStringLiteral("Localhost fetch disallowed for %1") : QStringLiteral("Fetch disallowed for %1"))
            .arg(shownAddress());
    qCWarning(httpLog, "%s", qUtf8Printable(message));
    return couldNotBegin(message);
}

void GTMHTTPFetcher::makePostIfNeeded() {
    if (request_.hasBody() && request_.effectiveMethod() == "GET")
        request_.httpMethod = "POST";
}

// The stream's position at the first attempt is where every attempt begins.
bool GTMHTTPFetcher::rewindPostStream() {
    const auto& stream = request_.bodyStream;
    if (!stream)
        return true;
    if (!postStreamStart_) {
        postStreamStart_ = stream->pos();
        return true;
    }
    return !stream->isSequential() && stream->seek(*postStreamStart_);
}

bool GTMHTTPFetcher::beginAuthorizing() {
    state_ = State::authorizing;
    const quint64 generation = generation_;
    authorization_ = authorizer_->authorizeRequest(
        request_, this, [this, generation](const URLRequest& authorized, const MaybeError& error) {
            if (!isCurrent(generation) || state_ != State::authorizing)
                return;
            authorization_ = {};
            if (error) {
                failToBegin(*error);
                return;
            }
            request_ = authorized;
            beginFetchMayDelay(false, false);
        });
    return true;
}

// What one attempt sends is a copy: cookies and conditions are worked out anew for each.
void GTMHTTPFetcher::prepareWireRequest() {
    wireRequest_ = request_;
    if (fetchHistory_)
        fetchHistory_->updateRequest(wireRequest_,
                                     wireRequest_.isReadOnly() && wireRequest_.effectiveMethod() == "GET");
    addCookies(wireRequest_);
    if (logger_ && wireRequest_.bodyStream)
        wireRequest_.bodyStream = logger_->willSendStream(wireRequest_.bodyStream);
    originalURL_ = wireRequest_.url;
}

MaybeError GTMHTTPFetcher::prepareDownloadFile() {
    downloadFile_ = nullptr;
    if (downloadPath_.isEmpty())
        return std::nullopt;
    auto file = DownloadFile::create(downloadPath_);
    if (!file)
        return file.error();
    downloadFile_ = std::move(*file);
    return std::nullopt;
}

bool GTMHTTPFetcher::startConnection() {
    connection_ =
        connectionClass_ ? connectionClass_(wireRequest_, *this) : CurlConnection::create(wireRequest_, *this);
    if (!connection_)
        return false;
    attemptTime_ = timeSource_->elapsed();
    attemptDate_ = timeSource_->now();
    if (initialRequestDate_.isNull()) {
        initialRequestDate_ = attemptDate_;
        initialRequestTime_ = attemptTime_;
    }
    state_ = State::connected;
    isStopNotificationNeeded_ = true;
    connection_->start();
    qCDebug(httpLog, "%s", qUtf8Printable(requestDescription()));
    Q_EMIT notification(kGTMHTTPFetcherStartedNotification);
    return true;
}

bool GTMHTTPFetcher::failToBegin(const Error& error) {
    const auto self = shared_from_this();
    stopFetch(ReleaseCallbacks::no);
    requestDidEnd({}, error);
    return false;
}

} // namespace quenby
