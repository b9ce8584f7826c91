// GTMHTTPFetcher: the steps from begin to a started connection.
#include "http/GTMHTTPFetcher.h"

#include "http/CurlConnection.h"
#include "http/FetchAttempt.h"
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
    return begin(delegate, Gate(callbackContext(delegate),
                                [didFinish = std::move(didFinish)](const std::shared_ptr<GTMHTTPFetcher>& fetcher,
                                                                   const QByteArray& data, const MaybeError& error) {
                                    didFinish(*fetcher, data, error);
                                }));
}

bool GTMHTTPFetcher::beginFetchWithCompletionHandler(QObject* context, CompletionHandler handler) {
    if (!context || !handler)
        return begin(nullptr, {});
    return begin(context,
                 Gate(callbackContext(context),
                      [handler = std::move(handler)](const std::shared_ptr<GTMHTTPFetcher>&, const QByteArray& data,
                                                     const MaybeError& error) { handler(data, error); }));
}

// A begin that fails because the fetch runs already is no business of the delegate queue, which is that fetch's.
QObject* GTMHTTPFetcher::callbackContext(QObject* context) const {
    return delegateQueue() && !isFetching() ? delegateQueue() : context;
}

bool GTMHTTPFetcher::begin(QObject* context, Gate gate) {
    if (isFetching()) {
        gate.deliver(shared_from_this(), QByteArray(),
                     couldNotBegin(QStringLiteral("The fetch is running already. Wait for its end or stop it first.")));
        return false;
    }
    queueMailbox_ = delegateQueue() ? Mailbox::forContext(delegateQueue()) : nullptr;
    delegateWatch_ = queueMailbox_ && context
                         ? Mailbox::forContext(context, [ticket = gate.ticket()] { ticket.cancel(); })
                         : nullptr;
    if (!gate) // there is always one, so that one ticket tells for every callback whether it may still run
        gate = Gate(this, [](const auto&...) {});
    {
        const std::lock_guard lock(mutex_);
        std::swap(gate_, gate);
        ++generation_;
    }
    keptAlive_ = shared_from_this();
    return beginFetch();
}

bool GTMHTTPFetcher::beginRequest() { return beginFetchMayDelay(true, true); }

void GTMHTTPFetcher::beginQueuedFetchSoon() {
    post([self = shared_from_this()] {
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
    attempt_.reset();
    reply_.reset();

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
    const bool isAllowed = isLocal ? allowLocalhostRequest()
                                   : std::any_of(allowedInsecureSchemes().begin(), allowedInsecureSchemes().end(),
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
    attempt_.write().authorization = authorizer_->authorizeRequest(
        request_, this, [this, generation](const URLRequest& authorized, const MaybeError& error) {
            if (!isCurrent(generation) || state_ != State::authorizing)
                return;
            attempt_.reset();
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
    URLRequest& wire = attempt_.write().wireRequest;
    wire = request_;
    if (const auto& history = settings().fetchHistory)
        history->updateRequest(wire, wire.isReadOnly() && wire.effectiveMethod() == "GET");
    addCookies(wire);
    if (logger() && wire.bodyStream)
        wire.bodyStream = logger()->willSendStream(wire.bodyStream);
    attempt_.write().originalURL = wire.url;
}

MaybeError GTMHTTPFetcher::prepareDownloadFile() {
    if (downloadPath_.isEmpty())
        return std::nullopt;
    auto file = DownloadFile::create(downloadPath_);
    if (!file)
        return file.error();
    attempt_.write().downloadFile = std::move(*file);
    return std::nullopt;
}

bool GTMHTTPFetcher::startConnection() {
    FetchAttempt& attempt = attempt_.write();
    const auto& create = connectionClass();
    attempt.connection =
        create ? create(attempt.wireRequest, *this) : CurlConnection::create(attempt.wireRequest, *this);
    if (!attempt.connection)
        return false;
    attempt.time = timeSource()->elapsed();
    attempt.date = timeSource()->now();
    if (initialRequestDate_.isNull()) {
        initialRequestDate_ = attempt.date;
        initialRequestTime_ = attempt.time;
    }
    state_ = State::connected;
    isStopNotificationNeeded_ = true;
    if (maxSendSpeed_ > 0)
        attempt.connection->setMaxSendSpeed(maxSendSpeed_);
    attempt.connection->start();
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
