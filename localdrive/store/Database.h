// The SQLite database `drive.sqlite` in the data folder.
//
// Durability: write-ahead log with synchronous=FULL, so that a committed transaction survives both a killed process
// and a power failure. An open() after a kill replays the log by itself.
//
// Threads: any thread may use a Database. Each gets its own connection, opened at the first use and closed when the
// thread ends. Work goes through Session (store/Session.h), which also lets only one writer in at a time. All other
// threads that used a Database must have ended before it is destroyed.
#pragma once

#include "core/Result.h"

#include <QHash>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>
#include <QStringList>

#include <memory>
#include <mutex>

namespace quenby::localdrive {

class Database {
public:
    // Creates the folder (readable by its owner only) and the file when they are missing. Fails when the folder can't
    // be written to or the file is no database.
    static Result<std::unique_ptr<Database>> open(const QString& folder);
    ~Database();
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    const QString& folder() const { return folder_; }

    // Brings the tables of one component up to date. `statements` is the component's whole history, oldest first: each
    // runs once in the life of a database, in one transaction with the note that it ran. Later versions only append.
    // Component names must be distinct; "drive" is the store's own. Fails when the file knows more statements than are
    // given, which means that it was written by a newer version.
    Result<void> migrate(const QString& component, const QStringList& statements);

private:
    friend class Session;

    struct Connection;
    struct ThreadConnections;

    explicit Database(QString folder);
    // The calling thread's connection; opened when needed.
    Result<Connection*> connection();
    Result<std::unique_ptr<Connection>> connect() const;
    static ThreadConnections& threadConnections();

    const QString folder_;
    const quint64 serial_; // names this object's connections; addresses of objects are used again
    std::mutex writers_;
};

} // namespace quenby::localdrive
