// The lists of files that people look at: sorted, folders first, and given in pages. The API's lists, which clients
// walk through, are in store/FileLists.h.
#pragma once

#include "localdrive/store/Access.h"
#include "localdrive/store/FileRecord.h"
#include "localdrive/store/Work.h"

#include <QList>
#include <QString>

namespace quenby::localdrive {

enum class Place { folder, recent, shared, trash, search };

struct SortOrder {
    enum class By { name, modified, size };

    By by = By::name;
    bool descending = false;

    // "name", "-modified" and the like, the minus meaning that it descends; other texts are the usual order.
    static SortOrder parse(const QString& text);
    QString toText() const;
};

struct ListRequest {
    Place place = Place::folder;
    QString folderId = {};  // of Place::folder
    bool isInTrash = false; // whether that folder is: then what is in it is, too
    QString text = {};      // of Place::search: all its words must be in the title
    SortOrder order = {};   // Place::recent has its own
    qint64 from = 0;        // how many files stand before the page
    qint64 count = 200;
};

struct ListedFile {
    FileRecord record;
    Role role = Role::none; // the caller's
    bool isShared = false;
    QString owner; // name; empty when the caller is
};

struct FileList {
    QList<ListedFile> files;
    bool hasMore = false;
};

struct NamedFolder {
    QString id;
    QString title;
};

// Threads: as Work. Failures are the work's session's.
class FileBrowser {
public:
    explicit FileBrowser(Work& work)
        : work_(work) {}

    FileList list(const ListRequest& request);
    // With what a list tells besides the record.
    ListedFile listed(const FileRecord& record);
    // The folders down to this one, from the root folder or the uppermost that the caller can see. The root folder's
    // title is the Drive's.
    QList<NamedFolder> way(const QString& folderId);
    // The largest of the caller's files.
    QList<FileRecord> largest(int count);

private:
    QList<FileRecord> select(const QString& condition, const QVariantList& values, const QString& order, qint64 limit,
                             qint64 from);

    Work& work_;
};

} // namespace quenby::localdrive
