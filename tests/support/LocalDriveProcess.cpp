#include "tests/support/LocalDriveProcess.h"

#include "tests/support/RawHttp.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>

namespace quenby::testing {
namespace {

constexpr int patience = 30'000; // milliseconds
constexpr char controlToken[] = "test-control";

} // namespace

LocalDriveProcess::LocalDriveProcess(QStringList arguments)
    : arguments_(std::move(arguments)) {}

LocalDriveProcess::~LocalDriveProcess() {
    kill();
    leaveSecrets();
}

void LocalDriveProcess::leaveSecrets() const {
    const QString folder = qEnvironmentVariable("QUENBY_SECRETS_DIR");
    if (folder.isEmpty() || secrets_.isEmpty())
        return;
    QFile file(folder + QStringLiteral("/secrets-") + QFileInfo(folder_.path()).fileName());
    if (file.open(QIODevice::WriteOnly))
        file.write(secrets_.join(QLatin1Char('\n')).toUtf8() + '\n');
}

QString LocalDriveProcess::program() { return QStringLiteral(QUENBY_LOCALDRIVE_PROGRAM); }

bool LocalDriveProcess::startsWithRpc() const {
    return arguments_.contains(QStringLiteral("--with-rpc")) ||
           (!arguments_.contains(QStringLiteral("--without-rpc")) &&
            qEnvironmentVariableIntValue("QUENBY_LOCALDRIVE_WITHOUT_RPC") == 0);
}

bool LocalDriveProcess::start() {
    process_.start(program(), QStringList{QStringLiteral("--data"), dataFolder(), QStringLiteral("--control"),
                                          QLatin1String(controlToken)} +
                                  arguments_);
    constexpr QByteArrayView ready("quenby-localdrive listening on ");
    QByteArray line;
    while (!line.endsWith('\n')) {
        if (!process_.canReadLine() && !process_.waitForReadyRead(patience))
            return false;
        line = process_.readLine();
    }
    url_ = QUrl(QString::fromLatin1(line.mid(ready.size()).trimmed()));
    return line.startsWith(ready);
}

void LocalDriveProcess::kill() {
    secrets();
    process_.kill();
    process_.waitForFinished(patience);
}

int LocalDriveProcess::terminate() {
    secrets();
    process_.terminate();
    const bool ended = process_.waitForFinished(patience) && process_.exitStatus() == QProcess::NormalExit;
    return ended ? process_.exitCode() : -1;
}

QByteArray LocalDriveProcess::control(const QByteArray& method, const QByteArray& path, const QByteArray& body,
                                      int* status) {
    const RawReply reply =
        RawHttp::exchange(url_, RawHttp::request(method, "/control/" + path, {controlHeader()}, body));
    if (status)
        *status = reply.status;
    return reply.body;
}

bool LocalDriveProcess::orderFaults(const QByteArray& rules) {
    int status = 0;
    const QByteArray reply = control("POST", "faults", rules, &status);
    if (status != 204)
        qWarning("Faults refused: %s", reply.constData());
    return status == 204;
}

void LocalDriveProcess::clearFaults() { control("DELETE", "faults"); }

QJsonArray LocalDriveProcess::pendingFaults() {
    return QJsonDocument::fromJson(control("GET", "faults"))[QStringLiteral("faults")].toArray();
}

QJsonObject LocalDriveProcess::state() { return QJsonDocument::fromJson(control("GET", "state")).object(); }

QStringList LocalDriveProcess::secrets() {
    // A program that was killed does not remember what it gave out before.
    if (process_.state() == QProcess::Running) {
        const QJsonDocument told = QJsonDocument::fromJson(control("GET", "secrets"));
        secrets_ += told[QStringLiteral("secrets")].toVariant().toStringList();
        secrets_.removeDuplicates();
    }
    return secrets_;
}

QByteArray LocalDriveProcess::controlHeader() { return QByteArray("X-Control-Token: ") + controlToken; }

bool LocalDriveProcess::setService(const QByteArray& members) {
    int status = 0;
    control("POST", "service", members, &status);
    return status == 204;
}

QJsonObject LocalDriveProcess::grant(const QString& email, const QString& clientId, const QString& scope) {
    QJsonObject asked;
    if (!email.isEmpty())
        asked.insert(QStringLiteral("email"), email);
    if (!clientId.isEmpty())
        asked.insert(QStringLiteral("client_id"), clientId);
    if (!scope.isEmpty())
        asked.insert(QStringLiteral("scope"), scope);
    return QJsonDocument::fromJson(control("POST", "grant", QJsonDocument(asked).toJson())).object();
}

QByteArray LocalDriveProcess::newAccessToken() { return grant()[QLatin1String("access_token")].toString().toLatin1(); }

QByteArray LocalDriveProcess::log() {
    if (process_.state() != QProcess::NotRunning)
        process_.waitForReadyRead(0);
    return log_ += process_.readAllStandardError();
}

} // namespace quenby::testing
