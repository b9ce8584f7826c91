// How uploads are written down: one row each, in one table of a SQLite database.
//
// Times are milliseconds since 1970 in UTC; what is not known is NULL. Texts that are bytes are blobs: a path in a
// request need not be UTF-8.
#pragma once

#include "app/uploads/journal/JournalEntry.h"

class QSqlQuery;

namespace quenby {

// The file's PRAGMA user_version. 0: a file that holds nothing yet.
inline constexpr int journalFormat = 1;

namespace journalSQL {
inline const QString makeTable = QStringLiteral(
    "CREATE TABLE uploads(number INTEGER PRIMARY KEY, place INTEGER NOT NULL, account TEXT NOT NULL, "
    "request BLOB NOT NULL, source_size INTEGER, source_modified INTEGER, queued_at INTEGER, state INTEGER NOT NULL, "
    "reason TEXT NOT NULL, identifier TEXT NOT NULL, location BLOB NOT NULL, begun_at INTEGER, held INTEGER NOT NULL)");
inline const QString write =
    QStringLiteral("INSERT OR REPLACE INTO uploads(number, place, account, request, source_size, source_modified, "
                   "queued_at, state, reason, identifier, location, begun_at, held) "
                   "VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
inline const QString remove = QStringLiteral("DELETE FROM uploads WHERE number = ?");
inline const QString read =
    QStringLiteral("SELECT number, place, account, request, source_size, source_modified, queued_at, state, reason, "
                   "identifier, location, begun_at, held FROM uploads ORDER BY place, number");
} // namespace journalSQL

// For journalSQL::write.
void bindEntry(QSqlQuery& query, const JournalEntry& entry);
// The row that journalSQL::read stands at.
JournalEntry entryOfRow(const QSqlQuery& query);

} // namespace quenby
