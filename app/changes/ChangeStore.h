// What is known of the latest changes, and the rules by which one poll's answer changes it. Values and pure functions:
// no network, no clock.
#pragma once

#include "core/ChangeRecord.h"

#include <QDateTime>
#include <QList>
#include <QSet>
#include <QString>

#include <optional>

namespace quenby {

inline constexpr qsizetype mostRecords = 16; // of the list
inline constexpr qsizetype mostRecordsOfFirstPoll = 15;

struct ChangeStore {
    QList<ChangeRecord> DriveChangeInfoAPI;    // newest first, at most 16, at most one summary of deletions
    QSet<QString> trashFileList;               // identifiers of files known to be in the trash
    qint64 maxFileChangeId = 0;                // of the last answer; 0: there is none
    QString startPageToken;                    // where the next poll begins, when changes have no numbers
    bool isFirstPollCutOff = false;            // the token goes on with a first poll's answer
    bool areNumbersRefused = false;            // as the place to begin at: by the service
    QDateTime dateCheckList;                   // when the poll before finished; what is newer is notified
    QSet<QString> listNotificationDontDisplay; // identifiers of files that this process uploaded: each once

    // Nobody knows where the answer before ended.
    bool isNextPollFirst() const { return maxFileChangeId == 0 && startPageToken.isEmpty(); }
};

// One change of the answer, as far as it is looked at. Any of it may be missing: a text is empty then, a date invalid.
struct FeedChange {
    struct File {
        QString identifier;
        QString title;
        QString mimeType;
        QString iconLink;
        QString thumbnailLink;
        QString resourceKey;
        QDateTime createdDate;
        QDateTime modifiedDate;
        bool isTrashed = false;
    };
    QString fileId;
    QDateTime modificationDate;
    std::optional<File> file; // absent when the file was deleted for good
};

struct FeedAnswer {
    QList<FeedChange> items;    // as the server listed them: of two changes of one moment, the later one follows
    qint64 largestChangeId = 0; // absent where changes have no numbers
    QString nextPageToken = {}; // of what follows the last page
    bool isCutOff = false;      // there were more pages than are followed
};

struct FeedSurroundings {
    QDateTime now;
    QString strSHARE;                // address of the sharing page up to the identifier; a secret
    bool notificationDisplay = true; // the setting
};

struct ChangeNotice {
    ChangeRecord record; // its status says what is told of it
    QString text;        // for example "Report.pdf added"

    friend bool operator==(const ChangeNotice&, const ChangeNotice&) = default;
};

struct PolledStore {
    ChangeStore store;
    QList<ChangeNotice> notices; // newest first
    bool hasNews = false;        // whether the answer had anything that the list shows differently now
};

// The store after a poll. No answer (the poll failed) is taken as one without items, and the next poll is a first one.
//
// A notice is made for every record that is newer than dateCheckList, but never twice for the same change, whatever the
// clock does. What a first poll finds after one that failed is told like any other change: by what happened since.
PolledStore pollCompleted(ChangeStore store, const std::optional<FeedAnswer>& answer,
                          const FeedSurroundings& surroundings);

} // namespace quenby
