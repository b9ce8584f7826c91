#include "app/uploads/journal/JournalFile.h"

#include "app/uploads/journal/JournalPlace.h"
#include "app/uploads/journal/JournalRows.h"
#include "app/uploads/journal/JournalTrouble.h"

#include <QFile>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

#include <atomic>
#include <cerrno>
#include <optional>

#include <sys/stat.h>
#include <unistd.h>

namespace quenby {
namespace {

QString nextConnectionName() {
    static std::atomic<quint64> last = 0;
    return QStringLiteral("uploads-%1").arg(++last);
}

} // namespace

class JournalFile::Connection {
public:
    explicit Connection(const QByteArray& path)
        : path_(path)
        , name_(nextConnectionName())
        , database_(QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name_)) {
        database_.setDatabaseName(QFile::decodeName(path));
        database_.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=10000"));
    }
    ~Connection() {
        statement.reset();
        database_ = QSqlDatabase();
        QSqlDatabase::removeDatabase(name_);
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    MaybeError open() {
        if (!database_.open())
            return journalTrouble(database_.lastError(), path_);
        statement.emplace(database_);
        statement->setForwardOnly(true);
        return std::nullopt;
    }
    MaybeError run(const QString& sql) { return statement->exec(sql) ? std::nullopt : trouble(); }
    MaybeError prepare(const QString& sql) { return statement->prepare(sql) ? std::nullopt : trouble(); }
    MaybeError runPrepared() { return statement->exec() ? std::nullopt : trouble(); }
    // The first value of the answer.
    MaybeError ask(const QString& sql, QVariant& value) {
        if (const MaybeError error = run(sql))
            return error;
        if (statement->next())
            value = statement->value(0);
        statement->finish();
        return std::nullopt;
    }
    // `work` in a transaction, which is undone when it fails.
    template <typename Work>
    MaybeError inTransaction(Work work) {
        // Takes its lock now: one that began by reading could find the file changed when it comes to write.
        MaybeError error = run(QStringLiteral("BEGIN IMMEDIATE"));
        if (error)
            return error;
        error = work();
        if (!error)
            error = run(QStringLiteral("COMMIT"));
        if (error)
            statement->exec(QStringLiteral("ROLLBACK")); // a failed COMMIT may have done it
        return error;
    }
    // The tables are not those that the failed statement was written for.
    bool isUnknownHere() const { return (statement->lastError().nativeErrorCode().toInt() & 0xff) == 1; }
    MaybeError trouble() const { return journalTrouble(statement->lastError(), path_); }

    std::optional<QSqlQuery> statement; // the one in work

private:
    const QByteArray path_;
    const QString name_;
    QSqlDatabase database_;
};

JournalFile::JournalFile(const QByteArray& path)
    : path_(path) {}

JournalFile::~JournalFile() = default;

bool JournalFile::isOpen() const {
    struct stat about {};
    return connection_ && ::stat(path_.constData(), &about) == 0 && about.st_dev == device_ && about.st_ino == inode_;
}

MaybeError JournalFile::open() {
    close();
    // One that may only be read is still worth reading.
    if (!makeJournalPlace(path_)) {
        const int reason = errno;
        if (::access(path_.constData(), R_OK) != 0)
            return journalTrouble(reason, path_);
    }
    struct stat about {};
    if (::stat(path_.constData(), &about) != 0)
        return journalTrouble(errno, path_);
    device_ = about.st_dev;
    inode_ = about.st_ino;
    connection_ = std::make_unique<Connection>(path_);
    MaybeError error = connection_->open();
    if (!error)
        error = begin();
    if (error)
        close();
    return error;
}

void JournalFile::close() { connection_.reset(); }

MaybeError JournalFile::begin() {
    // Upload locations leave no trace: not in the file once they are removed, and never in temporary files.
    for (const char* pragma : {"PRAGMA secure_delete=ON", "PRAGMA temp_store=MEMORY", "PRAGMA synchronous=FULL"})
        if (const MaybeError error = connection_->run(QLatin1String(pragma)))
            return error;
    QVariant format;
    if (const MaybeError error = connection_->ask(QStringLiteral("PRAGMA user_version"), format))
        return error;
    if (format.toInt() > journalFormat)
        return laterJournal(path_);
    QVariant check;
    if (const MaybeError error = connection_->ask(QStringLiteral("PRAGMA quick_check(1)"), check))
        return error;
    if (check.toString() != QLatin1String("ok"))
        return damagedJournal(path_);
    // Emptied after each change, not deleted: a deleted one may come back with the power.
    if (const MaybeError error = connection_->run(QStringLiteral("PRAGMA journal_mode=TRUNCATE")))
        return error;
    if (format.toInt() < journalFormat) {
        const MaybeError error = connection_->inTransaction([this] {
            // Another program may have been here first.
            QVariant now;
            MaybeError failed = connection_->ask(QStringLiteral("PRAGMA user_version"), now);
            if (!failed && now.toInt() < journalFormat)
                failed = connection_->run(journalSQL::makeTable);
            if (!failed)
                failed = connection_->run(QStringLiteral("PRAGMA user_version=%1").arg(journalFormat));
            return failed;
        });
        if (error)
            return error;
    }
    const MaybeError error = connection_->prepare(journalSQL::read);
    return error && connection_->isUnknownHere() ? damagedJournal(path_) : error;
}

Result<QList<JournalEntry>> JournalFile::entries() {
    if (const MaybeError error = connection_->run(journalSQL::read))
        return *error;
    QSqlQuery& row = *connection_->statement;
    QList<JournalEntry> entries;
    while (row.next())
        entries.append(entryOfRow(row));
    const bool isWhole = row.lastError().type() == QSqlError::NoError;
    const MaybeError error = isWhole ? std::nullopt : connection_->trouble();
    row.finish();
    if (error)
        return *error;
    return entries;
}

MaybeError JournalFile::change(const std::vector<const JournalEntry*>& written, const std::vector<qint64>& removed) {
    return connection_->inTransaction([&]() -> MaybeError {
        if (const MaybeError error = connection_->prepare(journalSQL::write))
            return error;
        for (const JournalEntry* entry : written) {
            bindEntry(*connection_->statement, *entry);
            if (const MaybeError error = connection_->runPrepared())
                return error;
        }
        if (const MaybeError error = connection_->prepare(journalSQL::remove))
            return error;
        for (const qint64 number : removed) {
            connection_->statement->bindValue(0, number);
            if (const MaybeError error = connection_->runPrepared())
                return error;
        }
        return std::nullopt;
    });
}

} // namespace quenby
