// One unit of work on the database: a transaction on the calling thread's connection.
//
// The first failure sticks: later statements do nothing and yield nothing, and commit() answers with that failure.
// So a sequence of statements reads without a check after each, and nothing of a failed sequence remains.
//
// Threads: used and destroyed on the thread that made it, one at a time per thread (a second one would wait for the
// first for ever; it fails instead). A writer waits for other writers; readers never wait.
#pragma once

#include "core/Error.h"
#include "core/Result.h"
#include "localdrive/store/Database.h"

#include <QVariantList>

#include <mutex>

namespace quenby::localdrive {

// The columns of one row, by position.
using Row = QVariantList;

class Session {
public:
    enum class Kind { read, write };

    Session(Database& database, Kind kind);
    // Rolls back what was not committed.
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // Runs a statement with its values bound to the "?" in order, and returns all rows. Texts are bound as they are,
    // so that a statement never contains data. QVariant() is NULL.
    QList<Row> rows(const QString& sql, const QVariantList& values = {});
    // The first row, or an empty one when there is none.
    Row row(const QString& sql, const QVariantList& values = {});
    // The first column of the first row; invalid when there is no row.
    QVariant value(const QString& sql, const QVariantList& values = {});
    // For statements without rows; the number of rows that it changed.
    qint64 run(const QString& sql, const QVariantList& values = {});

    // Makes the session fail from outside. The first failure stays.
    void fail(const Error& error);
    const MaybeError& failure() const { return failure_; }

    // After an ok() commit of a writer the changes are on disk.
    Result<void> commit();

private:
    bool execute(QSqlQuery& query, const QString& sql, const QVariantList& values);
    bool control(const QString& sql);
    QSqlQuery* prepared(const QString& sql);

    std::unique_lock<std::mutex> writing_;
    Database::Connection* connection_ = nullptr;
    MaybeError failure_;
    bool open_ = false;
};

} // namespace quenby::localdrive
