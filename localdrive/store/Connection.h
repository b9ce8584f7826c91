// One thread's connection to the database, with the statements that it has prepared. Only Database and Session use it.
#pragma once

#include "core/Error.h"
#include "localdrive/store/Database.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

#include <memory>
#include <unordered_map>

namespace quenby::localdrive {

// What SQLite said, for the log; it never contains bound values.
Error sqlError(const QSqlError& error);

struct Database::Connection {
    explicit Connection(const QString& file);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    MaybeError open();
    // The statement, compiled at its first use; valid until the next call. Statements contain no data, so they are
    // few, but for those of searches.
    QSqlQuery* prepared(const QString& sql, MaybeError& failure);

    bool inSession = false;

private:
    const QString name_;
    QSqlDatabase database_;
    std::unordered_map<QString, std::unique_ptr<QSqlQuery>> statements_;
};

struct Database::ThreadConnections {
    std::unordered_map<quint64, std::unique_ptr<Connection>> bySerial;
};

} // namespace quenby::localdrive
