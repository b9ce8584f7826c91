// Executes queries: encodes them as JSON-RPC 2.0 calls or, on the second road, as HTTP requests of their own, sends
// them through fetchers, parses the replies off the calling thread, follows next-page tokens, and calls back once with
// (ticket, object, error).
//
// Roads: what a query means, and what its caller is told, is the same on both. When the first one turns out to be lost,
// the service takes the second for good, and the calls that met the loss are sent again there: their callers notice
// nothing, their retry blocks are not asked, and the progress of an upload starts again.
//
// Threads: a service lives on the thread that made it and is called there. Completions run on the thread of their
// context, or on the delegate queue's when one is set, and always through the event loop: never from inside the call
// that started them. Notifications, retry blocks and (without a delegate queue) progress run on the service's thread.
//
// Ending: cancelling a ticket and the context's death end the execution without a callback. So does the service's
// death, unless the outcome is already on its way to the context.
//
// Errors: errorDomain::jsonRPC (the server's error object), errorDomain::service and errorDomain::json (unusable
// replies), and whatever the fetcher reports; see GTLServiceReply.h.
#pragma once

#include "core/Result.h"
#include "driveapi/GTLServiceReply.h"
#include "driveapi/GTLServiceSettings.h"
#include "driveapi/GTLServiceTicket.h"
#include "http/GTMHTTPFetcherService.h"

#include <QObject>

#include <unordered_set>

class QThreadPool;

namespace quenby {

struct GTLServiceCall;
class GTMHTTPUploadFetcher;

// Posted through GTLService::notification.
inline const QString kGTLServiceTicketParsingStartedNotification =
    QStringLiteral("kGTLServiceTicketParsingStartedNotification");
inline const QString kGTLServiceTicketParsingStoppedNotification =
    QStringLiteral("kGTLServiceTicketParsingStoppedNotification");

class GTLService : public QObject {
    Q_OBJECT

public:
    explicit GTLService(std::shared_ptr<GTMHTTPFetcherService> fetcherService = GTMHTTPFetcherService::create(),
                        QObject* parent = nullptr);
    ~GTLService() override;

    // --- Executing ------------------------------------------------------------------------------------------------

    // Null when nothing was sent. A query that is refused (no method name; an empty batch, or members without method
    // name or request ID or with the same one) gets no callback either; when the fetch or the upload could not begin,
    // the callback still tells why. No callback comes before the ticket has been handed out. Context and handler may
    // be left out together: then only the queries' own completion blocks are called, on the service's thread.
    GTLServiceTicketPtr executeQuery(const std::shared_ptr<GTLQueryProtocol>& query, QObject* context = nullptr,
                                     GTLCompletionHandler handler = nullptr);

    // The same with a member function of the delegate.
    template <typename Delegate>
    GTLServiceTicketPtr executeQueryWithDelegate(const std::shared_ptr<GTLQueryProtocol>& query, Delegate* delegate,
                                                 void (Delegate::*didFinish)(const GTLServiceTicketPtr&,
                                                                             const GTLObjectPtr&, const MaybeError&)) {
        return executeQuery(query, delegate, std::bind_front(didFinish, delegate));
    }

    // The same for a call without a query of its own; the object, when there is one, is the request's resource.
    GTLServiceTicketPtr fetchObjectWithMethodNamed(const QString& methodName, const JSONDictionaryPtr& parameters,
                                                   const GTLObjectPtr& insertedObject, const GTLClass* objectClass,
                                                   QObject* context, GTLCompletionHandler handler);

    // Plain resources over GET, POST, PUT and DELETE. An ETag guards the deletion when it is not empty.
    GTLServiceTicketPtr fetchObjectWithURL(const QUrl& url, const GTLClass* objectClass, QObject* context,
                                           GTLCompletionHandler handler);
    GTLServiceTicketPtr fetchObjectByInsertingObject(const GTLObjectPtr& object, const QUrl& url,
                                                     const GTLClass* objectClass, QObject* context,
                                                     GTLCompletionHandler handler);
    GTLServiceTicketPtr fetchObjectByUpdatingObject(const GTLObjectPtr& object, const QUrl& url,
                                                    const GTLClass* objectClass, QObject* context,
                                                    GTLCompletionHandler handler);
    GTLServiceTicketPtr deleteResourceURL(const QUrl& url, const QByteArray& ETag, QObject* context,
                                          GTLCompletionHandler handler);

    // Runs this thread's event loop until the ticket has called back or was cancelled, or the time is up. True when
    // there was no error.
    bool waitForTicket(const GTLServiceTicketPtr& ticket, std::chrono::milliseconds timeout,
                       GTLObjectPtr* fetchedObject = nullptr, MaybeError* error = nullptr);

