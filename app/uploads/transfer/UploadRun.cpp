#include "app/uploads/transfer/UploadRun.h"

#include "app/uploads/transfer/CopyCheck.h"
#include "app/uploads/transfer/DriveAnswer.h"
#include "app/uploads/transfer/GeneratedIdentifiers.h"
#include "app/uploads/transfer/InsertQuery.h"
#include "app/uploads/transfer/MIMETypeFileName.h"
#include "app/uploads/transfer/UploadRefusal.h"
#include "app/uploads/transfer/UploadTrouble.h"
#include "driveapi/GTLDriveFile.h"
#include "driveapi/GTLQueryDrive.h"
#include "driveapi/GTLServiceDrive.h"
#include "http/GTMHTTPUploadFetcher.h"

#include <algorithm>

namespace quenby {
namespace {

using namespace std::chrono_literals;

constexpr int mostLostSessions = 3;
constexpr int identifierInUse = 409;
constexpr int notFound = 404;

QString identifierIn(const GTLQueryDrive& query) {
    const auto file = std::dynamic_pointer_cast<GTLDriveFile>(query.bodyObject());
    return file ? file->identifier() : QString();
}

// A copy of what the query inserts, with the identifier.
GTLObjectPtr bodyWithIdentifier(const GTLQueryDrive& query, const QString& identifier) {
    const auto given = std::dynamic_pointer_cast<GTLDriveFile>(query.bodyObject());
    const auto file = given ? std::static_pointer_cast<GTLDriveFile>(given->copy()) : GTLDriveFile::object();
    file->setIdentifier(identifier);
    return file;
}

std::shared_ptr<GTMHTTPUploadFetcher> uploadOf(const GTLServiceTicketPtr& ticket) {
    return ticket ? std::dynamic_pointer_cast<GTMHTTPUploadFetcher>(ticket->objectFetcher()) : nullptr;
}

// How long the server, with what it answered last, wants to be left alone; 0 when it did not say.
std::chrono::milliseconds demandedBy(const GTLServiceTicketPtr& ticket, const QDateTime& now) {
    const auto upload = uploadOf(ticket);
    if (!upload)
        return 0ms;
    const auto seconds = retryAfterSeconds(upload->activeFetcher()->responseHeaders(), now);
    return std::chrono::milliseconds(qRound64(seconds.value_or(0) * 1000));
}

} // namespace

UploadRun::UploadRun(std::shared_ptr<GTLServiceDrive> service, std::shared_ptr<TimeSource> timeSource,
                     SourceFile source, Settings settings)
    : service_(std::move(service))
    , timeSource_(std::move(timeSource))
    , source_(std::move(source))
    , settings_(std::move(settings))
    , query_(settings_.query ? settings_.query : insertQueryForPath(source_.path(), settings_.parentId))
    , session_(settings_.session)
    , kept_(settings_.session)
    , maxSendSpeed_(settings_.maxSendSpeed)
    , patience_(timeSource_, settings_.patience) {
    if (const QString identifier = identifierIn(*query_); !identifier.isEmpty())
        session_.identifier = identifier;
}

UploadRun::~UploadRun() {
    if (ticket_)
        ticket_->cancelTicket();
}

void UploadRun::start(QObject* context, Finished finished) {
    finished_ = {context, std::move(finished)};
    if (settings_.shouldVerify)
        startDigest();
    begin();
}

void UploadRun::tryNow() {
    if (!retryTimer_ || demandedPause_ > 0ms)
        return;
    retryTimer_.reset();
    (this->*afterPause_)();
}

void UploadRun::setMaxSendSpeed(qint64 bytesPerSecond) {
    maxSendSpeed_ = bytesPerSecond;
    if (const auto upload = uploadOf(ticket_))
        upload->setMaxSendSpeed(bytesPerSecond);
}

// --- The session --------------------------------------------------------------------------------------------------

void UploadRun::begin() {
    if (!session_.hasValidLocation(timeSource_->now()))
        giveUpLocation();
    const bool isUnnamed = session_.identifier.isEmpty() && session_.location.isEmpty();
    if (isUnnamed && settings_.identifiers && !isGivenNone_)
        return takeIdentifier();
    keepSession([this] { send(); });
}

void UploadRun::takeIdentifier() {
    settings_.identifiers->take(this, [this](const Result<QString>& identifier) { identifierTaken(identifier); });
}

void UploadRun::identifierTaken(const Result<QString>& identifier) {
    demandedPause_ = 0ms;
    if (!identifier)
        return recover(identifier.error(), &UploadRun::begin);
    session_.identifier = *identifier;
    isGivenNone_ = identifier->isEmpty();
    begin();
}

void UploadRun::giveUpLocation() {
    session_.location.clear();
    session_.begunAt = {};
    session_.held = 0;
}

void UploadRun::noteLocation(const QUrl& location) {
    if (location.isEmpty())
        return giveUpLocation();
    if (session_.location.isEmpty()) // else it has moved, and is no younger for that
        session_.begunAt = timeSource_->now();
    session_.location = location;
}

// Goes on when the session, as it is now, is kept; and never when it was kept only after something else came up.
void UploadRun::keepSession(std::function<void()> then) {
    const quint64 number = ++keepNumber_;
    if (!settings_.keep || session_ == kept_)
        return then();
    settings_.keep(session_, [run = QPointer(this), number, told = session_, then = std::move(then)] {
        if (!run || run->keepNumber_ != number)
            return;
        ++run->keepNumber_;
        run->kept_ = told;
        then();
    });
}

// --- Sending ------------------------------------------------------------------------------------------------------

void UploadRun::send() {
    const auto query = std::static_pointer_cast<GTLQueryDrive>(query_->copy());
    query->setRequestID(GTLQuery::nextRequestID());
    if (!session_.identifier.isEmpty())
        query->setBodyObject(bodyWithIdentifier(*query_, session_.identifier));
    GTLUploadParameters media = query->uploadParameters().value_or(GTLUploadParameters());
    media.media = source_.handle();
    media.uploadLocationURL = session_.location;
    if (media.MIMEType.isEmpty())
        media.MIMEType = MIMETypeFileName(source_.title()).toUtf8();
    query->setUploadParameters(media);
    ticket_ = service_->executeQuery(query, this,
                                     [this](const GTLServiceTicketPtr&, const GTLObjectPtr& object,
                                            const MaybeError& error) { finishedSending(object, error); });
    if (!ticket_)
        return finish(Error(FetcherErrorCode::fetchCouldNotBegin,
                            {{errorKey::reason, QStringLiteral("the upload could not begin; report this")}}));
    watch(ticket_);
}

void UploadRun::watch(const GTLServiceTicketPtr& ticket) {
    ticket->setUploadProgressBlock(
        [this](const GTLServiceTicketPtr& sender, qint64 sent, qint64 total) { noteProgress(sender, sent, total); });
    ticket->setUploadLocationChangeBlock([this](const GTLServiceTicketPtr& sender, const QUrl& location) {
        holdBytes(sender); // it may be another fetcher than before: the service can go over to its other road
        noteLocation(location);
    });
    ticket->setRetryBlock([this](const GTLServiceTicketPtr& sender, bool suggested, const Error& error) {
        return maySendAgain(sender, suggested, error);
    });
    holdBytes(ticket);
}

// The file's bytes wait for us, and are not too fast.
void UploadRun::holdBytes(const GTLServiceTicketPtr& ticket) {
    const auto upload = uploadOf(ticket);
    if (!upload)
        return;
    upload->setMaxSendSpeed(maxSendSpeed_);
    upload->setSendGate([this, sender = upload.get()](std::function<void()> goOn) {
        bytesAreNext(static_cast<qint64>(sender->currentOffset()), std::move(goOn));
    });
}

void UploadRun::noteProgress(const GTLServiceTicketPtr& ticket, qint64 sent, qint64 total) {
    if (const auto upload = uploadOf(ticket))
        confirmed_ = std::max(confirmed_, static_cast<qint64>(upload->currentOffset()));
    const qint64 announcement = total - source_.size(); // the announcing request's own body
    Q_EMIT progressed(std::clamp<qint64>(sent - announcement, 0, source_.size()));
}

void UploadRun::bytesAreNext(qint64 held, std::function<void()> goOn) {
    session_.held = held;
    confirmed_ = std::max(confirmed_, held);
    const QPointer self(this);
    Q_EMIT progressed(held);
    if (self) // else whoever heard of it has ended us
        keepSession(std::move(goOn));
}

// Whether the fetcher makes the request again by itself. A pause that the server asks for is made here: the fetcher
// would shorten it.
bool UploadRun::maySendAgain(const GTLServiceTicketPtr& ticket, bool suggested, const Error& error) {
    if (troubleOf(error, !session_.location.isEmpty()) != UploadTrouble::passing)
        return suggested;
    return demandedBy(ticket, timeSource_->now()) == 0ms && shouldRetry(error);
}

bool UploadRun::shouldRetry(const Error& error) {
    const bool goesOn = patience_.failed(confirmed_);
    if (goesOn)
        Q_EMIT troubled(error);
    return goesOn;
}

void UploadRun::finishedSending(const GTLObjectPtr& object, const MaybeError& error) {
    demandedPause_ = error ? demandedBy(ticket_, timeSource_->now()) : 0ms;
    ticket_.reset();
    if (error)
        return mayBeThere(*error) ? lookForCopy(*error) : recover(*error, &UploadRun::begin);
    copy_ = std::dynamic_pointer_cast<GTLDriveFile>(object);
    if (copy_)
        return conclude();
    const Error unsaid(URLErrorCode::badServerResponse,
                       {{errorKey::reason, QStringLiteral("was sent, but the Drive did not say what it stored; look "
                                                          "for it there before sending it again")}});
    if (session_.identifier.isEmpty()) // sending it again might store it twice
        finish(unsaid);
    else
        lookForCopy(unsaid);
}

// --- Trouble ------------------------------------------------------------------------------------------------------

void UploadRun::recover(const Error& error, Step step) {
    const auto trouble = troubleOf(error, !session_.location.isEmpty());
    if (trouble == UploadTrouble::final || !source_.isUnchanged())
        return finish(explained(error));
    if (trouble == UploadTrouble::lostSession && ++lostSessions_ > mostLostSessions)
        return finish(explained(error));
    if (!shouldRetry(error))
        return finish(explained(error));
    if (trouble != UploadTrouble::lostSession)
        return pause(step);
    giveUpLocation();
    confirmed_ = 0;
    Q_EMIT progressed(0);
    keepSession([this, step] { pause(step); });
}

void UploadRun::pause(Step step) {
    afterPause_ = step;
    demandedPause_ = std::min(demandedPause_, patience_.limit());
    retryTimer_ = timeSource_->startTimer(std::max(patience_.nextDelay(), demandedPause_), [this] {
        retryTimer_.reset();
        (this->*afterPause_)();
    });
}

// Whether the file may be on the Drive in spite of the error: what is there under our identifier tells.
bool UploadRun::mayBeThere(const Error& error) const {
    const bool isReplyLost = error.domain() == errorDomain::service || error.domain() == errorDomain::json;
    return !session_.identifier.isEmpty() && source_.isUnchanged() &&
           (isReplyLost || driveStatusOf(error) == identifierInUse);
}

void UploadRun::lookForCopy(const Error& reason) {
    doubt_ = reason;
    startDigest();
    look();
}

void UploadRun::look() {
    ticket_ = service_->executeQuery(GTLQueryDrive::queryForFilesGetWithFileId(session_.identifier), this,
                                     [this](const GTLServiceTicketPtr&, const GTLObjectPtr& object,
                                            const MaybeError& error) { looked(object, error); });
}

void UploadRun::looked(const GTLObjectPtr& object, const MaybeError& error) {
    demandedPause_ = 0ms;
    ticket_.reset();
    if (error && driveStatusOf(*error) == notFound)
        return finish(explained(*doubt_));
    if (error)
        return recover(*error, &UploadRun::look);
    copy_ = std::dynamic_pointer_cast<GTLDriveFile>(object);
    if (!copy_)
        return finish(explained(*doubt_));
    Q_EMIT progressed(source_.size());
    conclude();
}

Error UploadRun::explained(const Error& error) const {
    if (!source_.isUnchanged())
        return changedWhileSent();
    QString advice;
    switch (troubleOf(error, !session_.location.isEmpty())) {
    case UploadTrouble::passing:
        advice = QStringLiteral("gave up after %1 s without getting on; try again later")
                     .arg(std::chrono::duration_cast<std::chrono::seconds>(patience_.limit()).count());
        break;
    case UploadTrouble::lostSession:
        advice = QStringLiteral("the Drive forgot the upload again and again; try again later");
        break;
    case UploadTrouble::final:
        advice = refusalSentence(error);
        break;
    }
    if (advice.isEmpty())
        return error;
    return error.withDetail(errorKey::reason, QString(advice + QStringLiteral(": ") + error.description()));
}

// --- The end ------------------------------------------------------------------------------------------------------

void UploadRun::startDigest() {
    if (digest_)
        return;
    digest_ = std::make_unique<FileDigest>(source_.handle(), this, [this](const Result<QByteArray>& sum) {
        localSum_ = sum;
        conclude();
    });
}

void UploadRun::conclude() {
    if (!copy_ || (digest_ && !localSum_))
        return;
    const auto origin = doubt_ ? CopyOrigin::found : CopyOrigin::sentNow;
    if (const auto difference = differenceOfCopy(source_, localSum_, *copy_, origin))
        return finish(*difference);
    finish(Outcome{copy_->identifier(), copy_->title(), source_.size(), copy_->md5Checksum(), copy_->originalFilename(),
                   copy_->alternateLink()});
}

void UploadRun::finish(const Result<Outcome>& outcome) {
    retryTimer_.reset();
    ++keepNumber_; // nobody waits for it any more
    finished_.deliver(outcome);
}

} // namespace quenby
