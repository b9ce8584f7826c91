#include "workspace/uploads/QueueRows.h"

#include "widgets/PlainToolTip.h"
#include "workspace/uploads/QueueText.h"

#include <algorithm>
#include <utility>

namespace quenby {
namespace {

// Bytes count only as far as they are seen.
bool looksLike(const QueueRow& one, const QueueRow& other) {
    return one.name == other.name && one.place == other.place && one.folder == other.folder &&
           one.state == other.state && queuePercent(one) == queuePercent(other) &&
           queueStateText(one) == queueStateText(other);
}

} // namespace

QueueRows::QueueRows(QObject* parent)
    : QAbstractListModel(parent) {}

void QueueRows::append(const QueueRow& row) { append(QList<QueueRow>{row}); }

void QueueRows::append(const QList<QueueRow>& rows) {
    if (rows.isEmpty())
        return;
    const qsizetype first = rows_.size();
    beginInsertRows({}, int(first), int(first + rows.size() - 1));
    rows_.append(rows);
    const qsizetype seats = first + qsizetype(empty_.size());
    for (qsizetype i = 0; i < rows.size(); ++i)
        seats_.insert(rows[i].number, seats + i);
    endInsertRows();
}

void QueueRows::change(const QueueRow& row) {
    const qsizetype at = find(row.number);
    if (at < 0)
        return;
    const QueueRow former = std::exchange(rows_[at], row);
    if (looksLike(former, row))
        return;
    const QModelIndex changed = index(int(at));
    Q_EMIT dataChanged(changed, changed);
}

void QueueRows::remove(qint64 number) {
    const qsizetype at = find(number);
    if (at < 0)
        return;
    beginRemoveRows({}, int(at), int(at));
    rows_.removeAt(at);
    const qsizetype seat = seats_.take(number);
    empty_.insert(std::lower_bound(empty_.begin(), empty_.end(), seat), seat);
    if (qsizetype(empty_.size()) > rows_.size())
        count();
    endRemoveRows();
}

void QueueRows::clear() {
    if (rows_.isEmpty())
        return;
    beginRemoveRows({}, 0, int(rows_.size() - 1));
    rows_.clear();
    count();
    endRemoveRows();
}

void QueueRows::setOrder(const QList<qint64>& numbers) {
    std::vector<qsizetype> order; // the places as they are, in their new order
    order.reserve(std::size_t(rows_.size()));
    std::vector<bool> isTaken(std::size_t(rows_.size()), false);
    const auto take = [&order, &isTaken](qsizetype at) {
        if (at < 0 || isTaken[std::size_t(at)])
            return;
        isTaken[std::size_t(at)] = true;
        order.push_back(at);
    };
    for (const qint64 number : numbers)
        take(find(number));
    for (qsizetype at = 0; at < rows_.size(); ++at)
        take(at);
    if (std::is_sorted(order.begin(), order.end()))
        return;

    Q_EMIT layoutAboutToBeChanged({}, VerticalSortHint);
    QList<QueueRow> rows;
    rows.reserve(rows_.size());
    std::vector<int> newPlaces(order.size());
    for (const qsizetype at : order) {
        newPlaces[std::size_t(at)] = int(rows.size());
        rows.append(std::move(rows_[at]));
    }
    rows_ = std::move(rows);
    count();
    const QModelIndexList former = persistentIndexList(); // what is selected, and what has the focus
    QModelIndexList now;
    now.reserve(former.size());
    for (const QModelIndex& one : former)
        now.append(index(newPlaces[std::size_t(one.row())]));
    changePersistentIndexList(former, now);
    Q_EMIT layoutChanged({}, VerticalSortHint);
}

int QueueRows::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : int(rows_.size()); }

QVariant QueueRows::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const QueueRow& row = rows_[index.row()];
    switch (role) {
    case rowRole:
        return QVariant::fromValue(row);
    case Qt::DisplayRole:
        return row.name;
    case Qt::ToolTipRole:
        return plainToolTip(queueTip(row));
    case Qt::AccessibleTextRole:
        return queueSpokenText(row);
    case Qt::AccessibleDescriptionRole:
        return queueStateText(row);
    default:
        return {};
    }
}

Qt::ItemFlags QueueRows::flags(const QModelIndex& index) const {
    if (!index.isValid())
        return Qt::NoItemFlags; // a view asks it of the list itself
    const Qt::ItemFlags usual = Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemNeverHasChildren;
    return rows_[index.row()].state == QueueRow::State::waiting ? usual | Qt::ItemIsDragEnabled : usual;
}

qsizetype QueueRows::find(qint64 number) const {
    const auto seat = seats_.constFind(number);
    if (seat == seats_.cend())
        return -1;
    return *seat - (std::lower_bound(empty_.begin(), empty_.end(), *seat) - empty_.begin());
}

void QueueRows::count() {
    empty_.clear();
    seats_.clear();
    seats_.reserve(rows_.size());
    for (qsizetype at = 0; at < rows_.size(); ++at)
        seats_.insert(rows_[at].number, at);
}

} // namespace quenby
