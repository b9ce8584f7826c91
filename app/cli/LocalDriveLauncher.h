// Finds the local Drive of a data folder, or starts it: the program quenby-localdrive beside our own, detached, so that
// it outlives us and ends by itself when nobody uses it.
//
// Threads: the main thread alone.
#pragma once

#include "core/CompletionGate.h"
#include "core/Result.h"
#include "core/TimeSource.h"

#include <QObject>
#include <QUrl>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

class QTcpSocket;

namespace quenby {

class LocalDriveLauncher : public QObject {
    Q_OBJECT

public:
    // Where it listens, such as http://127.0.0.1:4711, or why there is none.
    using Ready = std::function<void(const Result<QUrl>& base)>;

    // The data folder is made when it is missing; the program is the path of quenby-localdrive.
    LocalDriveLauncher(QByteArray dataFolder, QString program, std::shared_ptr<TimeSource> timeSource);
    ~LocalDriveLauncher() override;

    // Calls back once it accepts connections; it is started when it doesn't run. Calls made meanwhile share the answer.
    void ensureRunning(QObject* context, Ready ready);

    // Starts it again if it has died. One that somebody else started is first left to them for a while. Does nothing
    // while it lives.
    void revive();

Q_SIGNALS:
    // After revive(): it was started again and answers.
    void revived();

private:
    // What endpoint.json in the data folder says.
    struct Note {
        QUrl url;
        qint64 pid = 0;
    };

    std::optional<Note> readNote() const;
    void look();
    void lookAgainSoon();
    void dropProbe();
    MaybeError startProgram();
    bool hasStartedInVain();
    void finish(const Result<QUrl>& base);
    QString lastWords() const;
    QString pathInFolder(const char* name) const;

    const QByteArray dataFolder_;
    const QString program_;
    const std::shared_ptr<TimeSource> timeSource_;

    std::vector<CompletionGate<Result<QUrl>>> waiting_;
    bool isLooking_ = false;
    std::chrono::milliseconds deadline_{};
    std::unique_ptr<Timer> timer_;
    std::unique_ptr<QTcpSocket> probe_;

    qint64 startedPid_ = 0; // the one that this object started last; 0: none
    bool wasStartedNow_ = false;
    std::optional<std::chrono::milliseconds> exitSeen_;    // when the one we started was found gone
    std::optional<std::chrono::milliseconds> missedSince_; // since when somebody else's is known to be dead
};

} // namespace quenby
