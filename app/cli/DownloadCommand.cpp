#include "app/cli/DownloadCommand.h"

#include "app/cli/Console.h"
#include "app/cli/DisplayText.h"
#include "app/cli/Session.h"
#include "core/ByteCountText.h"

namespace quenby {

DownloadCommand::DownloadCommand(Session& session, Console& console, DownloadRun::Settings settings)
    : session_(session)
    , console_(console)
    , settings_(std::move(settings))
    , progress_(console, session.timeSource(), QStringLiteral("Downloading")) {}

void DownloadCommand::start() {
    run_ = std::make_unique<DownloadRun>(session_.driveService(), session_.endpoints(), settings_);
    connect(run_.get(), &DownloadRun::began, this,
            [this](const QString& title, qint64 bytes) { progressId_ = progress_.begin(printableText(title), bytes); });
    connect(run_.get(), &DownloadRun::progressed, this,
            [this](qint64 received) { progress_.update(progressId_, received); });
    run_->start(this, [this](const Result<DownloadRun::Outcome>& outcome) { downloaded(outcome); });
}

void DownloadCommand::downloaded(const Result<DownloadRun::Outcome>& outcome) {
    progress_.end(progressId_);
    if (outcome)
        console_.result(printablePath(outcome->path) + QStringLiteral(": downloaded, ") + byteCountText(outcome->bytes),
                        {{QStringLiteral("path"), jsonPath(outcome->path)},
                         {QStringLiteral("id"), outcome->identifier},
                         {QStringLiteral("title"), outcome->title},
                         {QStringLiteral("bytes"), outcome->bytes},
                         {QStringLiteral("md5"), outcome->md5}});
    else
        console_.error(outcome.error(), settings_.fileId.toUtf8());
    Q_EMIT finished(outcome && !console_.isOutputLost() ? exitCode::done : exitCode::failed);
}

} // namespace quenby
