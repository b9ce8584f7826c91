// A local file that is about to be sent: opened by its very bytes, and watched for changes while it is.
#pragma once

#include "app/uploads/transfer/SourceFacts.h"
#include "core/Result.h"

#include <QByteArray>
#include <QFile>
#include <QList>

#include <memory>

namespace quenby {

// The path's last component; bytes that are not UTF-8 become U+FFFD, so that the replacement is seen.
QString titleOfPath(const QByteArray& path);

class SourceFile {
public:
    // Fails with one clear error for whatever is no readable regular file; never waits for a pipe.
    static Result<SourceFile> open(const QByteArray& path);

    const QByteArray& path() const { return path_; }
    QString title() const { return titleOfPath(path_); }
    const SourceFacts& facts() const { return facts_; } // of the moment it was opened
    qint64 size() const { return facts_.size; }
    const std::shared_ptr<QFile>& handle() const { return handle_; }

    // Whether size and date of modification are still those of the moment it was opened.
    bool isUnchanged() const;

private:
    QByteArray path_;
    std::shared_ptr<QFile> handle_;
    SourceFacts facts_;
};

// The regular files in a folder in the order of their names, as paths; of other things in it only the number.
struct FolderListing {
    QList<QByteArray> files;
    int skipped = 0;
};
Result<FolderListing> filesInFolder(const QByteArray& path);

bool isFolder(const QByteArray& path);

// The size as the folder tells it, 0 when it tells none. For showing progress, not for sending.
qint64 sizeOnDisk(const QByteArray& path);

} // namespace quenby
