// One line of the change feed: a change of one file, or the sum of several deletions of unknown files.
#pragma once

#include <QDateTime>
#include <QString>

#include <optional>

namespace quenby {

struct ChangeRecord {
    enum class Status : char { added = 'A', updated = 'U', restored = 'R', trashed = 'T', deleted = 'D' };

    std::optional<Status> status; // absent for files that were there at the first poll
    QString title;
    QString identifier;
    QString mimeType;
    QString iconLink;
    QString thumbnailLink;
    QString resourceKey; // of a file that is shared by link; mostly empty
    QString share;       // address of the sharing page; empty for trashed and deleted files
    QDateTime modifiedDate;
    int count = 0; // above 0 only in the summary of deletions, which has a status, a date and nothing else

    bool isDeletionSummary() const { return count > 0; }
    friend bool operator==(const ChangeRecord&, const ChangeRecord&) = default;
};

} // namespace quenby
