// Where every way of putting a file into the Drive ends: what the user chose, dropped, captured or recorded. Files wait
// for their turn, go up, and their end is told: by a notification, or by an alert.
//
// Paths are bytes; names need not be text. Threads: the main thread; nothing here blocks it, whatever the files are.
// Uploads are independent: one that fails stops no other. Destroying the pipeline interrupts them all.
#pragma once

#include "app/uploads/CaptureLinks.h"
#include "app/uploads/DestinationFolders.h"
#include "app/uploads/FailureAlerts.h"
#include "app/uploads/ProgressSlot.h"
#include "app/uploads/SuccessNotices.h"
#include "app/uploads/UploadQueue.h"

#include <QList>
#include <QObject>

#include <memory>

class QWidget;

namespace quenby {

class Defaults;
class FilePanels;

// What the pipeline works with; everything referred to outlives it.
struct UploadServices {
    DriveServiceProvider driveService;
    std::shared_ptr<TimeSource> timeSource;
    Defaults& defaults;
    Notifications& notifications;
    Alerts& alerts;
    FilePanels& filePanels;
    Pasteboard& pasteboard;
    Opener& opener;
};

class UploadPipeline : public QObject {
    Q_OBJECT

public:
    UploadPipeline(const UploadServices& services, WindowProvider windowForSheets, UploadLimits limits = {},
                   QObject* parent = nullptr);
    ~UploadPipeline() override;

    // --- Uploading ------------------------------------------------------------------------------------------------

    // Lets the user choose files in a panel of the window, and uploads them.
    void SelectAndUploadFile(QWidget* window);
    void SelectAndUploadFileAndShare(QWidget* window);

    // Plain files, to the top of the Drive.
    void UploadFilesToServer(const QList<QByteArray>& paths);
    // Into the folder of this name at the top of the Drive, which is made when there is none. When the folder can be
    // neither found nor made, this ends silently: only the log tells.
    void uploadInGoogleDriveIn(const QString& folderName, const QByteArray& path);
    // The same for many. Those that are gone when their turn has come are left out silently.
    void uploadInGoogleDriveIn(const QString& folderName, const QList<QByteArray>& paths);
    // The query is an insert such as insertQueryForPath() makes (transfer/InsertQuery.h); whatever its media is, the
    // file at the path is sent, opened when its turn has come.
    void uploadUsingThisQuery(const std::shared_ptr<GTLQueryDrive>& query, const QByteArray& path, bool needToShare,
                              const QString& typeUpload, bool removeSource);

    // The shared searches for destination folders, for uploads that are prepared elsewhere.
    DestinationFolders& destinationFolders() { return folders_; }

    // --- What goes on ---------------------------------------------------------------------------------------------

    // Of the one upload whose progress is shown: null when there is none.
    const QByteArray& uploadStatusPath() const { return slot_.path(); }
    int uploadStatusPer() const { return slot_.percent(); } // percent

    // For whoever lists the uploads.
    const UploadQueue& queue() const { return queue_; }
    UploadQueue& queue() { return queue_; }
    // What is not done yet, of the account.
    QList<UploadRequest> remaining() const { return queue_.remaining(); }
    // At sign-out: everything of the account that waits or runs is forgotten, and no source is removed.
    void cancelEverything();
    // From now on everything rests and waits for its account.
    void hold();
    // Another instance of the program goes on with what is left.
    void release();
    // Ends all pauses after trouble: the network is there again.
    void tryNow();

    // --- Telling --------------------------------------------------------------------------------------------------

    // With a link, the notification lets the user open or copy it.
    void notificationForSuccess(const QString& title, const QString& info, const QString& link = {});
    // Never more than one at a time; the next one tells of all that came meanwhile. The detail is one more line.
    void giveErrorAlert(const QString& title, const QString& info, const QString& detail = {});

Q_SIGNALS:
    // uploadStatusPath or uploadStatusPer has another value.
    void uploadStatusChanged();
    // Progress is shown of another upload than before: the status item should follow at once.
    void statusItemRefreshWanted();
    // This program put the file there: its change is no news.
    void uploaded(const QString& identifier);
    void shareRequested(const QString& identifier, const QString& originalFilename);
    // A destination folder was made. Its identifier takes the place of the top folder's, RootFolderId.
    void RootFolderIdChanged(const QString& identifier);

private:
    void selectAndUpload(QWidget* window, const QString& title, bool needToShare);
    void started(const UploadRequest& request);
    void progressed(const UploadRequest& request, qint64 sent, qint64 total);
    void finished(const UploadRequest& request, const Result<UploadRun::Outcome>& outcome);
    void succeeded(const UploadRequest& request, const UploadRun::Outcome& outcome);
    void leftOut(const UploadRequest& request, const Error& error);
    void sourceChanged(const UploadRequest& request);
    void forgetProgress();

    Defaults& defaults_;
    FilePanels& filePanels_;
    DestinationFolders folders_;
    UploadQueue queue_;
    SuccessNotices notices_;
    FailureAlerts failures_;
    CaptureLinks captureLinks_;
    ProgressSlot slot_;
};

} // namespace quenby