    // --- Settings -------------------------------------------------------------------------------------------------

    // Of every request.
    GTLServiceSettings& settings() { return settings_; }
    const GTLServiceSettings& settings() const { return settings_; }
    // Of every ticket that is made from now on.
    GTLTicketSettings& ticketSettings() { return ticketSettings_; }
    const GTLTicketSettings& ticketSettings() const { return ticketSettings_; }

    void setUserAgent(const QString& text); // without the characters that may not stand in one
    void setExactUserAgent(const QString& text) { settings_.userAgent = text; }

    const std::shared_ptr<GTMHTTPFetcherService>& fetcherService() const { return fetcherService_; }
    void setAuthorizer(std::shared_ptr<Authorizer> authorizer);
    std::shared_ptr<Authorizer> authorizer() const { return fetcherService_->authorizer(); }
    // Where callbacks run instead of on their context's thread. Must outlive the executions.
    void setDelegateQueue(QObject* queue) { delegateQueue_ = queue; }
    QObject* delegateQueue() const { return delegateQueue_; }
    // Where replies are parsed, but for those with next to nothing in them, which are parsed on the service's thread:
    // at the start one thread of the service's own; null means that all are parsed on the service's thread. A given
    // queue is not owned and must outlive the service.
    void setParseQueue(QThreadPool* queue) { parseQueue_ = queue; }
    QThreadPool* parseQueue() const { return parseQueue_; }
    void setServiceUserData(const QVariant& userData) { serviceUserData_ = userData; }
    const QVariant& serviceUserData() const { return serviceUserData_; }

Q_SIGNALS:
    void notification(const QString& name, const quenby::GTLServiceTicketPtr& ticket);
    // The first road is lost; the settings name the second from now on.
    void roadChanged();

protected:
    // A fetcher with what every fetcher of this service is told before it begins.
    std::shared_ptr<GTMHTTPFetcher> fetcherWithRequest(const URLRequest& request) const;

private:
    friend class GTLServiceTicket;

    GTLServiceTicketPtr execute(const std::shared_ptr<GTLQueryProtocol>& query, const GTLServiceCall& call,
                                QObject* context, GTLCompletionHandler handler);
    GTLServiceTicketPtr executeREST(const QByteArray& httpMethod, const QUrl& url, const GTLObjectPtr& object,
                                    const GTLClass* objectClass, const QByteArray& ETag, QObject* context,
                                    GTLCompletionHandler handler);
    GTLServiceTicketPtr makeTicket(const std::shared_ptr<GTLQueryProtocol>& query, const GTLServiceCall& call,
                                   QObject* context, GTLCompletionHandler handler);
    void forgetTicket(const GTLServiceTicketPtr& ticket) { running_.erase(ticket); }

    // One request of an execution, from here to handleReply().
    bool sendNext(const GTLServiceTicketPtr& ticket);
    bool send(const GTLServiceTicketPtr& ticket, const GTLServiceCall& call);
    void simulate(const GTLServiceTicketPtr& ticket, const GTLTestBlock& testBlock);
    Result<std::shared_ptr<GTMHTTPFetcher>> makeFetcher(const GTLServiceTicketPtr& ticket,
                                                        const GTLServiceCall& call) const;
    void prepareFetcher(GTMHTTPFetcher& fetcher) const;
    void prepareUpload(GTMHTTPUploadFetcher& fetcher, const GTLServiceTicketPtr& ticket) const;
    void fetcherFinished(const GTLServiceTicketPtr& ticket, GTLReplyExpectation expected, const QByteArray& data,
                         const MaybeError& error);
    void parse(const GTLServiceTicketPtr& ticket, GTLReplyExpectation expected, const QByteArray& data);
    void handleReply(const GTLServiceTicketPtr& ticket, GTLServiceReply reply);
    static bool joinAnswers(GTLServiceTicket& ticket, GTLServiceReply& reply);
    void stopParsing(const GTLServiceTicketPtr& ticket);
    void goOver(const GTLServiceTicketPtr& ticket);
    void finish(const GTLServiceTicketPtr& ticket);

    GTLServiceSettings settings_;
    GTLTicketSettings ticketSettings_;
    std::shared_ptr<GTMHTTPFetcherService> fetcherService_;
    QObject* delegateQueue_ = nullptr;
    std::unique_ptr<QThreadPool> ownParseQueue_; // waits for its threads when it goes
    QThreadPool* parseQueue_;
    QVariant serviceUserData_;
    std::unordered_set<GTLServiceTicketPtr> running_;
};

} // namespace quenby
