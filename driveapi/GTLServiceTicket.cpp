#include "driveapi/GTLServiceTicket.h"

#include "driveapi/GTLBatchQuery.h"
#include "driveapi/GTLBatchResult.h"
#include "driveapi/GTLService.h"
#include "http/GTMHTTPUploadFetcher.h"

#include <QThread>

namespace quenby {
namespace {

Error missingBatchResult() {
    return serviceError(
        GTLServiceErrorCode::batchResultMissing,
        QStringLiteral("The service answered the batch but not this call; send the call again on its own."));
}

// One member's share of the batch's outcome.
void callBackMember(const GTLServiceTicketPtr& ticket, const GTLQuery& member, const GTLBatchResult* result,
                    const MaybeError& batchError) {
    const GTLCompletionHandler block = member.completionBlock();
    if (!block)
        return;
    if (result) {
        if (const auto failure = result->failures().find(member.requestID()); failure != result->failures().end())
            return block(ticket, nullptr, failure->second->foundationError());
        if (const auto success = result->successes().find(member.requestID()); success != result->successes().end())
            return block(ticket, success->second, std::nullopt);
    }
    block(ticket, nullptr, batchError ? batchError : missingBatchResult());
}

GTMHTTPUploadFetcher* uploadFetcher(const std::shared_ptr<GTMHTTPFetcher>& fetcher) {
    return qobject_cast<GTMHTTPUploadFetcher*>(fetcher.get());
}

} // namespace

GTLServiceTicket::GTLServiceTicket(GTLService& service, GTLTicketSettings settings)
    : thread_(service.thread())
    , service_(&service)
    , settings_(std::move(settings)) {}

bool GTLServiceTicket::leaveRunning(Phase next) {
    Phase expected = Phase::running;
    return phase_.compare_exchange_strong(expected, next);
}

void GTLServiceTicket::cancelTicket() {
    if (!leaveRunning(Phase::cancelled))
        return;
    if (QThread::currentThread() == thread_)
        stopWorking();
    else
        stopGate_.deliver();
}

void GTLServiceTicket::stopWorking() {
    const auto self = shared_from_this(); // the service may hold the last other reference
    if (service_)
        service_->forgetTicket(self);
    callbackGate_.ticket().cancel();
    parseOperation_.cancel();
    if (objectFetcher_)
        objectFetcher_->stopFetching();
    dropBlocks();
    if (originalQuery_)
        originalQuery_->executionDidStop();
}

void GTLServiceTicket::dropBlocks() {
    settings_.retryBlock = nullptr;
    settings_.uploadProgressBlock = nullptr;
    settings_.uploadLocationChangeBlock = nullptr;
    settings_.pageBlock = nullptr;
    if (executingQuery_ && executingQuery_ != originalQuery_)
        executingQuery_->executionDidStop();
}

void GTLServiceTicket::callBack(const GTLCompletionHandler& handler, const GTLObjectPtr& object,
                                const MaybeError& error) {
    if (!leaveRunning(Phase::callingBack))
        return;
    const auto self = shared_from_this();
    if (const auto batch = std::dynamic_pointer_cast<GTLBatchQuery>(originalQuery_)) {
        // When a later request of the batch failed, the members of the earlier ones have had their answers.
        const auto* result = dynamic_cast<const GTLBatchResult*>((error ? answersSoFar_ : object).get());
        for (const auto& member : batch->queries())
            callBackMember(self, *member, result, error);
    } else if (const auto query = std::dynamic_pointer_cast<GTLQuery>(originalQuery_)) {
        if (const GTLCompletionHandler block = query->completionBlock())
            block(self, object, error);
    }
    if (originalQuery_)
        originalQuery_->executionDidStop();
    if (handler)
        handler(self, object, error);
    phase_ = Phase::calledBack;
}

bool GTLServiceTicket::shouldRetry(bool suggestedWillRetry, const Error& error) {
    if (!isRunning())
        return false;
    const GTLRetryBlock block = settings_.retryBlock;
    return block ? block(shared_from_this(), suggestedWillRetry, error) : suggestedWillRetry;
}

void GTLServiceTicket::uploadDidProgress(qint64 bytesSent, qint64 bytesTotal) {
    if (const auto block = settings_.uploadProgressBlock)
        tellCaller([=, self = shared_from_this()] { block(self, bytesSent, bytesTotal); });
}

void GTLServiceTicket::uploadLocationDidChange(const QUrl& location) {
    if (const auto block = settings_.uploadLocationChangeBlock)
        tellCaller([=, self = shared_from_this()] { block(self, location); });
}

// Here, or on the delegate queue's thread, unless the ticket was cancelled on the way.
void GTLServiceTicket::tellCaller(std::function<void()> callback) {
    const auto callUnlessCancelled = [self = shared_from_this(), callback = std::move(callback)] {
        if (!self->isCancelled())
            callback();
    };
    if (delegateMailbox_)
        delegateMailbox_->post(callUnlessCancelled);
    else
        callUnlessCancelled();
}

void GTLServiceTicket::setProperty(const QVariant& value, const QString& key) {
    if (value.isValid())
        settings_.properties.insert(key, value);
    else
        settings_.properties.remove(key);
}

int GTLServiceTicket::statusCode() const { return objectFetcher_ ? objectFetcher_->statusCode() : 0; }

std::shared_ptr<GTLQuery> GTLServiceTicket::queryForRequestID(const QString& requestID) const {
    const auto batch = std::dynamic_pointer_cast<GTLBatchQuery>(originalQuery_);
    return batch ? batch->queryForRequestID(requestID) : nullptr;
}

void GTLServiceTicket::pauseUpload() {
    if (auto* upload = uploadFetcher(objectFetcher_))
        upload->pauseFetching();
}

void GTLServiceTicket::resumeUpload() {
    if (auto* upload = uploadFetcher(objectFetcher_))
        upload->resumeFetching();
}

bool GTLServiceTicket::isUploadPaused() const {
    const auto* upload = uploadFetcher(objectFetcher_);
    return upload && upload->isPaused();
}

QString GTLServiceTicket::description() const {
    const auto pointer = [](const void* object) {
        return QStringLiteral("0x%1").arg(reinterpret_cast<quintptr>(object), 0, 16);
    };
    const bool isAuthorized = objectFetcher_ && objectFetcher_->authorizer();
    return QStringLiteral("GTLServiceTicket %1: {service:%2%3%4 fetcher:%5 }")
        .arg(pointer(this), pointer(service_.data()),
             APIKey().isEmpty() ? QString() : QString(QStringLiteral(" devKey:") + APIKey()),
             isAuthorized ? QString(QStringLiteral(" authorizer:") + pointer(objectFetcher_->authorizer().get()))
                          : QString(),
             pointer(objectFetcher_.get()));
}

} // namespace quenby
