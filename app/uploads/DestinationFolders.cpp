#include "app/uploads/DestinationFolders.h"

#include "driveapi/GTLDriveFile.h"
#include "driveapi/GTLQueryDrive.h"
#include "driveapi/GTLServiceDrive.h"

namespace quenby {

DestinationFolders::DestinationFolders(DriveServiceProvider driveService, std::shared_ptr<TimeSource> timeSource,
                                       std::chrono::milliseconds patience)
    : driveService_(std::move(driveService))
    , timeSource_(std::move(timeSource))
    , patience_(patience) {}

DestinationFolders::~DestinationFolders() { cancelAll(); }

void DestinationFolders::find(const QString& name, QObject* context, DestinationFolder::Found found) {
    const auto [search, isFirst] = searches_.try_emplace(name);
    search->second.waiting.emplace_back(context, std::move(found));
    if (isFirst)
        begin(name, search->second);
}

void DestinationFolders::cancelAll() {
    for (const auto& [name, search] : std::exchange(searches_, {})) {
        if (search.ticket)
            search.ticket->cancelTicket();
    }
}

void DestinationFolders::tryNow() {
    for (const auto& [name, search] : searches_)
        search.folder->tryNow();
}

void DestinationFolders::begin(const QString& name, Search& search) {
    search.service = driveService_();
    if (!search.service)
        return finish(name, nobodySignedIn());
    search.folder = std::make_unique<DestinationFolder>(search.service, timeSource_, name, patience_);
    connect(search.folder.get(), &DestinationFolder::madeFolder, this, [this, name](const QString& identifier) {
        searches_.at(name).isNew = true;
        Q_EMIT madeFolder(identifier);
    });
    search.folder->find(this, [this, name](const Result<QString>& identifier) { found(name, identifier); });
}

void DestinationFolders::found(const QString& name, const Result<QString>& identifier) {
    const auto search = searches_.find(name);
    if (search == searches_.end()) // cancelled on the way
        return;
    if (!identifier || search->second.isNew)
        return finish(name, identifier);
    // What was listed is asked for itself; when it can't be, the list has told enough.
    const auto listed = *identifier;
    search->second.ticket = search->second.service->executeQuery(
        GTLQueryDrive::queryForFilesGetWithFileId(listed), this,
        [this, name, listed](const GTLServiceTicketPtr&, const GTLObjectPtr& object, const MaybeError&) {
            const auto folder = std::dynamic_pointer_cast<GTLDriveFile>(object);
            finish(name, folder && !folder->identifier().isEmpty() ? folder->identifier() : listed);
        });
}

void DestinationFolders::finish(const QString& name, const Result<QString>& identifier) {
    const auto search = searches_.extract(name);
    if (search.empty())
        return;
    for (const auto& waiting : search.mapped().waiting)
        waiting.deliver(identifier);
}

} // namespace quenby
