#include "app/download/DownloadRun.h"

#include "app/cli/Folders.h"
#include "app/uploads/transfer/SourceFile.h"
#include "core/FileMoves.h"
#include "core/SafeFileName.h"
#include "driveapi/GTLDriveFile.h"
#include "driveapi/GTLQueryDrive.h"
#include "driveapi/GTLServiceDrive.h"

#include <QRandomGenerator>
#include <QUrlQuery>

#include <cerrno>

#include <fcntl.h>
#include <stdio.h>
#include <unistd.h>

namespace quenby {
namespace {

Error downloadError(int code, const QString& reason) {
    return Error(errorDomain::posix, code, {{errorKey::reason, reason}});
}

bool isSameOrigin(const QUrl& one, const QUrl& other) {
    return one.scheme() == other.scheme() && one.host() == other.host() && one.port() == other.port();
}

} // namespace

DownloadRun::DownloadRun(std::shared_ptr<GTLServiceDrive> service, Endpoints endpoints, Settings settings)
    : service_(std::move(service))
    , endpoints_(std::move(endpoints))
    , settings_(std::move(settings)) {}

DownloadRun::~DownloadRun() {
    if (ticket_)
        ticket_->cancelTicket();
    if (fetcher_)
        fetcher_->stopFetching();
    digest_.reset();
    if (!temporaryPath_.isEmpty())
        ::unlink(temporaryPath_.constData());
}

void DownloadRun::start(QObject* context, Finished finished) {
    finished_ = {context, std::move(finished)};
    const auto query = GTLQueryDrive::queryForFilesGetWithFileId(settings_.fileId);
    ticket_ = service_->executeQuery(query, this,
                                     [this](const GTLServiceTicketPtr&, const GTLObjectPtr& object,
                                            const MaybeError& error) { gotFile(object, error); });
}

void DownloadRun::gotFile(const GTLObjectPtr& object, const MaybeError& error) {
    ticket_.reset();
    if (error)
        return finish(*error);
    file_ = std::dynamic_pointer_cast<GTLDriveFile>(object);
    const QUrl url = file_ ? QUrl(file_->downloadUrl()) : QUrl();
    if (url.isEmpty())
        return finish(downloadError(ENODATA, QStringLiteral("has no content to download, only a page to look at")));
    // The token goes along with the request, so it must not lead anywhere else.
    if (!isSameOrigin(url, endpoints_.downloadBaseURL))
        return finish(downloadError(EPERM, QStringLiteral("lies on another server; open it in the browser")));
    if (const auto refused = checkDestination())
        return finish(*refused);
    Q_EMIT began(file_->title(), file_->fileSize());
    fetchContent(url);
}

MaybeError DownloadRun::checkDestination() {
    const bool intoFolder = settings_.output.isEmpty() || isFolder(settings_.output);
    mayReplace_ = !intoFolder;
    folder_ = settings_.output.isEmpty() ? QByteArray(".") : intoFolder ? settings_.output : folderOf(settings_.output);
    name_ = intoFolder ? safeFileName(file_->title()) : lastComponent(settings_.output);
    temporaryPath_ = folder_ + "/.quenby-" + QByteArray::number(QRandomGenerator::system()->generate64(), 16) + ".part";
    const int probe = ::open(temporaryPath_.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (probe < 0) {
        temporaryPath_.clear();
        return fileError(errno, QStringLiteral("can't save into the folder"), folder_);
    }
    ::close(probe);
    return std::nullopt;
}

void DownloadRun::fetchContent(const QUrl& url) {
    fetcher_ = service_->downloadFetcherForFile(url, QFile::decodeName(temporaryPath_));
    fetcher_->setRetryEnabled(true);
    fetcher_->setReceivedDataBlock([this](const QByteArray&) { Q_EMIT progressed(fetcher_->downloadedLength()); });
    fetcher_->beginFetchWithCompletionHandler(this,
                                              [this](const QByteArray&, const MaybeError& error) { fetched(error); });
}

void DownloadRun::fetched(const MaybeError& error) {
    fetcher_.reset();
    if (error && error->isHTTPStatus(fileHandleErrorCode))
        return finish(error->withDetail(errorKey::reason,
                                        QString(QStringLiteral("could not be saved; make room on the disk or choose "
                                                               "another folder: ") +
                                                error->description())));
    if (error)
        return finish(*error);
    auto content = SourceFile::open(temporaryPath_);
    if (!content)
        return finish(content.error());
    content_ = content->handle();
    digest_ = std::make_unique<FileDigest>(content_, this, [this](const Result<QByteArray>& md5) { summed(md5); });
}

void DownloadRun::summed(const Result<QByteArray>& md5) {
    if (!md5)
        return finish(md5.error());
    const QString expected = file_->md5Checksum();
    const QString found = QString::fromLatin1(*md5);
    if (!expected.isEmpty() && expected.compare(found, Qt::CaseInsensitive) != 0)
        return finish(downloadError(EBADMSG, QStringLiteral("arrived damaged (MD5 sum ") + found +
                                                 QStringLiteral(" instead of ") + expected +
                                                 QStringLiteral("); download it again")));
    const auto path = giveName();
    if (!path)
        return finish(path.error());
    finish(Outcome{settings_.fileId, file_->title(), *path, content_->size(), found});
}

Result<QByteArray> DownloadRun::giveName() {
    QByteArray path = settings_.output;
    if (!mayReplace_)
        path = renameIntoFolder(temporaryPath_, folder_, name_);
    else if (::rename(temporaryPath_.constData(), path.constData()) != 0)
        path.clear();
    if (path.isEmpty()) {
        if (errno == EEXIST)
            return downloadError(EEXIST, QStringLiteral("every name for it is taken; choose one with -o"));
        return fileError(errno, QStringLiteral("can't save as"), mayReplace_ ? settings_.output : name_);
    }
    temporaryPath_.clear();
    return path;
}

void DownloadRun::finish(const Result<Outcome>& outcome) {
    if (!temporaryPath_.isEmpty())
        ::unlink(temporaryPath_.constData());
    temporaryPath_.clear();
    finished_.deliver(outcome);
}

} // namespace quenby
