#include "app/cli/LocalDriveLauncher.h"

#include "app/cli/DisplayText.h"
#include "app/cli/Folders.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkProxy>
#include <QProcess>
#include <QTcpSocket>

#include <cerrno>
#include <csignal>

#include <sys/types.h>

namespace quenby {
namespace {

using namespace std::chrono_literals;

constexpr auto patience = 20s;             // for a start, also on a busy machine
constexpr auto lookInterval = 20ms;        // between two looks at a Drive that is starting
constexpr auto probePatience = 2s;         // for a connection on this computer
constexpr auto graceAfterExit = 2s;        // it may have made way for another one that is just starting
constexpr auto leaveToOthers = 10s;        // whoever started it may start it again, with options of their own
constexpr const char* idleSeconds = "600"; // after so long without a request it ends

bool isAlive(qint64 pid) { return pid > 0 && (::kill(static_cast<pid_t>(pid), 0) == 0 || errno == EPERM); }

Error launchError(const QString& reason) { return Error(errorDomain::posix, ECHILD, {{errorKey::reason, reason}}); }

} // namespace

LocalDriveLauncher::LocalDriveLauncher(QByteArray dataFolder, QString program, std::shared_ptr<TimeSource> timeSource)
    : dataFolder_(std::move(dataFolder))
    , program_(std::move(program))
    , timeSource_(std::move(timeSource)) {}

LocalDriveLauncher::~LocalDriveLauncher() = default;

void LocalDriveLauncher::ensureRunning(QObject* context, Ready ready) {
    waiting_.emplace_back(context, std::move(ready));
    if (isLooking_)
        return;
    // Its program and what we read of it take text: other bytes would lead to another folder.
    if (QFile::encodeName(QFile::decodeName(dataFolder_)) != dataFolder_)
        return finish(launchError(QStringLiteral("the local Drive can't use the folder ") + printablePath(dataFolder_) +
                                  QStringLiteral(", whose path is not UTF-8; choose another with --local-data")));
    isLooking_ = true;
    wasStartedNow_ = false;
    exitSeen_.reset();
    deadline_ = timeSource_->elapsed() + patience;
    look();
}

void LocalDriveLauncher::revive() {
    const auto note = readNote();
    if (note && isAlive(note->pid)) {
        missedSince_.reset();
        return;
    }
    const auto now = timeSource_->elapsed();
    const auto missed = now - missedSince_.value_or(now);
    missedSince_ = now - missed;
    const bool isOurs = note && note->pid == startedPid_;
    if (isOurs || missed >= leaveToOthers)
        ensureRunning(this, [this](const Result<QUrl>& base) {
            missedSince_.reset();
            if (base)
                Q_EMIT revived();
        });
}

std::optional<LocalDriveLauncher::Note> LocalDriveLauncher::readNote() const {
    QFile file(pathInFolder("endpoint.json"));
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QJsonObject object = QJsonDocument::fromJson(file.readAll()).object();
    const Note note{QUrl(object.value(QStringLiteral("url")).toString()),
                    object.value(QStringLiteral("pid")).toInteger()};
    // Tokens go there: nothing but this computer will do, whatever the file says.
    const bool isHere = note.url.scheme() == QStringLiteral("http") && note.url.host() == QStringLiteral("127.0.0.1") &&
                        note.url.port() > 0;
    return isHere ? std::optional(note) : std::nullopt;
}

void LocalDriveLauncher::look() {
    timer_.reset();
    const auto note = readNote();
    if (note && isAlive(note->pid)) {
        probe_ = std::make_unique<QTcpSocket>();
        probe_->setProxy(QNetworkProxy::NoProxy); // the system's may not even know this computer
        connect(probe_.get(), &QTcpSocket::connected, this, [this, url = note->url] { finish(url); });
        connect(probe_.get(), &QTcpSocket::errorOccurred, this, [this] { lookAgainSoon(); });
        timer_ = timeSource_->startTimer(probePatience, [this] { lookAgainSoon(); });
        probe_->connectToHost(note->url.host(), static_cast<quint16>(note->url.port()));
        return;
    }
    if (!wasStartedNow_) {
        if (const auto error = startProgram())
            return finish(*error);
    } else if (hasStartedInVain()) {
        return finish(launchError(QStringLiteral("the local Drive ended as soon as it was started: ") + lastWords()));
    }
    lookAgainSoon();
}

// Called from the probe's own signals too.
void LocalDriveLauncher::dropProbe() {
    if (!probe_)
        return;
    probe_->disconnect(this);
    probe_.release()->deleteLater();
}

void LocalDriveLauncher::lookAgainSoon() {
    dropProbe();
    if (timeSource_->elapsed() >= deadline_) {
        return finish(launchError(QStringLiteral("the local Drive does not answer; its last words in ") +
                                  pathInFolder("localdrive.log") + QStringLiteral(" were: ") + lastWords()));
    }
    timer_ = timeSource_->startTimer(lookInterval, [this] { look(); });
}

MaybeError LocalDriveLauncher::startProgram() {
    if (auto made = makePrivateFolder(dataFolder_); !made)
        return made.error();
    QProcess process;
    process.setProgram(program_);
    QStringList arguments{QStringLiteral("--data"), QFile::decodeName(dataFolder_), QStringLiteral("--idle-exit"),
                          QString::fromLatin1(idleSeconds), QStringLiteral("--quiet")};
    // Invented people at work in it, so many times a minute.
    if (const QString rate = qEnvironmentVariable("QUENBY_LOCAL_ACTIVITY"); !rate.isEmpty())
        arguments += {QStringLiteral("--activity"), rate};
    process.setArguments(arguments);
    // It must hold neither our terminal, nor a pipe that somebody reads from us, nor our folder.
    process.setWorkingDirectory(QStringLiteral("/"));
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(pathInFolder("localdrive.log"), QIODevice::Truncate);
    if (!process.startDetached(&startedPid_))
        return launchError(QStringLiteral("can't start ") + program_ + QStringLiteral("; install it beside quenby"));
    wasStartedNow_ = true;
    return std::nullopt;
}

bool LocalDriveLauncher::hasStartedInVain() {
    if (isAlive(startedPid_)) {
        exitSeen_.reset();
        return false;
    }
    const auto now = timeSource_->elapsed();
    exitSeen_ = exitSeen_.value_or(now);
    return now - *exitSeen_ >= graceAfterExit;
}

void LocalDriveLauncher::finish(const Result<QUrl>& base) {
    isLooking_ = false;
    timer_.reset();
    dropProbe();
    for (const auto& gate : std::exchange(waiting_, {}))
        gate.deliver(base);
}

QString LocalDriveLauncher::lastWords() const {
    QFile file(pathInFolder("localdrive.log"));
    if (!file.open(QIODevice::ReadOnly))
        return QStringLiteral("(none)");
    constexpr qint64 enough = 1000; // bytes
    file.seek(std::max<qint64>(0, file.size() - enough));
    const QByteArray last = file.readAll().trimmed();
    return last.isEmpty() ? QStringLiteral("(none)") : QString::fromUtf8(last.mid(last.lastIndexOf('\n') + 1));
}

QString LocalDriveLauncher::pathInFolder(const char* name) const {
    return QDir(QFile::decodeName(dataFolder_)).filePath(QString::fromLatin1(name));
}

} // namespace quenby
