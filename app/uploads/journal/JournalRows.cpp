#include "app/uploads/journal/JournalRows.h"

#include <QSqlQuery>
#include <QVariant>

namespace quenby {
namespace {

const QVariant unknown(QMetaType::fromType<qlonglong>()); // NULL

// A null text or blob would become NULL.
QVariant valueOf(const QString& text) { return text.isNull() ? QVariant(QLatin1String("")) : QVariant(text); }
QVariant valueOf(const QByteArray& bytes) { return bytes.isNull() ? QVariant(QByteArray("")) : QVariant(bytes); }
QVariant valueOf(const QDateTime& time) { return time.isValid() ? QVariant(time.toMSecsSinceEpoch()) : unknown; }

QDateTime timeOf(const QVariant& value) {
    return value.isNull() ? QDateTime() : QDateTime::fromMSecsSinceEpoch(value.toLongLong(), Qt::UTC);
}

// What this version never wrote is left to the user.
JournalEntry::State stateOf(int number) {
    using State = JournalEntry::State;
    const auto state = static_cast<State>(number);
    return state >= State::waiting && state <= State::changed ? state : State::paused;
}

} // namespace

void bindEntry(QSqlQuery& query, const JournalEntry& entry) {
    int at = 0;
    query.bindValue(at++, entry.number);
    query.bindValue(at++, entry.place);
    query.bindValue(at++, valueOf(entry.account));
    query.bindValue(at++, valueOf(entry.request));
    query.bindValue(at++, entry.source ? QVariant(entry.source->size) : unknown);
    query.bindValue(at++, entry.source ? QVariant(entry.source->modified) : unknown);
    query.bindValue(at++, valueOf(entry.queuedAt));
    query.bindValue(at++, static_cast<int>(entry.state));
    query.bindValue(at++, valueOf(entry.reason));
    query.bindValue(at++, valueOf(entry.session.identifier));
    query.bindValue(at++, valueOf(entry.session.location.toEncoded()));
    query.bindValue(at++, valueOf(entry.session.begunAt));
    query.bindValue(at++, entry.session.held);
}

JournalEntry entryOfRow(const QSqlQuery& query) {
    int at = 0;
    JournalEntry entry;
    entry.number = query.value(at++).toLongLong();
    entry.place = query.value(at++).toLongLong();
    entry.account = query.value(at++).toString();
    entry.request = query.value(at++).toByteArray();
    const QVariant size = query.value(at++);
    const QVariant modified = query.value(at++);
    if (!size.isNull())
        entry.source = SourceFacts{size.toLongLong(), modified.toLongLong()};
    entry.queuedAt = timeOf(query.value(at++));
    entry.state = stateOf(query.value(at++).toInt());
    entry.reason = query.value(at++).toString();
    entry.session.identifier = query.value(at++).toString();
    entry.session.location = QUrl::fromEncoded(query.value(at++).toByteArray());
    entry.session.begunAt = timeOf(query.value(at++));
    entry.session.held = query.value(at++).toLongLong();
    return entry;
}

} // namespace quenby
