// The running uploads, as the workspace window lists them. Whoever uploads fills it in.
//
// Threads: the main thread.
#pragma once

#include <QAbstractListModel>
#include <QList>
#include <QString>

namespace quenby {

struct UploadRow {
    qint64 identifier = 0; // chosen by whoever fills it in
    QString name;          // of the file, as people may read it
    QString detail;        // for example "3.2 MB of 10 MB"
    int percent = -1;      // -1: not known yet
};

class UploadRows : public QAbstractListModel {
    Q_OBJECT

public:
    enum Role { detailRole = Qt::UserRole, percentRole };

    using QAbstractListModel::QAbstractListModel;

    void append(const UploadRow& row);
    // The row with the same identifier becomes this; nothing happens when there is none.
    void change(const UploadRow& row);
    void remove(qint64 identifier);

    // How many more uploads wait for their turn.
    int waiting() const { return waiting_; }
    void setWaiting(int count);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

Q_SIGNALS:
    // How many run or wait.
    void countChanged();

private:
    qsizetype find(qint64 identifier) const;

    QList<UploadRow> rows_;
    int waiting_ = 0;
};

} // namespace quenby
