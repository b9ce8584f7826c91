// The tool as a child process: our own quenby-screencapture, else an installed one. Both are told the path of the
// picture. The child ends with this object, and with this program however it ends.
#pragma once

#include "platform/ScreenCaptureTool.h"

#include <QList>
#include <QObject>
#include <QProcess>
#include <QStringList>

#include <memory>

namespace quenby {

class ProcessScreenCaptureTool final : public QObject, public ScreenCaptureTool {
    Q_OBJECT

public:
    struct Command {
        QString program;       // an absolute path, or a name that is looked for in PATH
        QStringList arguments; // the picture's path follows them
        // It ends with a failure when the user cancels, and says so with this word; empty: it does not.
        QByteArray cancelWord = {};
    };
    // Ours beside the running program and where it was installed, then the desktop's.
    static QList<Command> standardCommands();

    // The first that is installed is used.
    explicit ProcessScreenCaptureTool(const QList<Command>& commands = standardCommands());
    ~ProcessScreenCaptureTool() override;

    QString unavailableBecause() const override;
    // While one is running, another call fails at once (EBUSY) and changes nothing.
    void capture(const QByteArray& path, QObject* context, Ended ended) override;

private:
    struct Run;

    const Command* installedCommand(QString* program) const;
    void readWords();
    void finish();

    QList<Command> commands_;
    std::unique_ptr<Run> run_; // null: none
};

} // namespace quenby
