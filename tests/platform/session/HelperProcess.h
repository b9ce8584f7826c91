// A running session_helper.
#pragma once

#include <QProcess>
#include <QTest>

#include <csignal>

namespace quenby::testing {

class HelperProcess {
public:
    explicit HelperProcess(const QStringList& arguments, const QProcessEnvironment& environment = {}) {
        process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        if (!environment.isEmpty())
            process_.setProcessEnvironment(environment);
        process_.start(QStringLiteral(QUENBY_SESSION_HELPER), arguments);
        process_.waitForStarted();
    }
    ~HelperProcess() {
        signal(SIGCONT);
        process_.closeWriteChannel();
        if (!process_.waitForFinished(20'000))
            process_.kill();
        process_.waitForFinished();
    }

    void signal(int number) const {
        if (process_.processId() > 0)
            ::kill(static_cast<pid_t>(process_.processId()), number);
    }
    // The next line that it says; empty when it ended without one.
    QByteArray nextLine() {
        const auto isThere = [this] { return process_.canReadLine() || process_.state() == QProcess::NotRunning; };
        [[maybe_unused]] const bool isInTime = QTest::qWaitFor(isThere, 20'000);
        return process_.readLine().trimmed();
    }
    // Waits for its end; the signal's number when one ended it.
    int endingSignal() {
        [[maybe_unused]] const bool isInTime =
            QTest::qWaitFor([this] { return process_.state() == QProcess::NotRunning; }, 20'000);
        return process_.exitStatus() == QProcess::CrashExit ? process_.exitCode() : 0;
    }
    bool isRunning() const { return process_.state() == QProcess::Running; }

private:
    QProcess process_;
};

} // namespace quenby::testing
