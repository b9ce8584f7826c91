#include "localdrive/store/Database.h"

#include "localdrive/store/Connection.h"
#include "localdrive/store/Session.h"

#include <QDir>
#include <QFile>
#include <QSqlError>

#include <atomic>

namespace quenby::localdrive {
namespace {

constexpr std::size_t mostStatements = 256;

QString nextConnectionName() {
    static std::atomic<quint64> last = 0;
    return QStringLiteral("localdrive-%1").arg(++last);
}

quint64 nextSerial() {
    static std::atomic<quint64> last = 0;
    return ++last;
}

} // namespace

Database::Connection::Connection(const QString& file)
    : name_(nextConnectionName())
    , database_(QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name_)) {
    database_.setDatabaseName(file);
    database_.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=10000"));
}

Database::Connection::~Connection() {
    statements_.clear();
    database_ = QSqlDatabase();
    QSqlDatabase::removeDatabase(name_);
}

MaybeError Database::Connection::open() {
    if (!database_.open())
        return sqlError(database_.lastError());
    for (const char* pragma : {"PRAGMA journal_mode=WAL", "PRAGMA synchronous=FULL", "PRAGMA foreign_keys=ON"}) {
        QSqlQuery query(database_);
        if (!query.exec(QLatin1String(pragma)))
            return sqlError(query.lastError());
    }
    return std::nullopt;
}

QSqlQuery* Database::Connection::prepared(const QString& sql, MaybeError& failure) {
    if (statements_.size() >= mostStatements && !statements_.contains(sql))
        statements_.clear();
    std::unique_ptr<QSqlQuery>& query = statements_[sql];
    if (!query) {
        query = std::make_unique<QSqlQuery>(database_);
        query->setForwardOnly(true);
        if (!query->prepare(sql)) {
            failure = sqlError(query->lastError());
            statements_.erase(sql);
            return nullptr;
        }
    }
    return query.get();
}

Database::ThreadConnections& Database::threadConnections() {
    thread_local ThreadConnections connections;
    return connections;
}

Database::Database(QString folder)
    : folder_(std::move(folder))
    , serial_(nextSerial()) {}

Database::~Database() { threadConnections().bySerial.erase(serial_); }

Result<std::unique_ptr<Database>> Database::open(const QString& folder) {
    if (!QDir().mkpath(folder))
        return Error(errorDomain::posix, EACCES,
                     {{errorKey::reason, QStringLiteral("The data folder %1 can't be created. Choose a folder that "
                                                        "you may write to.")
                                             .arg(folder)}});
    QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    std::unique_ptr<Database> database(new Database(folder));
    // The first connection finds out whether the file can be used at all.
    if (const Result<Connection*> connection = database->connection(); !connection)
        return connection.error();
    return database;
}

Result<std::unique_ptr<Database::Connection>> Database::connect() const {
    auto connection = std::make_unique<Connection>(folder_ + QStringLiteral("/drive.sqlite"));
    if (const MaybeError failure = connection->open())
        return *failure;
    return connection;
}

Result<Database::Connection*> Database::connection() {
    std::unique_ptr<Connection>& mine = threadConnections().bySerial[serial_];
    if (!mine) {
        Result<std::unique_ptr<Connection>> made = connect();
        if (!made)
            return made.error();
        mine = std::move(*made);
    }
    return mine.get();
}

Result<void> Database::migrate(const QString& component, const QStringList& statements) {
    Session session(*this, Session::Kind::write);
    session.run(QStringLiteral("CREATE TABLE IF NOT EXISTS migrations(component TEXT PRIMARY KEY, done INTEGER)"));
    const qint64 done =
        session.value(QStringLiteral("SELECT done FROM migrations WHERE component = ?"), {component}).toLongLong();
    if (done > statements.size())
        return Error(errorDomain::posix, EINVAL,
                     {{errorKey::reason, QStringLiteral("The database in %1 was written by a newer version. Start that "
                                                        "version, or choose another folder.")
                                             .arg(folder_)}});
    for (const QString& statement : statements.mid(done))
        session.run(statement);
    session.run(QStringLiteral("INSERT OR REPLACE INTO migrations VALUES(?, ?)"), {component, statements.size()});
    return session.commit();
}

} // namespace quenby::localdrive
