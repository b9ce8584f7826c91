// One file on its way from the Drive: asked about, fetched beside its destination, compared, and only then given its
// name. Nothing that is not whole ever bears that name. Threads: the main thread. Destroying it cancels and leaves no
// partial file.
#pragma once

#include "app/uploads/transfer/FileDigest.h"
#include "core/CompletionGate.h"
#include "core/Endpoints.h"
#include "core/Result.h"
#include "driveapi/GTLService.h"

#include <QObject>
#include <QPointer>

#include <functional>
#include <memory>

namespace quenby {

class GTLDriveFile;
class GTLServiceDrive;
class GTMHTTPFetcher;

class DownloadRun : public QObject {
    Q_OBJECT

public:
    struct Settings {
        QString fileId;
        // A file, which is replaced, or an existing folder. Empty: the current folder. In a folder the file gets its
        // title as name, with a number where that is taken.
        QByteArray output;
    };
    struct Outcome {
        QString identifier;
        QString title;
        QByteArray path;
        qint64 bytes = 0;
        QString md5;
    };
    using Finished = std::function<void(const Result<Outcome>& outcome)>;

    DownloadRun(std::shared_ptr<GTLServiceDrive> service, Endpoints endpoints, Settings settings);
    ~DownloadRun() override;

    void start(QObject* context, Finished finished);

Q_SIGNALS:
    void began(const QString& title, qint64 bytes);
    void progressed(qint64 bytesReceived);

private:
    void gotFile(const GTLObjectPtr& object, const MaybeError& error);
    MaybeError checkDestination();
    void fetchContent(const QUrl& url);
    void fetched(const MaybeError& error);
    void summed(const Result<QByteArray>& md5);
    Result<QByteArray> giveName();
    void finish(const Result<Outcome>& outcome);

    const std::shared_ptr<GTLServiceDrive> service_;
    const Endpoints endpoints_;
    const Settings settings_;
    CompletionGate<Result<Outcome>> finished_;

    GTLServiceTicketPtr ticket_;
    std::shared_ptr<GTLDriveFile> file_;
    std::shared_ptr<GTMHTTPFetcher> fetcher_;
    std::shared_ptr<QFile> content_;
    std::unique_ptr<FileDigest> digest_;
    QByteArray folder_;
    QByteArray name_;          // in the folder
    bool mayReplace_ = false;  // the name was asked for
    QByteArray temporaryPath_; // exists while a partial file may exist
};

} // namespace quenby
