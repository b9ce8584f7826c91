// quenby upload: sends files, some of them at the same time, and tells of each what became of it.
#pragma once

#include "app/cli/Command.h"
#include "app/cli/ProgressReporter.h"
#include "app/uploads/transfer/UploadRun.h"

#include <QList>

#include <deque>
#include <map>
#include <memory>

namespace quenby {

class DestinationFolder;
class GeneratedIdentifiers;
class Session;

class UploadCommand : public Command {
    Q_OBJECT

public:
    UploadCommand(Session& session, Console& console, const Options& options);
    ~UploadCommand() override;
    void start() override;

private:
    struct Running {
        QByteArray path;
        ProgressReporter::Id progress = 0;
        std::unique_ptr<UploadRun> run;
    };

    void collectFiles();
    void findFolder();
    void startMore();
    void startFile(const QByteArray& path);
    void fileFinished(int number, const Result<UploadRun::Outcome>& outcome);
    void fail(const Error& error, const QByteArray& path = {});
    void tellTrouble(const Error& error, const QString& name);

    Session& session_;
    Console& console_;
    const Options options_;
    ProgressReporter progress_;
    std::unique_ptr<DestinationFolder> folder_;
    QString folderId_;
    std::shared_ptr<GeneratedIdentifiers> identifiers_;
    std::deque<QByteArray> waiting_;
    std::map<int, Running> running_; // by a number of our own
    int lastNumber_ = 0;
    std::pair<QString, qint64> lastTrouble_; // the name and the code that were told last
    bool hasFailed_ = false;
};

} // namespace quenby
