#include "app/uploads/UploadTask.h"

#include "driveapi/GTLServiceDrive.h"

namespace quenby {

UploadTask::UploadTask(std::shared_ptr<GTLServiceDrive> service, std::shared_ptr<TimeSource> timeSource,
                       UploadRequest request, std::chrono::milliseconds patience)
    : service_(std::move(service))
    , timeSource_(std::move(timeSource))
    , request_(std::move(request))
    , patience_(patience) {}

UploadTask::~UploadTask() = default;

void UploadTask::start(QObject* context, UploadRun::Finished finished) {
    finished_ = {context, std::move(finished)};
    if (!service_) {
        const QString reason = QStringLiteral("no user is signed in; sign in, then upload it again");
        return finished_.deliver(Error(FetcherErrorCode::fetchCouldNotBegin, {{errorKey::reason, reason}}));
    }
    opening_ = std::make_unique<SourceOpening>(*timeSource_, request_.path, this,
                                               [this](const Result<SourceFile>& source) { opened(source); });
}

void UploadTask::tryNow() {
    if (run_)
        run_->tryNow();
}

void UploadTask::opened(const Result<SourceFile>& source) {
    opening_.reset();
    if (!source)
        return finished_.deliver(source.error());
    UploadRun::Settings settings;
    settings.patience = patience_;
    settings.parentId = request_.parentId;
    settings.query = request_.query;
    run_ = std::make_unique<UploadRun>(service_, timeSource_, *source, settings);
    connect(run_.get(), &UploadRun::progressed, this,
            [this, total = source->size()](qint64 sent) { Q_EMIT progressed(sent, total); });
    connect(run_.get(), &UploadRun::troubled, this, &UploadTask::troubled);
    run_->start(this, [this](const Result<UploadRun::Outcome>& outcome) { finished_.deliver(outcome); });
}

} // namespace quenby
