#include "app/uploads/transfer/DestinationFolder.h"

#include "app/uploads/transfer/UploadTrouble.h"
#include "driveapi/GTLDriveFile.h"
#include "driveapi/GTLDriveReference.h"
#include "driveapi/GTLQueryDrive.h"
#include "driveapi/GTLServiceDrive.h"

namespace quenby {
namespace {

const QString folderMIMEType = QStringLiteral("application/vnd.google-apps.folder");

Error unexpectedReply() {
    return Error(URLErrorCode::badServerResponse,
                 {{errorKey::reason, QStringLiteral("the Drive's answer about the folder can't be understood")}});
}

} // namespace

DestinationFolder::DestinationFolder(std::shared_ptr<GTLServiceDrive> service, std::shared_ptr<TimeSource> timeSource,
                                     QString name, std::chrono::milliseconds patience)
    : service_(std::move(service))
    , timeSource_(timeSource)
    , name_(std::move(name))
    , patience_(std::move(timeSource), patience) {}

DestinationFolder::~DestinationFolder() {
    if (ticket_)
        ticket_->cancelTicket();
}

QString DestinationFolder::searchText(const QString& name) {
    QString escaped = name;
    escaped.replace(QLatin1Char('\\'), QStringLiteral("\\\\")).replace(QLatin1Char('\''), QStringLiteral("\\'"));
    return QStringLiteral("mimeType='application/vnd.google-apps.folder' and title = '") + escaped +
           QStringLiteral("' and trashed = false ");
}

void DestinationFolder::find(QObject* context, Found found) {
    found_ = {context, std::move(found)};
    search();
}

void DestinationFolder::tryNow() {
    if (retryTimer_)
        search();
}

void DestinationFolder::search() {
    retryTimer_.reset();
    const auto query = GTLQueryDrive::queryForChildrenListWithFolderId(QStringLiteral("root"));
    query->setQ(searchText(name_));
    ticket_ = service_->executeQuery(query, this,
                                     [this](const GTLServiceTicketPtr&, const GTLObjectPtr& object,
                                            const MaybeError& error) { searched(object, error); });
}

void DestinationFolder::searched(const GTLObjectPtr& object, const MaybeError& error) {
    if (error)
        return recover(*error);
    const auto list = std::dynamic_pointer_cast<GTLDriveChildList>(object);
    if (!list)
        return recover(unexpectedReply());
    const auto items = list->items();
    if (!items) // no list is not an empty list: there may be such a folder
        return fail(unexpectedReply());
    if (items->count() > 0)
        return found_.deliver(Result<QString>(items->at(0)->identifier()));
    make();
}

void DestinationFolder::make() {
    const auto folder = GTLDriveFile::object();
    folder->setTitle(name_);
    folder->setMimeType(folderMIMEType);
    const auto query = GTLQueryDrive::queryForFilesInsertWithObject(folder, std::nullopt);
    ticket_ = service_->executeQuery(query, this,
                                     [this](const GTLServiceTicketPtr&, const GTLObjectPtr& object,
                                            const MaybeError& error) { made(object, error); });
    if (ticket_) {
        // Sent once and no more, but for a request that was refused before anything was done.
        ticket_->setRetryBlock([](const GTLServiceTicketPtr&, bool suggested, const Error& error) {
            return suggested && error.isHTTPStatus(401);
        });
    }
}

void DestinationFolder::made(const GTLObjectPtr& object, const MaybeError& error) {
    if (error)
        return recover(*error);
    const auto folder = std::dynamic_pointer_cast<GTLDriveFile>(object);
    if (!folder || folder->identifier().isEmpty())
        return recover(unexpectedReply());
    Q_EMIT madeFolder(folder->identifier());
    found_.deliver(Result<QString>(folder->identifier()));
}

void DestinationFolder::recover(const Error& error) {
    const bool isPassing = troubleOf(error, false) == UploadTrouble::passing;
    if (!isPassing || !patience_.failed(0))
        return fail(error);
    Q_EMIT troubled(error);
    retryTimer_ = timeSource_->startTimer(patience_.nextDelay(), [this] { search(); });
}

void DestinationFolder::fail(const Error& error) {
    const QString reason = QStringLiteral("the folder can't be found or made: ") + error.description();
    found_.deliver(Result<QString>(error.withDetail(errorKey::reason, reason)));
}

} // namespace quenby
