#include "tests/desktop/support/QuenbyProcess.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QTest>

#include <csignal>

namespace quenby::testing {
namespace {

QByteArray contentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

QuenbyHome::QuenbyHome(const QString& driveFolder)
    : driveFolder_(driveFolder.isEmpty() ? folder_.filePath(QStringLiteral("drive")) : driveFolder)
    , isOurs_(driveFolder.isEmpty())
    , environment_(QProcessEnvironment::systemEnvironment()) {
    environment_.insert(QStringLiteral("HOME"), folder_.path());
    for (const auto& [variable, name] : {std::pair("XDG_DATA_HOME", "data"), std::pair("XDG_STATE_HOME", "state"),
                                         std::pair("XDG_CONFIG_HOME", "config"), std::pair("XDG_CACHE_HOME", "cache")})
        environment_.insert(QString::fromLatin1(variable), path(QString::fromLatin1(name)));
    environment_.insert(QStringLiteral("QUENBY_LAUNCH_TRACE"), QStringLiteral("1"));
}

QuenbyHome::~QuenbyHome() {
    const auto pid = static_cast<pid_t>(isOurs_ ? localDrivePid() : 0);
    if (pid > 0 && ::kill(pid, SIGTERM) == 0 &&
        !QTest::qWaitFor([pid] { return ::kill(pid, 0) != 0; }, QuenbyProcess::patience))
        qWarning("The local Drive (process %d) does not end", int(pid));
}

QString QuenbyHome::settingsPath() const { return path(QStringLiteral("config/quenby/quenby-local.ini")); }

QString QuenbyHome::makeFile(const QString& name, const QByteArray& content) const {
    const QString made = path(name);
    QDir().mkpath(QFileInfo(made).path());
    QFile file(made);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("A file for the test can't be written.");
    return made;
}

qint64 QuenbyHome::localDrivePid() const {
    const QByteArray note = contentOf(driveFolder_ % QStringLiteral("/endpoint.json"));
    const qint64 pid = QJsonDocument::fromJson(note)[QStringLiteral("pid")].toInteger();
    // Whoever has the number now must be ours: its command line names our folder.
    const QByteArray commandLine = contentOf(QStringLiteral("/proc/%1/cmdline").arg(pid));
    return commandLine.contains(QFile::encodeName(driveFolder_)) ? pid : 0;
}

QuenbyProcess::QuenbyProcess(QuenbyHome& home)
    : home_(home) {}

QuenbyProcess::~QuenbyProcess() { terminate(); }

bool QuenbyProcess::start(const QStringList& arguments) {
    errors();
    startOfErrors_ = errors_.size();
    process_.setProcessEnvironment(home_.environment());
    process_.setWorkingDirectory(home_.path(QString()));
    process_.start(QStringLiteral(QUENBY_PROGRAM),
                   QStringList{QStringLiteral("--local"), QStringLiteral("--local-data"), home_.driveFolder()} +
                       arguments);
    return process_.waitForStarted(patience);
}

int QuenbyProcess::countOfTrace(const QByteArray& word) {
    const QByteArray ending = ' ' + word;
    int count = 0;
    for (const QByteArray& line : errors().mid(startOfErrors_).split('\n'))
        count += line.startsWith("quenby-launch ") && line.endsWith(ending);
    return count;
}

bool QuenbyProcess::waitForTrace(const QByteArray& word, int times) {
    return QTest::qWaitFor([&] { return countOfTrace(word) >= times || !isRunning(); }, patience) &&
           countOfTrace(word) >= times;
}

int QuenbyProcess::waitForEnd() {
    if (!QTest::qWaitFor([this] { return !isRunning(); }, patience)) {
        process_.kill();
        process_.waitForFinished();
        return -1;
    }
    return process_.exitStatus() == QProcess::CrashExit ? 128 + process_.exitCode() : process_.exitCode();
}

int QuenbyProcess::terminate() {
    if (isRunning())
        process_.terminate();
    return waitForEnd();
}

const QByteArray& QuenbyProcess::output() {
    return process_.isOpen() ? output_ += process_.readAllStandardOutput() : output_;
}

const QByteArray& QuenbyProcess::errors() {
    return process_.isOpen() ? errors_ += process_.readAllStandardError() : errors_;
}

QByteArray QuenbyProcess::ask(const QStringList& arguments) {
    QProcess call;
    call.setProcessEnvironment(home_.environment());
    call.start(QStringLiteral(QUENBY_PROGRAM),
               arguments + QStringList{QStringLiteral("--local"), QStringLiteral("--local-data"), home_.driveFolder()});
    const bool ended = QTest::qWaitFor([&call] { return call.state() == QProcess::NotRunning; }, patience);
    if (!ended || call.exitStatus() != QProcess::NormalExit || call.exitCode() != 0) {
        qWarning("quenby %s: %s", qPrintable(arguments.join(QLatin1Char(' '))),
                 call.readAllStandardError().constData());
        return {};
    }
    return call.readAllStandardOutput();
}

} // namespace quenby::testing
