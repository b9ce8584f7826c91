#include "localdrive/server/upload/UploadSessions.h"

#include "localdrive/server/http/HttpMessages.h"
#include "localdrive/store/ApiError.h"

#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonDocument>

namespace quenby::localdrive {
namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds lifetime = 7 * 24h;

QStringList schema() {
    return {QStringLiteral("CREATE TABLE uploads (digest TEXT PRIMARY KEY, part TEXT NOT NULL, call TEXT NOT NULL, "
                           "media_type TEXT NOT NULL, length INTEGER NOT NULL, email TEXT NOT NULL, "
                           "name TEXT NOT NULL, expires INTEGER NOT NULL, result TEXT) WITHOUT ROWID"),
            QStringLiteral("ALTER TABLE uploads ADD COLUMN road TEXT NOT NULL DEFAULT 'rpc'"),
            QStringLiteral("ALTER TABLE uploads ADD COLUMN client TEXT NOT NULL DEFAULT ''"),
            QStringLiteral("ALTER TABLE uploads ADD COLUMN own_files_only INTEGER NOT NULL DEFAULT 0")};
}

const QString columns = QStringLiteral("part, call, media_type, length, email, name, result, expires, road, client, "
                                       "own_files_only");
const QString restRoad = QStringLiteral("rest");
const QString rpcRoad = QStringLiteral("rpc");

QString compact(const QJsonObject& object) {
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
}

QJsonObject objectOf(const QVariant& text) { return QJsonDocument::fromJson(text.toString().toUtf8()).object(); }

Error gone() {
    return Error(apiErrorDomain, 410,
                 {{errorKey::reason, QStringLiteral("This upload was not finished in time. Begin it again.")},
                  {apiErrorKey::reason, QStringLiteral("gone")}});
}

} // namespace

Result<std::unique_ptr<UploadSessions>> UploadSessions::open(Database& database, BlobStore& blobs,
                                                             const ServerClock& clock) {
    if (const auto migrated = database.migrate(QStringLiteral("uploads"), schema()); !migrated)
        return migrated.error();
    std::unique_ptr<UploadSessions> sessions(new UploadSessions(database, blobs, clock));
    if (const auto swept = sessions->sweep(); !swept)
        return swept.error();
    return sessions;
}

UploadSessions::UploadSessions(Database& database, BlobStore& blobs, const ServerClock& clock)
    : database_(database)
    , blobs_(blobs)
    , clock_(clock) {}

QString UploadSessions::digest(const QByteArray& uploadId) {
    return QString::fromLatin1(QCryptographicHash::hash(uploadId, QCryptographicHash::Sha256).toHex());
}

Result<void> UploadSessions::sweep() {
    QSet<QString> open;
    Session session(database_, Session::Kind::write);
    session.run(QStringLiteral("DELETE FROM uploads WHERE expires <= ?"), {clock_.now().toMSecsSinceEpoch()});
    for (const Row& row : session.rows(QStringLiteral("SELECT part FROM uploads WHERE result IS NULL")))
        open.insert(row[0].toString());
    const auto committed = session.commit();
    if (committed)
        blobs_.sweepIncoming(open);
    return committed;
}

Result<QByteArray> UploadSessions::create(UploadFacts facts) {
    const QByteArray uploadId = randomSecret();
    facts.part = QString::fromLatin1(randomSecret(18));
    Session session(database_, Session::Kind::write);
    session.run(
        QStringLiteral("INSERT INTO uploads (digest, part, call, media_type, length, email, name, expires, road, "
                       "client, own_files_only) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"),
        {digest(uploadId), facts.part, compact(facts.call), facts.mediaType, facts.length, facts.user.emailAddress,
         facts.user.displayName, clock_.now().toMSecsSinceEpoch() + static_cast<qint64>(lifetime.count()),
         facts.road == UploadRoad::rest ? restRoad : rpcRoad, facts.program.clientId, facts.program.seesOwnFilesOnly});
    if (const auto committed = session.commit(); !committed)
        return committed.error();
    return uploadId;
}

