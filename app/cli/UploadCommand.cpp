#include "app/cli/UploadCommand.h"

#include "app/cli/Console.h"
#include "app/cli/DisplayText.h"
#include "app/cli/Folders.h"
#include "app/cli/Session.h"
#include "app/uploads/transfer/DestinationFolder.h"
#include "app/uploads/transfer/GeneratedIdentifiers.h"
#include "core/ByteCountText.h"

namespace quenby {
namespace {

constexpr size_t filesAtOnce = 3;

// The fetchers give up soon: an upload has patience of its own, and can be told to try at once.
constexpr double maxRetryInterval = 4; // seconds

QJsonObject uploadObject(const QByteArray& path, const UploadRun::Outcome& outcome) {
    return {{QStringLiteral("path"), jsonPath(path)},
            {QStringLiteral("id"), outcome.identifier},
            {QStringLiteral("title"), outcome.title},
            {QStringLiteral("bytes"), outcome.bytes},
            {QStringLiteral("md5"), outcome.md5}};
}

} // namespace

UploadCommand::UploadCommand(Session& session, Console& console, const Options& options)
    : session_(session)
    , console_(console)
    , options_(options)
    , progress_(console, session.timeSource(), QStringLiteral("Uploading")) {
    connect(&session_, &Session::revived, this, [this] {
        for (const auto& [number, file] : running_)
            file.run->tryNow();
    });
}

UploadCommand::~UploadCommand() = default;

void UploadCommand::start() {
    session_.driveService()->ticketSettings().maxRetryInterval = maxRetryInterval;
    if (options_.chunkSize > 0)
        session_.driveService()->settings().serviceUploadChunkSize = options_.chunkSize;
    identifiers_ = std::make_shared<GeneratedIdentifiers>(session_.driveService());
    collectFiles();
    if (options_.folder && !waiting_.empty())
        findFolder();
    else
        startMore();
}

void UploadCommand::collectFiles() {
    for (const QByteArray& path : options_.files) {
        if (!isFolder(path)) {
            waiting_.push_back(path);
            continue;
        }
        const auto listing = filesInFolder(path);
        if (!listing) {
            fail(listing.error(), path);
            continue;
        }
        waiting_.insert(waiting_.end(), listing->files.begin(), listing->files.end());
        if (listing->skipped > 0)
            console_.remark(printablePath(path) + QStringLiteral(": left out what is no regular file: ") +
                            QString::number(listing->skipped));
    }
    if (waiting_.empty() && !hasFailed_)
        console_.remark(QStringLiteral("there is nothing to upload"));
    qint64 bytes = 0;
    for (const QByteArray& path : waiting_)
        bytes += sizeOnDisk(path);
    progress_.setExpected(static_cast<int>(waiting_.size()), bytes);
}

void UploadCommand::findFolder() {
    folder_ = std::make_unique<DestinationFolder>(session_.driveService(), session_.timeSource(), *options_.folder,
                                                  options_.patience);
    connect(folder_.get(), &DestinationFolder::troubled, this,
            [this](const Error& error) { tellTrouble(error, *options_.folder); });
    folder_->find(this, [this](const Result<QString>& identifier) {
        if (!identifier) {
            waiting_.clear();
            fail(identifier.error());
        } else {
            folderId_ = *identifier;
        }
        startMore();
    });
}

void UploadCommand::startMore() {
    while (running_.size() < filesAtOnce && !waiting_.empty()) {
        const QByteArray path = waiting_.front();
        waiting_.pop_front();
        startFile(path);
    }
    if (running_.empty())
        Q_EMIT finished(hasFailed_ || console_.isOutputLost() ? exitCode::failed : exitCode::done);
}

void UploadCommand::startFile(const QByteArray& path) {
    auto source = SourceFile::open(path);
    if (!source)
        return fail(source.error(), path);
    const QString name = printablePath(lastComponent(path));
    const int number = ++lastNumber_;
    Running& file = running_[number];
    file.path = path;
    file.progress = progress_.begin(name, source->size());
    UploadRun::Settings settings{folderId_, options_.verify, options_.patience};
    settings.identifiers = identifiers_;
    file.run = std::make_unique<UploadRun>(session_.driveService(), session_.timeSource(), std::move(*source),
                                           std::move(settings));
    connect(file.run.get(), &UploadRun::progressed, this,
            [this, id = file.progress](qint64 sent) { progress_.update(id, sent); });
    connect(file.run.get(), &UploadRun::troubled, this, [this, name](const Error& error) { tellTrouble(error, name); });
    file.run->start(this, [this, number](const Result<UploadRun::Outcome>& outcome) { fileFinished(number, outcome); });
}

void UploadCommand::fileFinished(int number, const Result<UploadRun::Outcome>& outcome) {
    const Running file = std::move(running_.extract(number).mapped());
    progress_.end(file.progress);
    if (outcome)
        console_.result(printablePath(file.path) + QStringLiteral(": uploaded, ") + byteCountText(outcome->bytes) +
                            QStringLiteral(", id ") + outcome->identifier,
                        uploadObject(file.path, *outcome));
    else
        fail(outcome.error(), file.path);
    startMore();
}

void UploadCommand::fail(const Error& error, const QByteArray& path) {
    hasFailed_ = true;
    console_.error(error, path);
}

void UploadCommand::tellTrouble(const Error& error, const QString& name) {
    const std::pair trouble(name, error.code());
    if (trouble != lastTrouble_) // not at every try
        console_.remark(name + QStringLiteral(": ") + error.description() + QStringLiteral("; trying again"));
    lastTrouble_ = trouble;
    session_.revive();
}

} // namespace quenby
