// The upload queue as its window lists it: what runs, what waits, what ended. Whoever uploads fills it in.
//
// Threads: the main thread. A change is told for its row alone, and not at all when nothing that is shown differs.
#pragma once

#include <QAbstractListModel>
#include <QHash>
#include <QList>
#include <QString>

#include <chrono>
#include <optional>
#include <vector>

namespace quenby {

struct QueueRow {
    enum class State {
        waiting, // for its turn
        running,
        resting, // goes on by itself; the message says when or why: no network, trouble, a metered connection
        paused,  // by the user
        changed, // the file is another one than the one that was queued; the user decides
        failed,  // the message says why
        done,
    };

    qint64 number = 0; // tells it from the others
    QString name;      // of the file, as people may read it
    QString place;     // its folder on this computer, likewise
    QString folder;    // the Drive's folder that it goes into; empty: the top
    State state = State::waiting;
    qint64 sent = 0;           // bytes
    qint64 total = -1;         // bytes; -1: not known yet
    qint64 bytesPerSecond = 0; // of late; 0: not known
    std::optional<std::chrono::seconds> timeLeft;
    QString message;

    friend bool operator==(const QueueRow&, const QueueRow&) = default;
};

} // namespace quenby

Q_DECLARE_METATYPE(quenby::QueueRow)
Q_DECLARE_TYPEINFO(quenby::QueueRow, Q_RELOCATABLE_TYPE); // long lists move by their bytes

namespace quenby {

class QueueRows : public QAbstractListModel {
    Q_OBJECT

public:
    enum Role { rowRole = Qt::UserRole }; // the QueueRow, as a variant

    explicit QueueRows(QObject* parent = nullptr);

    const QList<QueueRow>& rows() const { return rows_; }
    void append(const QueueRow& row);
    void append(const QList<QueueRow>& rows); // one step for views, however many
    // The row with the same number becomes this; nothing happens when there is none.
    void change(const QueueRow& row);
    void remove(qint64 number);
    void clear();
    // The rows of these numbers, in this order, stand first; the others follow as they were.
    void setOrder(const QList<qint64>& numbers);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    // Those that wait can be dragged.
    Qt::ItemFlags flags(const QModelIndex& index) const override;

private:
    qsizetype find(qint64 number) const; // -1: there is none
    void count();

    QList<QueueRow> rows_;
    // Every row has a seat: the place it had when all were counted last. What stands before it now are the seats
    // before its own, less those that are empty; so nothing is renumbered when a row goes.
    QHash<qint64, qsizetype> seats_; // by the row's number
    std::vector<qsizetype> empty_;   // in ascending order
};

} // namespace quenby
