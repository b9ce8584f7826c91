// Files and folders as a ZIP archive that is made while it is sent: neither the archive nor a file is ever in memory as
// a whole.
#pragma once

#include "localdrive/rpc/RpcMethods.h"
#include "localdrive/server/docs/ZipWriter.h"
#include "localdrive/store/DriveStore.h"

#include <QSet>

#include <deque>

namespace quenby::localdrive {

// Threads: one at a time.
class ArchiveStream {
public:
    enum class Step { more, done, failed };

    // `files` as resources of the API. What the caller can't read when its turn comes is left out.
    ArchiveStream(DriveStore& store, const RpcMethods& methods, Caller caller, const QList<QJsonObject>& files);

    // Sends the next piece. Failed when the sink refused it or a content could not be read.
    Step next(const ZipWriter::Sink& sink);

private:
    struct Entry {
        QString id;
        QString mimeType;
        QString path;
        QDateTime modified;
    };

    // Puts the files to the front of what is to come. Names that occur twice in a folder are numbered.
    void enqueue(const QList<QJsonObject>& files, const QString& folderPath);
    bool begin(const Entry& entry);
    bool beginFile(const Entry& entry);
    bool addDocument(const Entry& entry);
    bool addFolder(const Entry& entry);
    bool continueFile();

    DriveStore& store_;
    const RpcMethods& methods_;
    const Caller caller_;
    const ZipWriter::Sink* sink_ = nullptr; // during next()
    ZipWriter writer_;
    std::deque<Entry> pending_;
    qint64 count_ = 0;
    std::unique_ptr<QFile> current_;
};

} // namespace quenby::localdrive
