#include "localdrive/store/Session.h"

#include "localdrive/store/Connection.h"

#include <QSqlRecord>

namespace quenby::localdrive {

Error sqlError(const QSqlError& error) {
    return Error(errorDomain::posix, EIO,
                 {{errorKey::reason, QStringLiteral("The database failed: %1. Check the disk's free space and the "
                                                    "data folder's permissions.")
                                         .arg(error.databaseText().isEmpty() ? error.text() : error.databaseText())}});
}

Session::Session(Database& database, Kind kind) {
    const Result<Database::Connection*> connection = database.connection();
    if (!connection) {
        fail(connection.error());
        return;
    }
    if (connection.value()->inSession) {
        fail(Error(errorDomain::posix, EDEADLK,
                   {{errorKey::reason, QStringLiteral("A unit of work was begun inside another one.")}}));
        return;
    }
    connection_ = connection.value();
    connection_->inSession = true;
    if (kind == Kind::write)
        writing_ = std::unique_lock(database.writers_);
    // A writer takes the lock at once: a reader that starts to write later could find its snapshot outdated.
    open_ = control(kind == Kind::write ? QStringLiteral("BEGIN IMMEDIATE") : QStringLiteral("BEGIN"));
}

Session::~Session() {
    if (!connection_)
        return;
    if (open_) {
        failure_.reset();
        control(QStringLiteral("ROLLBACK"));
    }
    connection_->inSession = false;
}

void Session::fail(const Error& error) {
    if (!failure_)
        failure_ = error;
}

bool Session::control(const QString& sql) {
    QSqlQuery* query = prepared(sql);
    return query && execute(*query, sql, {});
}

QSqlQuery* Session::prepared(const QString& sql) {
    if (failure_)
        return nullptr;
    return connection_->prepared(sql, failure_);
}

bool Session::execute(QSqlQuery& query, const QString& sql, const QVariantList& values) {
    for (qsizetype i = 0; i < values.size(); ++i) {
        // Qt takes a null QString for NULL; here it is an empty text like any other.
        const bool isNullText = values[i].typeId() == QMetaType::QString && values[i].toString().isNull();
        query.bindValue(static_cast<int>(i), isNullText ? QVariant(QLatin1String("")) : values[i]);
    }
    if (query.exec())
        return true;
    fail(sqlError(query.lastError()).withDetail(errorKey::request, sql));
    query.finish();
    return false;
}

QList<Row> Session::rows(const QString& sql, const QVariantList& values) {
    QList<Row> found;
    QSqlQuery* query = prepared(sql);
    if (!query || !execute(*query, sql, values))
        return found;
    const int columns = query->record().count();
    while (query->next()) {
        Row& row = found.emplaceBack();
        row.reserve(columns);
        for (int column = 0; column < columns; ++column)
            row.append(query->value(column));
    }
    if (query->lastError().isValid())
        fail(sqlError(query->lastError()));
    query->finish();
    return found;
}

Row Session::row(const QString& sql, const QVariantList& values) {
    const QList<Row> found = rows(sql, values);
    return found.isEmpty() ? Row() : found.first();
}

QVariant Session::value(const QString& sql, const QVariantList& values) {
    const Row found = row(sql, values);
    return found.isEmpty() ? QVariant() : found.first();
}

qint64 Session::run(const QString& sql, const QVariantList& values) {
    QSqlQuery* query = prepared(sql);
    if (!query || !execute(*query, sql, values))
        return 0;
    const qint64 changed = query->numRowsAffected();
    query->finish();
    return changed;
}

Result<void> Session::commit() {
    if (!failure_ && control(QStringLiteral("COMMIT"))) {
        open_ = false;
        return {};
    }
    return *failure_;
}

} // namespace quenby::localdrive
