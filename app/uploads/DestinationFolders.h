// The folders that uploads go into. Uploads that ask for the same folder at the same time share one search, so that a
// folder which is missing is made once. Threads: the main thread. Destroying it cancels.
#pragma once

#include "app/uploads/DriveServiceProvider.h"
#include "app/uploads/transfer/DestinationFolder.h"

#include <map>
#include <vector>

namespace quenby {

class DestinationFolders : public QObject {
    Q_OBJECT

public:
    DestinationFolders(DriveServiceProvider driveService, std::shared_ptr<TimeSource> timeSource,
                       std::chrono::milliseconds patience);
    ~DestinationFolders() override;

    // The identifier of the first folder at the top of the Drive that has exactly this title; made when there is none.
    void find(const QString& name, QObject* context, DestinationFolder::Found found);
    void cancelAll();
    // Ends all pauses after trouble.
    void tryNow();

Q_SIGNALS:
    // Comes before find() answers.
    void madeFolder(const QString& identifier);

private:
    struct Search {
        std::unique_ptr<DestinationFolder> folder;
        bool isNew = false;
        std::shared_ptr<GTLServiceDrive> service;
        GTLServiceTicketPtr ticket;
        std::vector<CompletionGate<Result<QString>>> waiting;
    };

    void begin(const QString& name, Search& search);
    void found(const QString& name, const Result<QString>& identifier);
    void finish(const QString& name, const Result<QString>& identifier);

    const DriveServiceProvider driveService_;
    const std::shared_ptr<TimeSource> timeSource_;
    const std::chrono::milliseconds patience_;
    std::map<QString, Search> searches_; // under way, by the folder's title
};

} // namespace quenby
