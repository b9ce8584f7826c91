#include "driveapi/GTLService.h"

#include "driveapi/GTLJSONParser.h"
#include "driveapi/GTLServiceCall.h"
#include "http/UserAgent.h"

#include <QDeadlineTimer>
#include <QEventLoop>
#include <QThreadPool>
#include <QTimer>

namespace quenby {

GTLService::GTLService(std::shared_ptr<GTMHTTPFetcherService> fetcherService, QObject* parent)
    : QObject(parent)
    , fetcherService_(std::move(fetcherService))
    , ownParseQueue_(std::make_unique<QThreadPool>())
    , parseQueue_(ownParseQueue_.get()) {
    ownParseQueue_->setMaxThreadCount(1);
    ownParseQueue_->setExpiryTimeout(-1); // a thread that waits costs nothing; one that ends wakes the computer for it
}

GTLService::~GTLService() {
    for (const auto& ticket : std::exchange(running_, {})) {
        ticket->leaveRunning(GTLServiceTicket::Phase::cancelled);
        ticket->stopWorking();
    }
}

GTLServiceTicketPtr GTLService::executeQuery(const std::shared_ptr<GTLQueryProtocol>& query, QObject* context,
                                             GTLCompletionHandler handler) {
    if (!query || !isExecutable(*query))
        return nullptr;
    // A batch may be changed and sent again by its owner while this one is on its way.
    const auto batch = std::dynamic_pointer_cast<GTLBatchQuery>(query);
    const std::shared_ptr<GTLQueryProtocol> executed = batch ? batch->copy() : query;
    return execute(executed, callForQuery(settings_, ticketSettings_.APIKey, *executed, 0), context,
                   std::move(handler));
}

GTLServiceTicketPtr GTLService::fetchObjectWithMethodNamed(const QString& methodName,
                                                           const JSONDictionaryPtr& parameters,
                                                           const GTLObjectPtr& insertedObject,
                                                           const GTLClass* objectClass, QObject* context,
                                                           GTLCompletionHandler handler) {
    const auto query = GTLQuery::queryWithMethodName(methodName);
    if (!query)
        return nullptr;
    query->setJSON(parameters);
    query->setBodyObject(insertedObject);
    query->setExpectedObjectClass(objectClass);
    return executeQuery(query, context, std::move(handler));
}

GTLServiceTicketPtr GTLService::fetchObjectWithURL(const QUrl& url, const GTLClass* objectClass, QObject* context,
                                                   GTLCompletionHandler handler) {
    return executeREST("GET", url, nullptr, objectClass, {}, context, std::move(handler));
}

GTLServiceTicketPtr GTLService::fetchObjectByInsertingObject(const GTLObjectPtr& object, const QUrl& url,
                                                             const GTLClass* objectClass, QObject* context,
                                                             GTLCompletionHandler handler) {
    return executeREST("POST", url, object, objectClass, {}, context, std::move(handler));
}

GTLServiceTicketPtr GTLService::fetchObjectByUpdatingObject(const GTLObjectPtr& object, const QUrl& url,
                                                            const GTLClass* objectClass, QObject* context,
                                                            GTLCompletionHandler handler) {
    return executeREST("PUT", url, object, objectClass, {}, context, std::move(handler));
}

GTLServiceTicketPtr GTLService::deleteResourceURL(const QUrl& url, const QByteArray& ETag, QObject* context,
                                                  GTLCompletionHandler handler) {
    return executeREST("DELETE", url, nullptr, nullptr, ETag, context, std::move(handler));
}

GTLServiceTicketPtr GTLService::executeREST(const QByteArray& httpMethod, const QUrl& url, const GTLObjectPtr& object,
                                            const GTLClass* objectClass, const QByteArray& ETag, QObject* context,
                                            GTLCompletionHandler handler) {
    GTLServiceCall call;
    call.isREST = true;
    call.httpMethod = httpMethod;
    call.url = url;
    call.ETag = ETag;
    call.postedObject = object;
    call.objectClass = objectClass;
    call.testBlock = settings_.testBlock;
    if (object)
        call.body = GTLJSONParser::dataWithObject(object->JSON());
    return execute(nullptr, call, context, std::move(handler));
}

bool GTLService::waitForTicket(const GTLServiceTicketPtr& ticket, std::chrono::milliseconds timeout,
                               GTLObjectPtr* fetchedObject, MaybeError* error) {
    const QDeadlineTimer deadline(timeout);
    // In slices: the end of each wakes the dispatcher, which on GLib would leave to the loop outside, where a callback
    // waits, what was posted before.
    while (ticket && !ticket->hasCalledCallback() && !ticket->isCancelled() && !deadline.hasExpired()) {
        QEventLoop slice;
        QTimer::singleShot(std::chrono::milliseconds(1), Qt::PreciseTimer, &slice, &QEventLoop::quit);
        slice.exec();
    }
    MaybeError outcome = ticket ? ticket->fetchError() : std::nullopt;
    if (!outcome && !(ticket && ticket->hasCalledCallback())) {
        outcome = serviceError(GTLServiceErrorCode::waitTimedOut,
                               QStringLiteral("No result came in time; check the connection and try again."));
    }
    if (fetchedObject)
        *fetchedObject = ticket ? ticket->fetchedObject() : nullptr;
    if (error)
        *error = outcome;
    return !outcome;
}

void GTLService::setUserAgent(const QString& text) { settings_.userAgent = userAgent::cleaned(text); }

void GTLService::setAuthorizer(std::shared_ptr<Authorizer> authorizer) {
    fetcherService_->setAuthorizer(std::move(authorizer));
}

} // namespace quenby
