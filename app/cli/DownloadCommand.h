// quenby download: saves one file of the Drive.
#pragma once

#include "app/cli/Command.h"
#include "app/cli/ProgressReporter.h"
#include "app/download/DownloadRun.h"

namespace quenby {

class Session;

class DownloadCommand : public Command {
    Q_OBJECT

public:
    DownloadCommand(Session& session, Console& console, DownloadRun::Settings settings);
    void start() override;

private:
    void downloaded(const Result<DownloadRun::Outcome>& outcome);

    Session& session_;
    Console& console_;
    const DownloadRun::Settings settings_;
    ProgressReporter progress_;
    ProgressReporter::Id progressId_ = 0;
    std::unique_ptr<DownloadRun> run_;
};

} // namespace quenby
