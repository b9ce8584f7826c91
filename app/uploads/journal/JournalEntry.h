// One upload as it is written down. A plain value.
#pragma once

#include "app/uploads/transfer/SourceFacts.h"
#include "app/uploads/transfer/UploadSession.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace quenby {

struct JournalEntry {
    // The numbers are part of the file's format.
    enum class State : int {
        waiting = 0, // for its turn, for the network, or for the next run of the program: it was being sent
        paused = 1,  // until the user wants it
        failed = 2,  // see the reason
        changed = 3, // its file is another one than the one that was meant: the user decides
    };

    qint64 number = 0;                 // tells it from all others that are written down
    qint64 place = 0;                  // the order, smallest first
    QString account;                   // whose Drive it is for; any text that tells one account from another
    QByteArray request;                // as lineFromRequest() gives it
    std::optional<SourceFacts> source; // the file when it was queued; absent until it was looked at
    QDateTime queuedAt;
    State state = State::waiting;
    QString reason; // for people; of what failed
    UploadSession session;

    friend bool operator==(const JournalEntry&, const JournalEntry&) = default;
};

} // namespace quenby
