// The virtual desktop that a test runs in: its parts come and go, and somebody uses its pointer and keys.
#pragma once

#include <QPoint>
#include <QProcess>
#include <QStringList>

#include <csignal>

namespace quenby::testing {

// What the command wrote; empty when it failed.
inline QByteArray outputOf(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(program, arguments);
    process.waitForFinished(60'000);
    const bool isGood = process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
    return isGood ? process.readAllStandardOutput().trimmed() : QByteArray();
}

// Real input, as the display's server makes of it. Several commands may follow one another, as xdotool takes them.
inline void useInput(const QString& commands) {
    outputOf(QStringLiteral("xdotool"), commands.split(QLatin1Char(' '), Qt::SkipEmptyParts));
}
inline void clickAt(const QPoint& position, int button = 1) {
    useInput(QStringLiteral("mousemove %1 %2 click %3").arg(position.x()).arg(position.y()).arg(button));
}

// A part of the desktop that can be ended and started anew, such as "panel" or "notifications".
class DesktopPart {
public:
    // The running one, if the desktop was started with it.
    explicit DesktopPart(const QString& name)
        : name_(name)
        , process_(qEnvironmentVariableIntValue(
              QByteArray("QUENBY_DESKTOP_" + name.toUpper().toLatin1() + "_PID").constData())) {}

    bool isRunning() const { return process_ > 0; }
    void end() {
        if (isRunning())
            ::kill(std::exchange(process_, 0), SIGTERM);
    }
    // Starts it if it does not run, and waits until it works.
    void start(const QString& kind) {
        if (!isRunning())
            process_ = outputOf(QStringLiteral(QUENBY_DESKTOP_SCRIPTS "/start.sh"), {name_, kind}).toInt();
    }

private:
    QString name_;
    pid_t process_;
};

} // namespace quenby::testing
