// One row of the table of files, with the content that its head revision names.
#pragma once

#include "localdrive/store/Session.h"

#include <QString>
#include <QVariant>

#include <optional>

namespace quenby::localdrive {

struct FileRecord {
    qint64 seq = 0; // 0 while not inserted
    QString id;
    QString title;
    QString mimeType;
    QString originalFilename;
    QString description;
    QString folderColor;
    qint64 created = 0; // all dates: milliseconds since 1970
    qint64 modified = 0;
    QString modifiedBy;    // e-mail address
    QVariant modifiedByMe; // a date or NULL, as the next two
    QVariant viewed;
    QVariant sharedWithMe;
    bool trashed = false;           // itself or by way of its folders
    bool explicitlyTrashed = false; // itself
    bool starred = false;
    bool hidden = false;
    bool restricted = false;
    bool writersCanShare = true;
    QString headRevision;
    qint64 quotaUsed = 0; // bytes of the head and of pinned revisions
    qint64 version = 0;
    QString madeWith; // client id of the program that made it

    // Of the head revision; read, never written from here.
    QString blobId; // empty for folders and native documents
    qint64 size = 0;
    QString md5;

    bool isFolder() const;
    bool hasContent() const { return !blobId.isEmpty(); }

    // "SELECT ... FROM files ..." with the columns that fromRow() reads; conditions are to be appended.
    static const QString& select();
    static FileRecord fromRow(const Row& row);

    static std::optional<FileRecord> find(Session& session, const QString& id);
    // Writes every field but `version`, which recordChange() counts.
    void insert(Session& session);
    void update(Session& session) const;

private:
    QVariantList writtenValues() const;
};

} // namespace quenby::localdrive
