// The program that shows the moving pattern (MovingPattern.h), run by a test.
#pragma once

#include <QProcess>
#include <QRect>
#include <QTemporaryDir>

#include <chrono>
#include <vector>

namespace quenby::testing {

// Threads: the one that made it. The calls block; each gives up after 30 seconds. The program ends with the object.
class PatternProcess {
public:
    PatternProcess() = default;
    ~PatternProcess();
    PatternProcess(const PatternProcess&) = delete;
    PatternProcess& operator=(const PatternProcess&) = delete;

    // Covers this part of the screen, in pixels, with so many pictures a second. False when it does not come up.
    bool start(const QRect& place, int rate, const QString& display = qEnvironmentVariable("DISPLAY"));
    void stop();

    // When each picture was on the screen, by its number. The last may be missing while the program runs.
    using Clock = std::chrono::steady_clock;
    std::vector<Clock::time_point> shown() const;

private:
    QString logPath() const { return folder_.filePath(QStringLiteral("shown")); }

    QTemporaryDir folder_;
    QProcess process_;
};

} // namespace quenby::testing
