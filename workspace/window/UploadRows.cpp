#include "workspace/window/UploadRows.h"

#include "widgets/PlainToolTip.h"

#include <algorithm>

namespace quenby {

void UploadRows::append(const UploadRow& row) {
    const int end = int(rows_.size());
    beginInsertRows({}, end, end);
    rows_.append(row);
    endInsertRows();
    Q_EMIT countChanged();
}

void UploadRows::change(const UploadRow& row) {
    const qsizetype at = find(row.identifier);
    if (at < 0)
        return;
    rows_[at] = row;
    const QModelIndex changed = index(int(at));
    Q_EMIT dataChanged(changed, changed);
}

void UploadRows::remove(qint64 identifier) {
    const qsizetype at = find(identifier);
    if (at < 0)
        return;
    beginRemoveRows({}, int(at), int(at));
    rows_.removeAt(at);
    endRemoveRows();
    Q_EMIT countChanged();
}

void UploadRows::setWaiting(int count) {
    if (waiting_ == count)
        return;
    waiting_ = count;
    Q_EMIT countChanged();
}

int UploadRows::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : int(rows_.size()); }

QVariant UploadRows::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const UploadRow& row = rows_[index.row()];
    switch (role) {
    case Qt::DisplayRole:
        return row.name;
    case Qt::ToolTipRole: // what a narrow window cuts
        return plainToolTip(row.detail.isEmpty() ? row.name : QString(row.name + QLatin1Char('\n') + row.detail));
    case Qt::AccessibleTextRole:
        return row.percent < 0 ? row.name : QStringLiteral("%1, %2%").arg(row.name).arg(row.percent);
    case detailRole:
    case Qt::AccessibleDescriptionRole:
        return row.detail;
    case percentRole:
        return row.percent;
    default:
        return {};
    }
}

qsizetype UploadRows::find(qint64 identifier) const {
    const auto row = std::find_if(rows_.begin(), rows_.end(), [identifier](const UploadRow& candidate) {
        return candidate.identifier == identifier;
    });
    return row == rows_.end() ? -1 : row - rows_.begin();
}

} // namespace quenby
