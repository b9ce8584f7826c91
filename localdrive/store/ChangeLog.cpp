#include "localdrive/store/ChangeLog.h"

namespace quenby::localdrive {
namespace {

void append(Work& work, const QString& fileId, bool deleted) {
    work.session().run(QStringLiteral("DELETE FROM changes WHERE file_id = ?"), {fileId});
    work.session().run(QStringLiteral("INSERT INTO changes(file_id, deleted, modified) VALUES(?, ?, ?)"),
                       {fileId, deleted, work.now()});
}

} // namespace

void recordChange(Work& work, const QString& fileId) {
    work.session().run(QStringLiteral("UPDATE files SET version = version + 1 WHERE id = ?"), {fileId});
    append(work, fileId, false);
}

void recordDeletion(Work& work, const QString& fileId) { append(work, fileId, true); }

qint64 largestChangeId(Session& session) {
    return session.value(QStringLiteral("SELECT seq FROM sqlite_sequence WHERE name = 'changes'")).toLongLong();
}

} // namespace quenby::localdrive
