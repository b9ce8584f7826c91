#include "app/uploads/transfer/GeneratedIdentifiers.h"

#include "app/uploads/transfer/DriveAnswer.h"
#include "driveapi/GTLDriveFile.h"
#include "driveapi/GTLQueryDrive.h"
#include "driveapi/GTLServiceDrive.h"

#include <algorithm>

namespace quenby {
namespace {

// The first question is for one file or a few; whoever comes again may have many.
constexpr qint64 firstNumber = 10;
constexpr qint64 laterNumber = 100;
constexpr qint64 largestNumber = 1000; // that a Drive gives at once

constexpr int methodNotFound = -32601;

// An old Drive, or one behind something that does not know the method either.
bool isUnknownMethod(const Error& error) {
    const qint64 status = driveStatusOf(error);
    return error.is(errorDomain::jsonRPC, methodNotFound) || status == 404 || status == 501;
}

Error unusableReply() {
    return Error(URLErrorCode::badServerResponse,
                 {{errorKey::reason, QStringLiteral("the Drive gave no identifier for the file; try again later")}});
}

} // namespace

GeneratedIdentifiers::GeneratedIdentifiers(std::shared_ptr<GTLServiceDrive> service)
    : service_(std::move(service)) {}

GeneratedIdentifiers::~GeneratedIdentifiers() {
    if (ticket_)
        ticket_->cancelTicket();
    for (const auto& gate : waiting_)
        gate.ticket().cancel();
}

CompletionTicket GeneratedIdentifiers::take(QObject* context, Taken taken) {
    const CompletionTicket ticket = waiting_.emplace_back(context, std::move(taken)).ticket();
    serve();
    return ticket;
}

// Those who still wait, in their order, as far as it is known what they get.
void GeneratedIdentifiers::serve() {
    std::erase_if(waiting_, [](const auto& gate) { return !gate.ticket().isPending(); });
    while (!waiting_.empty() && (!areGiven_ || !spare_.isEmpty())) {
        waiting_.front().deliver(Result<QString>(areGiven_ ? spare_.takeFirst() : QString()));
        waiting_.pop_front();
    }
    if (!waiting_.empty() && !isAsking_)
        ask();
}

void GeneratedIdentifiers::ask() {
    isAsking_ = true;
    const auto query = GTLQueryDrive::queryForFilesGenerateIds();
    const qint64 number = std::exchange(hasAsked_, true) ? laterNumber : firstNumber;
    query->setMaxResults(std::clamp(static_cast<qint64>(waiting_.size()), number, largestNumber));
    ticket_ = service_->executeQuery(query, this,
                                     [this](const GTLServiceTicketPtr&, const GTLObjectPtr& object,
                                            const MaybeError& error) { answered(object, error); });
}

void GeneratedIdentifiers::answered(const GTLObjectPtr& object, const MaybeError& error) {
    isAsking_ = false;
    ticket_.reset();
    if (error && isUnknownMethod(*error)) {
        areGiven_ = false;
        return serve();
    }
    const auto generated = std::dynamic_pointer_cast<GTLDriveGeneratedIds>(object);
    const auto identifiers = generated ? generated->ids() : nullptr;
    for (qsizetype i = 0; identifiers && i < identifiers->count(); ++i) {
        if (const QString identifier = identifiers->at(i); !identifier.isEmpty())
            spare_.append(identifier);
    }
    if (error || spare_.isEmpty()) {
        for (const auto& gate : std::exchange(waiting_, {}))
            gate.deliver(Result<QString>(error.value_or(unusableReply())));
        return;
    }
    serve();
}

} // namespace quenby
