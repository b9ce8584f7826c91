#include "platform/linux/screencapture/ProcessScreenCaptureTool.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <cerrno>
#include <csignal>

#include <sys/prctl.h>

namespace quenby {
namespace {

constexpr qsizetype mostWords = 1000; // bytes of what the tool says that are kept
constexpr int endPatience = 1000;     // milliseconds

Error toolError(int code, const QString& reason) {
    return Error(errorDomain::posix, code, {{errorKey::reason, reason}});
}

QString installed(const QString& program) {
    if (!program.startsWith(QLatin1Char('/')))
        return QStandardPaths::findExecutable(program);
    const QFileInfo file(program);
    return file.isFile() && file.isExecutable() ? program : QString();
}

// The tool's sentence is its last line; some say more on the way there.
QString sentence(const QByteArray& words) {
    const QList<QByteArray> lines = words.trimmed().split('\n');
    return QString::fromUtf8(lines.last()).simplified();
}

} // namespace

struct ProcessScreenCaptureTool::Run {
    // It is let go while it tells of its end.
    struct Later {
        void operator()(QProcess* process) const { process->deleteLater(); }
    };
    std::unique_ptr<QProcess, Later> process{new QProcess};
    CompletionGate<MaybeError> ended;
    QByteArray cancelWord;
    QByteArray words;
};

QList<ProcessScreenCaptureTool::Command> ProcessScreenCaptureTool::standardCommands() {
    const QString name = QStringLiteral("/quenby-screencapture");
    const QStringList interactively{QStringLiteral("-i")};
    return {
        {QCoreApplication::applicationDirPath() + name, interactively},
        {QStringLiteral(QUENBY_PROGRAM_FOLDER) + name, interactively},
        // Without the pointer (-u), and a selection (-s).
        {QStringLiteral("maim"), {QStringLiteral("-u"), QStringLiteral("-s")}, QByteArrayLiteral("cancel")},
    };
}

ProcessScreenCaptureTool::ProcessScreenCaptureTool(const QList<Command>& commands)
    : commands_(commands) {}

ProcessScreenCaptureTool::~ProcessScreenCaptureTool() {
    if (!run_)
        return;
    const std::unique_ptr<QProcess> process(run_->process.release());
    process->disconnect(this);
    process->terminate();
    if (!process->waitForFinished(endPatience)) {
        process->kill();
        process->waitForFinished(endPatience);
    }
}

QString ProcessScreenCaptureTool::unavailableBecause() const {
    if (installedCommand(nullptr))
        return {};
    return QStringLiteral("Pictures of the screen cannot be taken, because the program quenby-screencapture is "
                          "missing. Install Quenby again, or install maim (on Debian: apt install maim).");
}

const ProcessScreenCaptureTool::Command* ProcessScreenCaptureTool::installedCommand(QString* program) const {
    for (const Command& command : commands_) {
        const QString path = installed(command.program);
        if (path.isEmpty())
            continue;
        if (program)
            *program = path;
        return &command;
    }
    return nullptr;
}

void ProcessScreenCaptureTool::capture(const QByteArray& path, QObject* context, Ended ended) {
    CompletionGate<MaybeError> gate(context, std::move(ended));
    const auto refuse = [&gate](int code, const QString& reason) { gate.deliver(toolError(code, reason)); };
    if (run_)
        return refuse(EBUSY, QStringLiteral("A part of the screen is being chosen already. Finish that first."));
    QString program;
    const Command* const command = installedCommand(&program);
    if (!command)
        return refuse(ENOENT, unavailableBecause());
    const QString argument = QFile::decodeName(path);
    // A process takes its arguments from text: other bytes would lead to another file.
    if (QFile::encodeName(argument) != path)
        return refuse(EILSEQ, QStringLiteral("The picture could not be saved, because its folder's path is not UTF-8. "
                                             "Rename that folder."));
    run_ = std::make_unique<Run>();
    run_->ended = std::move(gate);
    run_->cancelWord = command->cancelWord;
    QProcess& process = *run_->process;
    process.setProgram(program);
    process.setArguments(command->arguments + QStringList{argument});
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardOutputFile(QProcess::nullDevice());
    // An overlay that holds the pointer and the keyboard must not outlive whoever waits for it.
    process.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGTERM); });
    connect(&process, &QProcess::readyReadStandardError, this, &ProcessScreenCaptureTool::readWords);
    connect(&process, &QProcess::finished, this, &ProcessScreenCaptureTool::finish);
    connect(&process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            finish();
    });
    process.start();
}

void ProcessScreenCaptureTool::readWords() {
    const QByteArray words = run_->words + run_->process->readAllStandardError();
    run_->words = words.last(std::min(mostWords, words.size()));
}

void ProcessScreenCaptureTool::finish() {
    if (!run_)
        return;
    readWords();
    const auto run = std::move(run_);
    const QProcess& process = *run->process;
    const QString words = sentence(run->words);
    const QString program = QFileInfo(process.program()).fileName();
    if (process.error() == QProcess::FailedToStart)
        run->ended.deliver(MaybeError(toolError(
            ENOEXEC, QStringLiteral("The program %1 could not be started. Install Quenby again.").arg(program))));
    else if (process.exitStatus() == QProcess::CrashExit)
        run->ended.deliver(MaybeError(toolError(
            ECHILD, QStringLiteral("The program %1 ended unexpectedly. Take the picture again.").arg(program))));
    else if (process.exitCode() == 0 || (!run->cancelWord.isEmpty() && run->words.contains(run->cancelWord)))
        run->ended.deliver(MaybeError());
    else
        run->ended.deliver(MaybeError(toolError(
            EIO, words.isEmpty() ? QStringLiteral("The program %1 could not take the picture.").arg(program) : words)));
}

} // namespace quenby