Result<std::shared_ptr<UploadSession>> UploadSessions::find(const QByteArray& uploadId) {
    Row row;
    {
        Session session(database_, Session::Kind::read);
        row = session.row(QStringLiteral("SELECT ") + columns + QStringLiteral(" FROM uploads WHERE digest = ?"),
                          {digest(uploadId)});
        if (session.failure())
            return *session.failure();
    }
    if (row.isEmpty())
        return apiError::notFound(QStringLiteral("Upload"), QStringLiteral("it was never begun, or is long over"));
    if (row[7].toLongLong() <= clock_.now().toMSecsSinceEpoch()) {
        remove(uploadId);
        return gone();
    }
    return load(row);
}

// The session object of a row: the live one, since two for one part file would disturb each other.
Result<std::shared_ptr<UploadSession>> UploadSessions::load(const Row& row) {
    const UploadFacts facts{row[0].toString(),
                            objectOf(row[1]),
                            row[2].toString(),
                            row[3].toLongLong(),
                            Account{row[5].toString(), row[4].toString()},
                            CallingProgram{row[9].toString(), row[10].toBool()},
                            row[8].toString() == restRoad ? UploadRoad::rest : UploadRoad::rpc};
    const std::lock_guard lock(mutex_);
    if (const auto* live = live_.object(facts.part))
        return *live;
    std::optional<QJsonObject> result;
    std::unique_ptr<IncomingBlob> blob;
    if (row[6].isNull()) {
        auto opened = blobs_.incoming(facts.part);
        if (!opened)
            return opened.error();
        blob = std::move(*opened);
    } else {
        result = objectOf(row[6]);
    }
    auto session = std::make_shared<UploadSession>(facts, std::move(blob), result);
    live_.insert(facts.part, new std::shared_ptr<UploadSession>(session));
    return session;
}

void UploadSessions::remove(const QByteArray& uploadId) {
    Session session(database_, Session::Kind::write);
    const QString part =
        session.value(QStringLiteral("SELECT part FROM uploads WHERE digest = ?"), {digest(uploadId)}).toString();
    session.run(QStringLiteral("DELETE FROM uploads WHERE digest = ?"), {digest(uploadId)});
    if (!session.commit() || part.isEmpty())
        return;
    const std::lock_guard lock(mutex_);
    live_.remove(part);
    blobs_.discardIncoming(part);
}

QByteArray UploadSessions::rename(const QByteArray& uploadId) {
    const QByteArray renamed = randomSecret();
    Session session(database_, Session::Kind::write);
    const qint64 changed = session.run(QStringLiteral("UPDATE uploads SET digest = ? WHERE digest = ?"),
                                       {digest(renamed), digest(uploadId)});
    return session.commit() && changed > 0 ? renamed : QByteArray();
}

void UploadSessions::noteResult(Session& session, const UploadFacts& facts, const QJsonObject& result) {
    session.run(QStringLiteral("UPDATE uploads SET result = ? WHERE part = ?"), {compact(result), facts.part});
}

QJsonArray UploadSessions::toJson() {
    QList<Row> rows;
    {
        Session session(database_, Session::Kind::read);
        rows = session.rows(QStringLiteral("SELECT ") + columns + QStringLiteral(" FROM uploads ORDER BY expires"));
    }
    QJsonArray array;
    for (const Row& row : rows) {
        const auto session = load(row);
        if (!session)
            continue;
        array.append(QJsonObject{{QStringLiteral("session"), (*session)->facts().part},
                                 {QStringLiteral("length"), (*session)->facts().length},
                                 {QStringLiteral("held"), (*session)->held()},
                                 {QStringLiteral("complete"), (*session)->isComplete()}});
    }
    return array;
}

} // namespace quenby::localdrive
