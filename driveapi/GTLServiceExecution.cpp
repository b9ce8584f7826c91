// How one execution runs: ticket, request, reply, further pages, callback.

#include "driveapi/GTLService.h"
#include "driveapi/GTLServiceCall.h"
#include "driveapi/GTLServicePaging.h"
#include "driveapi/GTLServiceRequest.h"
#include "driveapi/GTLServiceUpload.h"
#include "driveapi/rest/LostRoad.h"

#include <QLoggingCategory>
#include <QRunnable>
#include <QThreadPool>

#include <atomic>

namespace quenby {
namespace {

Q_LOGGING_CATEGORY(driveLog, "quenby.drive", QtInfoMsg)

// Such as an empty list of changes: it is parsed in less time than it takes to wake another thread, and a program that
// idles should wake as few as possible.
constexpr qsizetype tinyReply = 512; // bytes

GTLReplyExpectation expectationOf(const GTLServiceCall& call, const GTLServiceTicket& ticket,
                                  const GTLServiceSettings& settings) {
    GTLReplyExpectation expected;
    expected.objectClass = call.objectClass;
    expected.batchClassMap = call.batchClassMap;
    expected.surrogates = ticket.surrogates();
    expected.isBatch = call.isBatch;
    expected.isREST = call.isREST;
    expected.isOfEitherRoad = call.uploadParameters && !call.uploadParameters->uploadLocationURL.isEmpty();
    expected.isRESTDataWrapperRequired = settings.isRESTDataWrapperRequired && !call.isQuery;
    expected.refusedMembers = call.refusedMembers;
    return expected;
}

void takeContentType(GTLReplyExpectation& expected, const GTMHTTPFetcher& fetcher) {
    HTTPResponse response;
    response.headers = fetcher.responseHeaders();
    expected.mimeType = response.mimeType();
    expected.contentType = response.headers.value("Content-Type");
}

QByteArray bodyBehind(const Error& error, const QByteArray& data) {
    return data.isEmpty() ? error.detail(errorKey::data).toByteArray() : data;
}

// An upload that has its location needs the road no more: what is not found there is the upload.
bool meetsLostRoad(const GTMHTTPFetcher& fetcher, const Error& error, const QByteArray& data = {}) {
    const auto* upload = qobject_cast<const GTMHTTPUploadFetcher*>(&fetcher);
    if (upload && !upload->locationURL().isEmpty())
        return false;
    return error.isHTTPStatus(fetcher.statusCode()) && saysRoadIsLost(fetcher.statusCode(), bodyBehind(error, data));
}

// One reply on its way through the parse queue.
class ParseOperation final : public QRunnable {
public:
    ParseOperation(CompletionGate<GTLServiceReply> gate, QByteArray body, GTLReplyExpectation expected)
        : gate_(std::move(gate))
        , body_(std::move(body))
        , expected_(std::move(expected)) {
        isPublished_.store(true, std::memory_order_release);
    }
    void run() override {
        (void)isPublished_.load(std::memory_order_acquire);
        if (gate_.ticket().isPending())
            gate_.deliver(parseReply(std::move(body_), expected_));
    }

private:
    CompletionGate<GTLServiceReply> gate_;
    QByteArray body_;
    GTLReplyExpectation expected_;
    std::atomic<bool> isPublished_ = false; // orders the constructor before run() on the queue's thread
};

std::shared_ptr<GTLQueryProtocol> nextPageFor(const GTLServiceTicket& ticket, const GTLObjectPtr& page) {
    if (!ticket.shouldFetchNextPages() || !ticket.executingQuery() ||
        ticket.pagesFetchedCounter() >= maximumFollowUpPages)
        return nullptr;
    return nextPageQueryForQuery(*ticket.executingQuery(), page);
}

} // namespace

GTLServiceTicketPtr GTLService::execute(const std::shared_ptr<GTLQueryProtocol>& query, const GTLServiceCall& call,
                                        QObject* context, GTLCompletionHandler handler) {
    auto ticket = makeTicket(query, call, context ? context : this, std::move(handler));
    running_.insert(ticket);
    return send(ticket, call) ? ticket : nullptr;
}

GTLServiceTicketPtr GTLService::makeTicket(const std::shared_ptr<GTLQueryProtocol>& query, const GTLServiceCall& call,
                                           QObject* context, GTLCompletionHandler handler) {
    const GTLServiceTicketPtr ticket(new GTLServiceTicket(*this, ticketSettings_));
    const std::weak_ptr<GTLServiceTicket> weak = ticket;
    ticket->originalQuery_ = query;
    ticket->executingQuery_ = query;
    ticket->postedObject_ = call.postedObject;
    ticket->callbackGate_ = GTLServiceTicket::CallbackGate(
        delegateQueue_ ? delegateQueue_ : context,
        [handler = std::move(handler)](const GTLServiceTicketPtr& finished, const GTLObjectPtr& object,
                                       const MaybeError& error) { finished->callBack(handler, object, error); });
    ticket->stopGate_ = CompletionGate<>(this, [weak] {
        if (const auto stopped = weak.lock())
            stopped->stopWorking();
    });
    if (delegateQueue_)
        ticket->delegateMailbox_ = Mailbox::forContext(delegateQueue_);
    if (context != this) {
        ticket->contextWatch_ = Mailbox::forContext(context, [weak] {
            if (const auto orphaned = weak.lock())
                orphaned->cancelTicket();
        });
    }
    return ticket;
}

// Whether something was sent. When not, the ticket calls back with the error.
bool GTLService::send(const GTLServiceTicketPtr& ticket, const GTLServiceCall& call) {
    ticket->isREST_ = call.isREST;
    ticket->membersInRequest_ = call.testBlock ? std::numeric_limits<qsizetype>::max() : call.batchClassMap.size();
    if (call.testBlock) {
        simulate(ticket, call.testBlock);
        return true;
    }
    // Told like an answer, which it would be on the first road.
    const bool isNothingLeft = call.isBatch && call.body.isEmpty();
    if (call.refusal || isNothingLeft) {
        handleReply(ticket, call.refusal ? GTLServiceReply{nullptr, call.refusal}
                                         : replyWithoutRequest(expectationOf(call, *ticket, settings_)));
        return true;
    }
    const auto fetcher = makeFetcher(ticket, call);
    if (!fetcher) {
        ticket->fetchError_ = fetcher.error();
        finish(ticket);
        return false;
    }
    const bool wasPaused = ticket->isUploadPaused();
    ticket->objectFetcher_ = *fetcher;
    if (wasPaused)
        ticket->pauseUpload();
    return (*fetcher)->beginFetchWithCompletionHandler(
        this, [this, weak = std::weak_ptr(ticket),
               expected = expectationOf(call, *ticket, settings_)](const QByteArray& data, const MaybeError& error) {
            if (const auto running = weak.lock(); running && running->isRunning())
                fetcherFinished(running, expected, data, error);
        });
}

// What the ticket executes now, or as much of it as one request takes.
bool GTLService::sendNext(const GTLServiceTicketPtr& ticket) {
    return send(ticket, callForQuery(settings_, ticket->APIKey(), *ticket->executingQuery_,
                                     ticket->pagesFetchedCounter_, ticket->membersAnswered_));
}

void GTLService::simulate(const GTLServiceTicketPtr& ticket, const GTLTestBlock& testBlock) {
    const CompletionGate<GTLObjectPtr, MaybeError> gate(
        this, [this, weak = std::weak_ptr(ticket)](const GTLObjectPtr& object, const MaybeError& error) {
            if (const auto running = weak.lock())
                handleReply(running, {object, error});
        });
    ticket->parseOperation_ = gate.ticket();
    testBlock(ticket, [gate](const GTLObjectPtr& object, const MaybeError& error) { gate.deliver(object, error); });
}

Result<std::shared_ptr<GTMHTTPFetcher>> GTLService::makeFetcher(const GTLServiceTicketPtr& ticket,
                                                                const GTLServiceCall& call) const {
    const URLRequest request = requestForCall(settings_, ticket->APIKey(), call);
    std::shared_ptr<GTMHTTPFetcher> fetcher;
    if (call.uploadParameters) {
        const auto upload =
            uploadFetcherWithRequest(request, *call.uploadParameters, settings_.usedUploadChunkSize(), fetcherService_);
        if (!upload)
            return upload.error();
        prepareUpload(**upload, ticket);
        fetcher = *upload;
    } else {
        fetcher = fetcherService_->fetcherWithRequest(request);
    }
    prepareFetcher(*fetcher);
    if (call.shouldSkipAuthorization)
        fetcher->setAuthorizer(nullptr);
    if (!call.body.isEmpty())
        fetcher->setPostData(call.body);
    fetcher->setComment(call.comment);
    fetcher->setRetryEnabled(ticket->retryEnabled());
    fetcher->setMaxRetryInterval(ticket->maxRetryInterval());
    const bool mayGoOver = !call.isREST && !settings_.restURL.isEmpty();
    fetcher->setRetryBlock(
        [weak = std::weak_ptr(ticket), asked = fetcher.get(), mayGoOver](bool suggestedWillRetry, const Error& error) {
            const auto running = weak.lock();
            const bool goesOver = mayGoOver && meetsLostRoad(*asked, error);
            return running && !goesOver && running->shouldRetry(suggestedWillRetry, error);
        });
    return fetcher;
}

void GTLService::prepareFetcher(GTMHTTPFetcher& fetcher) const {
    fetcher.setDelegateQueue(nullptr); // the service works on its own thread; only its callbacks go to a queue
    if (settings_.cookieStorageMethod)
        fetcher.setCookieStorageMethod(*settings_.cookieStorageMethod);
    if (settings_.allowInsecureQueries) {
        fetcher.setAllowLocalhostRequest(true);
        fetcher.setAllowedInsecureSchemes({QStringLiteral("http")});
    }
}

void GTLService::prepareUpload(GTMHTTPUploadFetcher& fetcher, const GTLServiceTicketPtr& ticket) const {
    fetcher.setSentDataBlock([weak = std::weak_ptr(ticket)](qint64, qint64 totalBytesSent, qint64 totalBytesExpected) {
        if (const auto running = weak.lock())
            running->uploadDidProgress(totalBytesSent, totalBytesExpected);
    });
    fetcher.setLocationChangeBlock([weak = std::weak_ptr(ticket)](const QUrl& location) {
        if (const auto running = weak.lock())
            running->uploadLocationDidChange(location);
    });
}

std::shared_ptr<GTMHTTPFetcher> GTLService::fetcherWithRequest(const URLRequest& request) const {
    const auto fetcher = fetcherService_->fetcherWithRequest(request);
    prepareFetcher(*fetcher);
    fetcher->setRetryEnabled(ticketSettings_.retryEnabled);
    fetcher->setMaxRetryInterval(ticketSettings_.maxRetryInterval);
    return fetcher;
}

void GTLService::fetcherFinished(const GTLServiceTicketPtr& ticket, GTLReplyExpectation expected,
                                 const QByteArray& data, const MaybeError& error) {
    const std::shared_ptr<GTMHTTPFetcher> fetcher = ticket->objectFetcher_; // the ticket may take another one here
    takeContentType(expected, *fetcher);
    if (error && !expected.isREST && !settings_.restURL.isEmpty() && meetsLostRoad(*fetcher, *error, data))
        return goOver(ticket);
    if (error) {
        handleReply(ticket, {nullptr, errorFromFetch(*error, fetcher->statusCode(), expected.mimeType,
                                                     bodyBehind(*error, data), expected.surrogates)});
    } else if (data.isEmpty()) {
        handleReply(ticket, parseReply({}, expected));
    } else {
        parse(ticket, std::move(expected), data);
    }
}

void GTLService::parse(const GTLServiceTicketPtr& ticket, GTLReplyExpectation expected, const QByteArray& data) {
    const CompletionGate<GTLServiceReply> gate(this, [this, weak = std::weak_ptr(ticket)](GTLServiceReply reply) {
        if (const auto running = weak.lock())
            handleReply(running, std::move(reply));
    });
    ticket->parseOperation_ = gate.ticket();
    ticket->isParsing_ = true;
    Q_EMIT notification(kGTLServiceTicketParsingStartedNotification, ticket);
    const bool isTiny = data.size() <= tinyReply;
    auto operation = std::make_unique<ParseOperation>(gate, data, std::move(expected));
    if (parseQueue_ && !isTiny)
        parseQueue_->start(operation.release()); // the queue deletes it
    else
        operation->run();
}

// Joins the answers to the requests that a batch takes. Whether these were the last; then the reply is about all
// members.
bool GTLService::joinAnswers(GTLServiceTicket& ticket, GTLServiceReply& reply) {
    const auto* batch = dynamic_cast<const GTLBatchQuery*>(ticket.executingQuery_.get());
    if (!batch)
        return true;
    reply.object = mergedResult(std::exchange(ticket.answersSoFar_, nullptr), reply.object);
    ticket.membersAnswered_ += ticket.membersInRequest_;
    if (ticket.membersAnswered_ >= static_cast<qsizetype>(batch->queries().size())) {
        ticket.membersAnswered_ = 0;
        return true;
    }
    ticket.answersSoFar_ = std::exchange(reply.object, nullptr);
    return false;
}

void GTLService::handleReply(const GTLServiceTicketPtr& ticket, GTLServiceReply reply) {
    if (!ticket->isRunning())
        return;
    if (!reply.error && !joinAnswers(*ticket, reply)) {
        stopParsing(ticket);
        if (ticket->isRunning())
            sendNext(ticket);
        return;
    }
    const auto next = reply.error ? nullptr : nextPageFor(*ticket, reply.object);
    // Members whose pages are not complete have no answer yet.
    if (reply.error && (ticket->pagesFetchedCounter_ > 0 || nextPageFor(*ticket, ticket->answersSoFar_)))
        ticket->answersSoFar_ = nullptr;
    const auto takePage = ticket->settings_.pageBlock;
    const bool isMerged = !reply.error && !takePage;
    ticket->fetchedObject_ = isMerged ? mergedResult(ticket->fetchedObject_, reply.object) : nullptr;
    ticket->fetchError_ = reply.error;
    if (takePage && !reply.error)
        takePage(std::exchange(reply.object, nullptr));
    stopParsing(ticket);
    if (!ticket->isRunning()) // a listener may have cancelled it
        return;
    if (!next)
        return finish(ticket);
    ++ticket->pagesFetchedCounter_;
    ticket->executingQuery_ = next;
    sendNext(ticket);
}

void GTLService::stopParsing(const GTLServiceTicketPtr& ticket) {
    if (std::exchange(ticket->isParsing_, false))
        Q_EMIT notification(kGTLServiceTicketParsingStoppedNotification, ticket);
}

// Calls that were under way on the first road come here one by one, as each of them meets the loss.
void GTLService::goOver(const GTLServiceTicketPtr& ticket) {
    if (settings_.road != APIRoad::rest) {
        settings_.road = APIRoad::rest;
        qCInfo(driveLog, "The service has closed its JSON-RPC road: its REST road is taken from now on");
        Q_EMIT roadChanged();
    }
    if (ticket->isRunning())
        sendNext(ticket);
}

void GTLService::finish(const GTLServiceTicketPtr& ticket) {
    forgetTicket(ticket);
    ticket->dropBlocks();
    ticket->callbackGate_.deliver(ticket, ticket->fetchedObject_, ticket->fetchError_);
}

} // namespace quenby
