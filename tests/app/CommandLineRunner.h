// Runs the program quenby in a home of its own, so that nothing of the user's is read or written.
#pragma once

#include <QJsonObject>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>

namespace quenby::testing {

struct Ended {
    int exitCode = -1; // 128 + N after signal N; -1 when it did not end in time
    QByteArray output;
    QByteArray errors;

    // The objects of a --json call's output; a line that is none gives an empty object.
    QList<QJsonObject> objects() const;
    QJsonObject object() const { return objects().value(0); }
};

// Threads: the one that made it. The calls block; each gives up after 60 seconds.
class CommandLineRunner {
public:
    CommandLineRunner();
    // Ends the local Drive that a call has started, and removes the home.
    ~CommandLineRunner();

    Ended run(const QStringList& arguments);
    // Runs a line of the shell, in which "$0" is the program.
    Ended runInShell(const QString& line);
    // For calls that are watched or ended from outside.
    std::unique_ptr<QProcess> start(const QStringList& arguments);
    Ended waitFor(QProcess& process);
    // Waits until the program has written the text; gathers what it wrote.
    static bool waitForText(QProcess& process, QProcess::ProcessChannel channel, const QByteArray& text,
                            QByteArray& written);

    void setEnvironment(const QString& name, const QString& value) { environment_.insert(name, value); }

    QString path(const QString& name) const { return home_.filePath(name); }
    QString tokenPath() const { return path(QStringLiteral("state/quenby/local-drive-token")); }
    // Of the local Drive that a call has started; 0 when there is none.
    qint64 localDrivePid() const;

    // Makes a file in the home, folders included. The name may be any bytes.
    QString makeFile(const QByteArray& name, const QByteArray& content) const;
    static QByteArray contentOf(const QString& path);

    // Everything that every call has written so far.
    const QByteArray& everythingWritten() const { return everythingWritten_; }

private:
    std::unique_ptr<QProcess> startProgram(const QString& program, const QStringList& arguments);

    QTemporaryDir home_;
    QProcessEnvironment environment_;
    QByteArray everythingWritten_;
};

} // namespace quenby::testing
