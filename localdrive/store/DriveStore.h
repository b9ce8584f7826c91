// The Drive on disk: the database, the contents and the settings that go with them.
//
// The API's methods are in rpc/RpcMethods.h and reach the store through Work (store/Work.h). What is here is what the
// HTTP side needs besides: the parts, and the content of a file.
//
// Threads: any; see Database for what must have ended before a store is destroyed.
#pragma once

#include "core/Result.h"
#include "localdrive/store/Account.h"
#include "localdrive/store/BlobStore.h"
#include "localdrive/store/Database.h"
#include "localdrive/store/FolderLock.h"

#include <QFile>

#include <atomic>
#include <memory>

namespace quenby::localdrive {

struct StoreSettings {
    QString folder;                                           // the data folder; created when missing
    Account account = Account::standard();                    // owns the root folder of a new Drive
    qint64 quotaBytesTotal = qint64{15} * 1024 * 1024 * 1024; // above it, contents are refused
};

// A file's content, open for reading: it stays readable when the file is deleted meanwhile.
struct FileContent {
    std::unique_ptr<QFile> file; // at its start
    QString path;                // the same file, for whoever reads it by name
    qint64 size = 0;
    QString md5;
    QString title;
    QString mimeType;
    QDateTime modified;
};

class DriveStore {
public:
    // Opens or creates the Drive in the folder, brings its tables up to date and removes contents that a killed
    // process left unnamed. One process at a time may have a folder open: a second one is refused.
    static Result<std::unique_ptr<DriveStore>> open(StoreSettings settings);
    DriveStore(const DriveStore&) = delete;
    DriveStore& operator=(const DriveStore&) = delete;

    const StoreSettings& settings() const { return settings_; }
    const QString& rootFolderId() const { return rootFolderId_; }
    // Signs page tokens; random, and the same for the life of the Drive.
    const QByteArray& pageTokenKey() const { return pageTokenKey_; }

    // Whether changes have numeric ids. A Drive may be told to have given them up; page tokens then say where a list of
    // changes goes on. They are numbered all the same, so that this can be taken back.
    bool offersChangeIds() const { return offersChangeIds_; }
    void offerChangeIds(bool offered) { offersChangeIds_ = offered; }

    Database& database() { return *database_; }
    BlobStore& blobs() { return *blobs_; }

    // The content of a file, or of one of its revisions when an id is given. Errors as in the API: 404 "notFound" when
    // there is no such file or the user can't see it, 400 "fileNotDownloadable" for folders and native documents.
    Result<FileContent> content(const Caller& caller, const QString& fileId, const QString& revisionId = {});

private:
    Result<FileContent> findContent(const Caller& caller, const QString& fileId, const QString& revisionId);
    DriveStore(StoreSettings settings, std::unique_ptr<FolderLock> lock, std::unique_ptr<Database> database,
               std::unique_ptr<BlobStore> blobs);
    Result<void> prepare();
    Result<void> sweepBlobs();

    const StoreSettings settings_;
    const std::unique_ptr<FolderLock> lock_; // given back last
    std::unique_ptr<Database> database_;
    std::unique_ptr<BlobStore> blobs_;
    QString rootFolderId_;
    QByteArray pageTokenKey_;
    std::atomic<bool> offersChangeIds_ = true;
};

} // namespace quenby::localdrive
