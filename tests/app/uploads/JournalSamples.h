// Uploads to write down, each different from the next in every field, for the journal's test and its helper program.
#pragma once

#include "app/uploads/journal/JournalEntry.h"

namespace quenby::testing {

inline JournalEntry sampleEntry(qint64 number) {
    using State = JournalEntry::State;
    const QDateTime begin = QDateTime::fromMSecsSinceEpoch(Q_INT64_C(1700000000123), Qt::UTC);
    JournalEntry entry;
    entry.number = number;
    entry.place = number * 10;
    entry.account = QStringLiteral("someone-%1@example.org").arg(number);
    entry.request = "{\"path\":\"/home/\xff\xfe 'x' \"} " + QByteArray::number(number) + QByteArray("\0end", 4);
    if (number % 5 != 0)
        entry.source = SourceFacts{number << 40, -number};
    if (number % 7 != 0)
        entry.queuedAt = begin.addMSecs(number);
    entry.state = static_cast<State>(number % 4);
    if (number % 3 != 0) {
        entry.reason = QStringLiteral("“№ %1” 🗲").arg(number);
        entry.session = {.identifier = QStringLiteral("id-%1").arg(number),
                         .location = QUrl(QStringLiteral("http://127.0.0.1/upload?upload_id=location-") +
                                          QString::number(number) + QStringLiteral("&a=%2Fb")),
                         .begunAt = begin.addSecs(number),
                         .held = number * 262144};
    }
    return entry;
}

// What journal_writer does over and over, and tells as soon as it is on the disk: it writes so many uploads in one call
// ("w 7": numbers 140 to 159), then removes the second of them ("r 7").
inline constexpr qint64 samplesInACall = 20;

} // namespace quenby::testing
