// How one execution runs: ticket, request, reply, further pages, callback.

#include "driveapi/GTLService.h"
#include "driveapi/GTLServiceCall.h"
#include "driveapi/GTLServicePaging.h"
#include "driveapi/GTLServiceRequest.h"
#include "driveapi/GTLServiceUpload.h"

#include <QRunnable>
#include <QThreadPool>

#include <atomic>

namespace quenby {
namespace {

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
    expected.isRESTDataWrapperRequired = settings.isRESTDataWrapperRequired;
    return expected;
}

QByteArray mimeTypeOf(const GTMHTTPFetcher& fetcher) {
    HTTPResponse response;
    response.headers = fetcher.responseHeaders();
    return response.mimeType();
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
    ticket->isREST_ = call.isREST;
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
    if (call.testBlock) {
        simulate(ticket, call.testBlock);
        return true;
    }
    const auto fetcher = makeFetcher(ticket, call);
    if (!fetcher) {
        ticket->fetchError_ = fetcher.error();
        finish(ticket);
        return false;
    }
    ticket->objectFetcher_ = *fetcher;
    return (*fetcher)->beginFetchWithCompletionHandler(
        this, [this, weak = std::weak_ptr(ticket),
               expected = expectationOf(call, *ticket, settings_)](const QByteArray& data, const MaybeError& error) {
            if (const auto running = weak.lock(); running && running->isRunning())
                fetcherFinished(running, expected, data, error);
        });
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
    fetcher->setRetryBlock([weak = std::weak_ptr(ticket)](bool suggestedWillRetry, const Error& error) {
        const auto running = weak.lock();
        return running && running->shouldRetry(suggestedWillRetry, error);
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
    const GTMHTTPFetcher& fetcher = *ticket->objectFetcher_;
    expected.mimeType = mimeTypeOf(fetcher);
    if (error) {
        const QByteArray body = data.isEmpty() ? error->detail(errorKey::data).toByteArray() : data;
        handleReply(ticket, {nullptr, errorFromFetch(*error, fetcher.statusCode(), expected.mimeType, body,
                                                     expected.surrogates)});
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

void GTLService::handleReply(const GTLServiceTicketPtr& ticket, GTLServiceReply reply) {
    if (!ticket->isRunning())
        return;
    const auto next = reply.error ? nullptr : nextPageFor(*ticket, reply.object);
    const auto takePage = ticket->settings_.pageBlock;
    const bool isMerged = !reply.error && !takePage;
    ticket->fetchedObject_ = isMerged ? mergedResult(ticket->fetchedObject_, reply.object) : nullptr;
    ticket->fetchError_ = reply.error;
    if (takePage && !reply.error)
        takePage(std::exchange(reply.object, nullptr));
    if (std::exchange(ticket->isParsing_, false))
        Q_EMIT notification(kGTLServiceTicketParsingStoppedNotification, ticket);
    if (!ticket->isRunning()) // a listener may have cancelled it
        return;
    if (!next)
        return finish(ticket);
    ++ticket->pagesFetchedCounter_;
    ticket->executingQuery_ = next;
    send(ticket, callForQuery(settings_, ticket->APIKey(), *next, ticket->pagesFetchedCounter_));
}

void GTLService::finish(const GTLServiceTicketPtr& ticket) {
    forgetTicket(ticket);
    ticket->dropBlocks();
    ticket->callbackGate_.deliver(ticket, ticket->fetchedObject_, ticket->fetchError_);
}

} // namespace quenby
