// The handle of one execution: its settings, what it is doing, and how to end it.
//
// Threads: a ticket belongs to its service's thread; cancelTicket() and hasCalledCallback() may be called from any.
// Ownership: shared; while it runs, the service holds it as well.
#pragma once

#include "core/CompletionGate.h"
#include "core/Mailbox.h"
#include "driveapi/GTLQuery.h"

#include <QPointer>
#include <QVariantMap>

#include <atomic>

class QThread;

namespace quenby {

class GTLService;
class GTMHTTPFetcher;

// What a ticket takes from its service when it is made. What is changed on the ticket afterwards counts for its later
// requests and callbacks.
struct GTLTicketSettings {
    bool shouldFetchNextPages = false;
    bool retryEnabled = false;
    double maxRetryInterval = 0; // seconds; 0 leaves the choice to the fetcher
    QString APIKey;
    GTLSurrogates surrogates;
    QVariantMap properties;
    GTLRetryBlock retryBlock;                               // on the service's thread
    GTLUploadProgressBlock uploadProgressBlock;             // on the service's thread or the delegate queue's
    GTLUploadLocationChangeBlock uploadLocationChangeBlock; // likewise
    GTLPageBlock pageBlock;                                 // on the service's thread
};

class GTLServiceTicket : public std::enable_shared_from_this<GTLServiceTicket> {
public:
    GTLServiceTicket(const GTLServiceTicket&) = delete;
    GTLServiceTicket& operator=(const GTLServiceTicket&) = delete;

    // Ends the execution: no callback starts after this. Cancelling is no error, and after the end it does nothing.
    void cancelTicket();
    bool hasCalledCallback() const { return phase_ == Phase::calledBack; }
    bool isCancelled() const { return phase_ == Phase::cancelled; }

    // --- Settings -------------------------------------------------------------------------------------------------

    GTLService* service() const { return service_; } // null once the service is gone
    bool shouldFetchNextPages() const { return settings_.shouldFetchNextPages; }
    void setShouldFetchNextPages(bool fetch) { settings_.shouldFetchNextPages = fetch; }
    bool retryEnabled() const { return settings_.retryEnabled; }
    double maxRetryInterval() const { return settings_.maxRetryInterval; }
    void setRetryBlock(GTLRetryBlock block) { settings_.retryBlock = std::move(block); }
    void setUploadProgressBlock(GTLUploadProgressBlock block) { settings_.uploadProgressBlock = std::move(block); }
    void setUploadLocationChangeBlock(GTLUploadLocationChangeBlock block) {
        settings_.uploadLocationChangeBlock = std::move(block);
    }
    const QString& APIKey() const { return settings_.APIKey; }
    const GTLSurrogates& surrogates() const { return settings_.surrogates; }
    // Takes each page as it comes, the only one included: it is handed over, and the ticket keeps none of them.
    void setPageBlock(GTLPageBlock block) { settings_.pageBlock = std::move(block); }
    // An invalid value removes the key.
    void setProperty(const QVariant& value, const QString& key);
    QVariant propertyForKey(const QString& key) const { return settings_.properties.value(key); }
    const QVariantMap& properties() const { return settings_.properties; }
    void setUserData(const QVariant& userData) { userData_ = userData; }
    const QVariant& userData() const { return userData_; }

    // --- State ----------------------------------------------------------------------------------------------------

    const std::shared_ptr<GTMHTTPFetcher>& objectFetcher() const { return objectFetcher_; }
    int statusCode() const; // of the last response; 0 without one
    const GTLObjectPtr& postedObject() const { return postedObject_; }
    const GTLObjectPtr& fetchedObject() const { return fetchedObject_; } // all pages so far; none with a page block
    const MaybeError& fetchError() const { return fetchError_; }
    const std::shared_ptr<GTLQueryProtocol>& originalQuery() const { return originalQuery_; }
    const std::shared_ptr<GTLQueryProtocol>& executingQuery() const { return executingQuery_; } // of the page in flight
    unsigned pagesFetchedCounter() const { return pagesFetchedCounter_; }
    bool isREST() const { return isREST_; } // the latest request went over HTTP's verbs, not in JSON-RPC
    // The member of the batch that was executed; null when there is none, or no batch.
    std::shared_ptr<GTLQuery> queryForRequestID(const QString& requestID) const;

    // --- Uploads; without an upload they do nothing -----------------------------------------------------------------

    void pauseUpload();
    void resumeUpload();
    bool isUploadPaused() const;

    QString description() const; // for logs

private:
    friend class GTLService;

    enum class Phase { running, callingBack, calledBack, cancelled };
    using CallbackGate = CompletionGate<GTLServiceTicketPtr, GTLObjectPtr, MaybeError>;

    GTLServiceTicket(GTLService& service, GTLTicketSettings settings);

    bool isRunning() const { return phase_ == Phase::running; }
    bool leaveRunning(Phase next);
    void callBack(const GTLCompletionHandler& handler, const GTLObjectPtr& object, const MaybeError& error);
    void stopWorking();
    void dropBlocks();

    // What the fetcher asks and tells.
    bool shouldRetry(bool suggestedWillRetry, const Error& error);
    void uploadDidProgress(qint64 bytesSent, qint64 bytesTotal);
    void uploadLocationDidChange(const QUrl& location);
    void tellCaller(std::function<void()> callback);

    std::atomic<Phase> phase_ = Phase::running; // whoever takes it out of running owns the query's blocks
    CallbackGate callbackGate_;
    CompletionGate<> stopGate_; // brings a cancellation from another thread to the service's
    CompletionTicket parseOperation_;
    std::shared_ptr<Mailbox> contextWatch_;    // the context's death cancels
    std::shared_ptr<Mailbox> delegateMailbox_; // of the delegate queue, when there is one

    QThread* thread_; // the service's
    QPointer<GTLService> service_;
    GTLTicketSettings settings_;
    QVariant userData_;
    std::shared_ptr<GTMHTTPFetcher> objectFetcher_;
    GTLObjectPtr postedObject_;
    GTLObjectPtr fetchedObject_;
    MaybeError fetchError_;
    std::shared_ptr<GTLQueryProtocol> originalQuery_;
    std::shared_ptr<GTLQueryProtocol> executingQuery_;
    unsigned pagesFetchedCounter_ = 0;
    // A batch that takes several requests: the members sent with the latest, those answered before, and their results.
    qsizetype membersInRequest_ = 0;
    qsizetype membersAnswered_ = 0;
    GTLObjectPtr answersSoFar_;
    bool isREST_ = false;
    bool isParsing_ = false;
};

} // namespace quenby
