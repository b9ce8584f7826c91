// The local Drive's program, run by a test on a data folder of its own and a port that the system chose.
#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QUrl>

namespace quenby::testing {

// Threads: the one that made it. The calls block; each gives up after 30 seconds. The program ends with the object.
class LocalDriveProcess {
public:
    // Further arguments, such as {"--token-lifetime", "1"}. The control endpoint is always on.
    explicit LocalDriveProcess(QStringList arguments = {});
    ~LocalDriveProcess();
    LocalDriveProcess(const LocalDriveProcess&) = delete;
    LocalDriveProcess& operator=(const LocalDriveProcess&) = delete;

    // Starts the program and waits for its ready line. Called again after kill() or terminate(), it starts on the same
    // data folder and port. False when it does not come up; log() says why.
    bool start();
    // SIGKILL, and waits for the end.
    void kill();
    // SIGTERM, and waits for the end. The exit code, or -1 when it did not end by itself.
    int terminate();

    const QUrl& url() const { return url_; }
    QString dataFolder() const { return folder_.filePath(QStringLiteral("drive")); }
    static QString program();
    // Whether it starts with its JSON-RPC road: the arguments say it, else the environment.
    bool startsWithRpc() const;

    // Orders faults, given as a JSON list of rules (docs/LOCAL-DRIVE.md). False when the program refuses them.
    bool orderFaults(const QByteArray& rules);
    void clearFaults();
    // Rules that can still strike.
    QJsonArray pendingFaults();
    QJsonObject state();
    // Everything secret that the program gave out or was shown, of every start, for searching logs. With the variable
    // QUENBY_SECRETS_DIR set, each object leaves its list there for a search of the whole suite's output.
    QStringList secrets();
    // A header line with which JSON-RPC is open to a test even when the Drive's client finds it closed.
    static QByteArray controlHeader();
    // Takes something away or gives it back while the program runs: {"rpc": false, "changeIds": false}.
    bool setService(const QByteArray& members);
    // A token answer as a sign-in would have ended with, for the owner or for another address; with full access for a
    // client named "test" when nothing else is said.
    QJsonObject grant(const QString& email = {}, const QString& clientId = {}, const QString& scope = {});
    QByteArray newAccessToken();

    // Everything that the program has written to its standard error, of every start.
    QByteArray log();

private:
    void leaveSecrets() const;
    QByteArray control(const QByteArray& method, const QByteArray& path, const QByteArray& body = {},
                       int* status = nullptr);

    const QStringList arguments_;
    QTemporaryDir folder_;
    QProcess process_;
    QUrl url_;
    QByteArray log_;
    QStringList secrets_;
};

} // namespace quenby::testing
