#include "localdrive/store/Schema.h"

namespace quenby::localdrive {

QStringList driveSchema() {
    return {
        // Names and keys of the whole Drive.
        QStringLiteral("CREATE TABLE meta(name TEXT PRIMARY KEY, value) WITHOUT ROWID"),

        QStringLiteral("CREATE TABLE blobs(id TEXT PRIMARY KEY, size INTEGER NOT NULL, md5 TEXT NOT NULL) "
                       "WITHOUT ROWID"),

        // Everybody who wrote something here. Elsewhere people are named by their e-mail address.
        QStringLiteral("CREATE TABLE users(email TEXT PRIMARY KEY, name TEXT NOT NULL) WITHOUT ROWID"),

        // `trashed` is what holds, with the folders above taken into account; `explicitly_trashed` is what was asked.
        // `seq` only grows; lists are ordered by it.
        QStringLiteral("CREATE TABLE files(seq INTEGER PRIMARY KEY AUTOINCREMENT, id TEXT NOT NULL UNIQUE, "
                       "title TEXT NOT NULL, title_key TEXT NOT NULL, mime_type TEXT NOT NULL, "
                       "original_filename TEXT NOT NULL, description TEXT NOT NULL DEFAULT '', "
                       "folder_color TEXT NOT NULL DEFAULT '', created INTEGER NOT NULL, modified INTEGER NOT NULL, "
                       "modified_by TEXT NOT NULL, modified_by_me INTEGER, viewed INTEGER, shared_with_me INTEGER, "
                       "trashed INTEGER NOT NULL DEFAULT 0, explicitly_trashed INTEGER NOT NULL DEFAULT 0, "
                       "starred INTEGER NOT NULL DEFAULT 0, hidden INTEGER NOT NULL DEFAULT 0, "
                       "restricted INTEGER NOT NULL DEFAULT 0, writers_can_share INTEGER NOT NULL DEFAULT 1, "
                       "head_revision TEXT NOT NULL DEFAULT '', quota_used INTEGER NOT NULL DEFAULT 0, "
                       "version INTEGER NOT NULL DEFAULT 0)"),
        QStringLiteral("CREATE INDEX files_by_title ON files(title)"),
        QStringLiteral("CREATE INDEX files_by_mime_type ON files(mime_type)"),
        QStringLiteral("CREATE INDEX files_by_modified ON files(modified)"),
        QStringLiteral("CREATE INDEX files_by_trash ON files(trashed, quota_used)"),

        QStringLiteral("CREATE TABLE parents(file_id TEXT NOT NULL REFERENCES files(id) ON DELETE CASCADE, "
                       "parent_id TEXT NOT NULL REFERENCES files(id) ON DELETE CASCADE, "
                       "PRIMARY KEY(file_id, parent_id)) WITHOUT ROWID"),
        QStringLiteral("CREATE INDEX parents_by_parent ON parents(parent_id)"),

        // The latest change of each file. Ids are never used again, so the largest one ever given only grows.
        QStringLiteral("CREATE TABLE changes(id INTEGER PRIMARY KEY AUTOINCREMENT, file_id TEXT NOT NULL UNIQUE, "
                       "deleted INTEGER NOT NULL, modified INTEGER NOT NULL)"),

        QStringLiteral("CREATE TABLE revisions(seq INTEGER PRIMARY KEY AUTOINCREMENT, id TEXT NOT NULL UNIQUE, "
                       "file_id TEXT NOT NULL REFERENCES files(id) ON DELETE CASCADE, "
                       "blob_id TEXT REFERENCES blobs(id), mime_type TEXT NOT NULL, "
                       "original_filename TEXT NOT NULL, modified INTEGER NOT NULL, modified_by TEXT NOT NULL, "
                       "pinned INTEGER NOT NULL DEFAULT 0, published INTEGER NOT NULL DEFAULT 0, "
                       "publish_auto INTEGER NOT NULL DEFAULT 0, published_outside INTEGER NOT NULL DEFAULT 0)"),
        QStringLiteral("CREATE INDEX revisions_by_file ON revisions(file_id, seq)"),
        QStringLiteral("CREATE INDEX revisions_by_blob ON revisions(blob_id)"),

        QStringLiteral("CREATE TABLE permissions(file_id TEXT NOT NULL REFERENCES files(id) ON DELETE CASCADE, "
                       "id TEXT NOT NULL, type TEXT NOT NULL, role INTEGER NOT NULL, value TEXT NOT NULL, "
                       "with_link INTEGER NOT NULL, "
                       "PRIMARY KEY(file_id, id)) WITHOUT ROWID"),

        QStringLiteral("CREATE TABLE properties(file_id TEXT NOT NULL REFERENCES files(id) ON DELETE CASCADE, "
                       "key TEXT NOT NULL, visibility TEXT NOT NULL, value TEXT NOT NULL, "
                       "PRIMARY KEY(file_id, key, visibility)) WITHOUT ROWID"),

        QStringLiteral("CREATE TABLE comments(seq INTEGER PRIMARY KEY AUTOINCREMENT, id TEXT NOT NULL UNIQUE, "
                       "file_id TEXT NOT NULL REFERENCES files(id) ON DELETE CASCADE, author TEXT NOT NULL, "
                       "content TEXT NOT NULL, anchor TEXT NOT NULL, context TEXT NOT NULL, status TEXT NOT NULL, "
                       "created INTEGER NOT NULL, "
                       "modified INTEGER NOT NULL, deleted INTEGER NOT NULL DEFAULT 0)"),
        QStringLiteral("CREATE INDEX comments_by_file ON comments(file_id, seq)"),
        QStringLiteral("CREATE TABLE replies(seq INTEGER PRIMARY KEY AUTOINCREMENT, id TEXT NOT NULL UNIQUE, "
                       "comment_id TEXT NOT NULL REFERENCES comments(id) ON DELETE CASCADE, "
                       "author TEXT NOT NULL, content TEXT NOT NULL, verb TEXT NOT NULL, created INTEGER NOT NULL, "
                       "modified INTEGER NOT NULL, "
                       "deleted INTEGER NOT NULL DEFAULT 0)"),
        QStringLiteral("CREATE INDEX replies_by_comment ON replies(comment_id, seq)"),

        QStringLiteral("CREATE TABLE channels(id TEXT NOT NULL, resource_id TEXT NOT NULL, "
                       "resource_uri TEXT NOT NULL, type TEXT NOT NULL, address TEXT NOT NULL, token TEXT NOT NULL, "
                       "expiration INTEGER NOT NULL, PRIMARY KEY(id, resource_id)) WITHOUT ROWID"),

        QStringLiteral("CREATE TABLE realtime(file_id TEXT PRIMARY KEY REFERENCES files(id) ON DELETE CASCADE, "
                       "revision INTEGER NOT NULL, document TEXT NOT NULL)"),

        // What native documents hold, as JSON; a row from the first time on that one is written to.
        QStringLiteral("CREATE TABLE documents(file_id TEXT PRIMARY KEY REFERENCES files(id) ON DELETE CASCADE, "
                       "revision INTEGER NOT NULL, content TEXT NOT NULL)"),

        // The client id of the program that made the file; empty for the Drive's own pages.
        QStringLiteral("ALTER TABLE files ADD COLUMN made_with TEXT NOT NULL DEFAULT ''"),
    };
}

} // namespace quenby::localdrive
