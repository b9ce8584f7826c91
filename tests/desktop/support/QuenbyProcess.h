// The real program on the virtual desktop, with a home and a local Drive of its own.
//
// Threads: the main thread. The calls run the event loop while they wait, and give up after QuenbyProcess::patience.
#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace quenby::testing {

// What stays between two starts: settings, caches and the local Drive's data. The keyring is not in it; it belongs to
// the virtual desktop, and so to the whole test program.
class QuenbyHome {
public:
    // With a folder, that one holds the local Drive's data, and whoever serves it ends by himself; such as
    // LocalDriveProcess::dataFolder().
    explicit QuenbyHome(const QString& driveFolder = {});
    // Ends the local Drive that was started here.
    ~QuenbyHome();
    QuenbyHome(const QuenbyHome&) = delete;
    QuenbyHome& operator=(const QuenbyHome&) = delete;

    QString path(const QString& name) const { return folder_.filePath(name); }
    QString driveFolder() const { return driveFolder_; }
    // The settings of a program that was started with --local.
    QString settingsPath() const;
    // Makes a file in the home, and gives its path.
    QString makeFile(const QString& name, const QByteArray& content) const;

    QProcessEnvironment& environment() { return environment_; }
    // Of the local Drive that runs on the data folder; 0 when there is none.
    qint64 localDrivePid() const;

private:
    QTemporaryDir folder_;
    const QString driveFolder_;
    const bool isOurs_;
    QProcessEnvironment environment_;
};

class QuenbyProcess {
public:
    static constexpr int patience = 60'000; // milliseconds

    explicit QuenbyProcess(QuenbyHome& home);
    // Ends the program with SIGTERM, or SIGKILL when that is of no use.
    ~QuenbyProcess();
    QuenbyProcess(const QuenbyProcess&) = delete;
    QuenbyProcess& operator=(const QuenbyProcess&) = delete;

    // Starts `quenby --local --local-data FOLDER ARGUMENTS...`. False when there is no such program.
    bool start(const QStringList& arguments = {});
    qint64 pid() const { return process_.processId(); }
    bool isRunning() const { return process_.state() != QProcess::NotRunning; }

    // Waits until the program has written a word of its launch trace, such as "gauge", so many times since its start.
    bool waitForTrace(const QByteArray& word, int times = 1);
    int countOfTrace(const QByteArray& word);
    // Waits until it has ended: its exit code, 128 + N after signal N, or -1 when it does not end.
    int waitForEnd();
    // SIGTERM, and waitForEnd().
    int terminate();

    // Everything that was written to standard output and standard error, of every start.
    const QByteArray& output();
    const QByteArray& errors();

    // Another call of the program beside this one, for a verb with --local and its --local-data: what it prints.
    // Empty when it fails, whose words are then in the test's log.
    QByteArray ask(const QStringList& arguments);

private:
    QuenbyHome& home_;
    QProcess process_;
    QByteArray output_;
    QByteArray errors_;
    qsizetype startOfErrors_ = 0; // of the present start
};

} // namespace quenby::testing
