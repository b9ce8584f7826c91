#include "app/uploads/transfer/UploadRun.h"

#include "app/uploads/transfer/InsertQuery.h"
#include "app/uploads/transfer/MIMETypeFileName.h"
#include "app/uploads/transfer/UploadTrouble.h"
#include "driveapi/GTLDriveFile.h"
#include "driveapi/GTLQueryDrive.h"
#include "driveapi/GTLServiceDrive.h"
#include "http/GTMHTTPUploadFetcher.h"

#include <algorithm>

namespace quenby {
namespace {

constexpr int mostLostSessions = 3;

Error uploadError(UploadErrorCode code, const QString& reason) {
    return Error(uploadErrorDomain, static_cast<qint64>(code), {{errorKey::reason, reason}});
}

} // namespace

UploadRun::UploadRun(std::shared_ptr<GTLServiceDrive> service, std::shared_ptr<TimeSource> timeSource,
                     SourceFile source, Settings settings)
    : service_(std::move(service))
    , timeSource_(std::move(timeSource))
    , source_(std::move(source))
    , settings_(std::move(settings))
    , query_(settings_.query ? settings_.query : insertQueryForPath(source_.path(), settings_.parentId))
    , patience_(timeSource_, settings_.patience) {}

UploadRun::~UploadRun() {
    if (ticket_)
        ticket_->cancelTicket();
}

void UploadRun::start(QObject* context, Finished finished) {
    finished_ = {context, std::move(finished)};
    if (settings_.shouldVerify) {
        digest_ = std::make_unique<FileDigest>(source_.handle(), this, [this](const Result<QByteArray>& sum) {
            localSum_ = sum;
            conclude();
        });
    }
    send();
}

void UploadRun::tryNow() {
    if (retryTimer_)
        send();
}

void UploadRun::send() {
    retryTimer_.reset();
    const auto query = query_->copy();
    query->setRequestID(GTLQuery::nextRequestID());
    GTLUploadParameters media = query->uploadParameters().value_or(GTLUploadParameters());
    media.media = source_.handle();
    media.uploadLocationURL = location_;
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
    ticket->setUploadLocationChangeBlock(
        [this](const GTLServiceTicketPtr&, const QUrl& location) { location_ = location; });
    ticket->setRetryBlock([this](const GTLServiceTicketPtr&, bool suggested, const Error& error) {
        return troubleOf(error, !location_.isEmpty()) == UploadTrouble::passing ? shouldRetry(error) : suggested;
    });
}

void UploadRun::noteProgress(const GTLServiceTicketPtr& ticket, qint64 sent, qint64 total) {
    if (const auto fetcher = std::dynamic_pointer_cast<GTMHTTPUploadFetcher>(ticket->objectFetcher()))
        confirmed_ = std::max(confirmed_, static_cast<qint64>(fetcher->currentOffset()));
    const qint64 announcement = total - source_.size(); // the announcing request's own body
    Q_EMIT progressed(std::clamp<qint64>(sent - announcement, 0, source_.size()));
}

bool UploadRun::shouldRetry(const Error& error) {
    const bool goesOn = patience_.failed(confirmed_);
    if (goesOn)
        Q_EMIT troubled(error);
    return goesOn;
}

void UploadRun::finishedSending(const GTLObjectPtr& object, const MaybeError& error) {
    ticket_.reset();
    if (error)
        return recover(*error);
    copy_ = std::dynamic_pointer_cast<GTLDriveFile>(object);
    if (!copy_) // sending it again might store it twice
        return finish(Error(URLErrorCode::badServerResponse,
                            {{errorKey::reason, QStringLiteral("was sent, but the Drive did not say what it stored; "
                                                               "look for it there before sending it again")}}));
    conclude();
}

void UploadRun::recover(const Error& error) {
    const auto trouble = troubleOf(error, !location_.isEmpty());
    if (trouble == UploadTrouble::final || !source_.isUnchanged())
        return finish(explained(error));
    if (trouble == UploadTrouble::lostSession) {
        if (++lostSessions_ > mostLostSessions)
            return finish(explained(error));
        beginAnew();
    }
    if (!shouldRetry(error))
        return finish(explained(error));
    retryTimer_ = timeSource_->startTimer(patience_.nextDelay(), [this] { send(); });
}

void UploadRun::beginAnew() {
    location_.clear();
    confirmed_ = 0;
    Q_EMIT progressed(0);
}

Error UploadRun::explained(const Error& error) const {
    if (!source_.isUnchanged())
        return uploadError(UploadErrorCode::fileChanged,
                           QStringLiteral("changed while it was sent; upload it again when it is complete"));
    QString advice;
    switch (troubleOf(error, !location_.isEmpty())) {
    case UploadTrouble::passing:
        advice = QStringLiteral("gave up after %1 s without getting on; try again later: ")
                     .arg(std::chrono::duration_cast<std::chrono::seconds>(patience_.limit()).count());
        break;
    case UploadTrouble::lostSession:
        advice = QStringLiteral("the Drive forgot the upload again and again; try again later: ");
        break;
    case UploadTrouble::final:
        break;
    }
    return advice.isEmpty() ? error : error.withDetail(errorKey::reason, QString(advice + error.description()));
}

void UploadRun::conclude() {
    const bool isSummed = localSum_ || !settings_.shouldVerify;
    if (!copy_ || !isSummed)
        return;
    if (const auto difference = compare())
        return finish(*difference);
    finish(Outcome{copy_->identifier(), copy_->title(), source_.size(), copy_->md5Checksum(), copy_->originalFilename(),
                   copy_->alternateLink()});
}

MaybeError UploadRun::compare() const {
    const QString copyName = QStringLiteral("the copy on the Drive (") + copy_->identifier() + QLatin1Char(')');
    if (!source_.isUnchanged())
        return uploadError(UploadErrorCode::fileChanged,
                           QStringLiteral("changed while it was sent, so that ") + copyName +
                               QStringLiteral(" may be a mixture; delete that copy and upload the file again"));
    if (!settings_.shouldVerify)
        return std::nullopt;
    if (!*localSum_)
        return localSum_->error();
    const QString remote = copy_->md5Checksum();
    const QString local = QString::fromLatin1(**localSum_);
    if (remote.isEmpty())
        return uploadError(UploadErrorCode::sumMissing, QStringLiteral("was sent, but the Drive tells no MD5 sum of ") +
                                                            copyName +
                                                            QStringLiteral("; look whether that copy is whole"));
    if (remote.compare(local, Qt::CaseInsensitive) != 0)
        return uploadError(UploadErrorCode::copyDiffers,
                           copyName + QStringLiteral(" differs from the file: its MD5 sum is ") + remote +
                               QStringLiteral(" instead of ") + local +
                               QStringLiteral("; delete that copy and upload the file again"));
    return std::nullopt;
}

void UploadRun::finish(const Result<Outcome>& outcome) {
    retryTimer_.reset();
    finished_.deliver(outcome);
}

} // namespace quenby
