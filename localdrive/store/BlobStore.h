// The contents of files, as files: `blobs/` for what the database knows, `incoming/` for what is arriving.
//
// A content gets into the Drive in this order: the part file is synced and linked into `blobs/`, the folder is synced,
// the transaction that names it commits, and the part file goes. It leaves in the opposite order. So a kill at any
// point leaves at most files that no row names, which sweep() and sweepIncoming() remove at the next start: a row never
// lacks its content, and an upload that was not confirmed still has its bytes.
//
// Threads: any.
#pragma once

#include "core/Result.h"
#include "localdrive/store/IncomingBlob.h"

#include <QSet>
#include <QString>

#include <memory>

namespace quenby::localdrive {

class BlobStore {
public:
    // Creates the two folders below the data folder when they are missing.
    static Result<std::unique_ptr<BlobStore>> open(const QString& dataFolder);

    // Opens the part file of that name, with what it holds, or creates it. The name is chosen by the caller: letters,
    // digits, "-" and "_" only. Two objects for one name at a time would disturb each other.
    Result<std::unique_ptr<IncomingBlob>> incoming(const QString& name);
    // Deletes the part file of that name; nothing happens when there is none.
    void discardIncoming(const QString& name);
    // Deletes every part file whose name is not among these. For the start, before uploads are taken.
    void sweepIncoming(const QSet<QString>& keep);

    // Gives a finished content a second name, its place, without copying it, and returns its id. The content is on disk
    // under that id afterwards. The caller's transaction names the id, and then the part goes by discard(); or the
    // caller gives the id back to remove(), and the part is as before.
    Result<QString> adopt(const StagedBlob& staged);
    // Deletes the part file of a content that was adopted for good.
    void discard(const StagedBlob& staged);
    // Where a content lies, until remove(); once open, a file stays readable after that.
    QString path(const QString& id) const;
    // Deletes contents that no committed row names any more.
    void remove(const QString& id);
    // Deletes every content whose id is not among these; for the start. Returns how many it deleted.
    qint64 sweep(const QSet<QString>& known);

private:
    explicit BlobStore(const QString& dataFolder);
    QString incomingPath(const QString& name) const;

    const QString blobs_;
    const QString incoming_;
};

} // namespace quenby::localdrive
