#include "tests/app/CommandLineRunner.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QJsonDocument>
#include <QThread>

#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace quenby::testing {
namespace {

constexpr int patience = 60'000; // milliseconds

} // namespace

QList<QJsonObject> Ended::objects() const {
    QList<QJsonObject> found;
    for (const QByteArray& line : output.trimmed().split('\n'))
        found.append(QJsonDocument::fromJson(line).object());
    return found;
}

CommandLineRunner::CommandLineRunner()
    : environment_(QProcessEnvironment::systemEnvironment()) {
    environment_.insert(QStringLiteral("HOME"), home_.path());
    for (const auto& [variable, folder] :
         {std::pair("XDG_DATA_HOME", "data"), std::pair("XDG_STATE_HOME", "state"),
          std::pair("XDG_CONFIG_HOME", "config"), std::pair("XDG_CACHE_HOME", "cache")})
        environment_.insert(QString::fromLatin1(variable), home_.filePath(QString::fromLatin1(folder)));
    environment_.remove(QStringLiteral("QUENBY_POLL_SECONDS"));
    // Nobody's keyring is asked, and no browser of whoever runs the tests is opened.
    environment_.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), QStringLiteral("unix:path=/nonexistent"));
    environment_.remove(QStringLiteral("DISPLAY"));
    environment_.remove(QStringLiteral("WAYLAND_DISPLAY"));
}

CommandLineRunner::~CommandLineRunner() {
    if (const auto pid = static_cast<pid_t>(localDrivePid()); pid > 0) {
        ::kill(pid, SIGTERM);
        const QDeadlineTimer deadline(patience);
        while (::kill(pid, 0) == 0 && !deadline.hasExpired())
            QThread::msleep(5);
    }
    // Qt can't remove files whose names are not UTF-8.
    QProcess::execute(QStringLiteral("rm"), {QStringLiteral("-rf"), QStringLiteral("--"), home_.path()});
}

std::unique_ptr<QProcess> CommandLineRunner::start(const QStringList& arguments) {
    return startProgram(QStringLiteral(QUENBY_PROGRAM), arguments);
}

std::unique_ptr<QProcess> CommandLineRunner::startProgram(const QString& program, const QStringList& arguments) {
    auto process = std::make_unique<QProcess>();
    process->setProcessEnvironment(environment_);
    process->setWorkingDirectory(home_.path());
    process->start(program, arguments);
    return process;
}

Ended CommandLineRunner::waitFor(QProcess& process) {
    const bool ended = process.waitForFinished(patience);
    if (!ended)
        process.kill();
    const Ended result{!ended                                        ? -1
                       : process.exitStatus() == QProcess::CrashExit ? -2
                                                                     : process.exitCode(),
                       process.readAllStandardOutput(), process.readAllStandardError()};
    everythingWritten_ += result.output + result.errors;
    return result;
}

Ended CommandLineRunner::run(const QStringList& arguments) {
    const auto process = start(arguments);
    return waitFor(*process);
}

Ended CommandLineRunner::runInShell(const QString& line) {
    const auto process =
        startProgram(QStringLiteral("sh"), {QStringLiteral("-c"), line, QStringLiteral(QUENBY_PROGRAM)});
    return waitFor(*process);
}

bool CommandLineRunner::waitForText(QProcess& process, QProcess::ProcessChannel channel, const QByteArray& text,
                                    QByteArray& written) {
    process.setReadChannel(channel);
    const QDeadlineTimer deadline(patience);
    while (!written.contains(text)) {
        if (process.bytesAvailable() == 0 && !process.waitForReadyRead(static_cast<int>(deadline.remainingTime())))
            return false;
        written += process.readAll();
    }
    return true;
}

qint64 CommandLineRunner::localDrivePid() const {
    const QByteArray note = contentOf(path(QStringLiteral("data/quenby/local-drive/endpoint.json")));
    const qint64 pid = QJsonDocument::fromJson(note)[QStringLiteral("pid")].toInteger();
    // Whoever has the number now must be ours: its command line names our home.
    const QByteArray commandLine = contentOf(QStringLiteral("/proc/%1/cmdline").arg(pid));
    return commandLine.contains(QFile::encodeName(home_.path())) ? pid : 0;
}

QString CommandLineRunner::makeFile(const QByteArray& name, const QByteArray& content) const {
    const QByteArray path = QFile::encodeName(home_.path()) + '/' + name;
    QDir().mkpath(QFile::decodeName(path.first(path.lastIndexOf('/'))));
    const int descriptor = ::open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    QFile file;
    if (!file.open(descriptor, QIODevice::WriteOnly, QFileDevice::AutoCloseHandle) ||
        file.write(content) != content.size())
        qFatal("A file for the test can't be written.");
    return QFile::decodeName(path);
}

QByteArray CommandLineRunner::contentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace quenby::testing
