#include "tests/support/PatternProcess.h"

#include <QFile>

namespace quenby::testing {
namespace {

constexpr int patience = 30'000; // milliseconds

} // namespace

PatternProcess::~PatternProcess() { stop(); }

bool PatternProcess::start(const QRect& place, int rate, const QString& display) {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("DISPLAY"), display);
    process_.setProcessEnvironment(environment);
    process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    QStringList arguments;
    for (const int number : {place.x(), place.y(), place.width(), place.height(), rate})
        arguments.append(QString::number(number));
    process_.start(QStringLiteral(QUENBY_MOVING_PATTERN), arguments << logPath());
    while (!process_.canReadLine()) {
        if (!process_.waitForReadyRead(patience))
            return false;
    }
    return process_.readLine() == "ready\n";
}

void PatternProcess::stop() {
    process_.terminate();
    process_.waitForFinished(patience);
}

std::vector<PatternProcess::Clock::time_point> PatternProcess::shown() const {
    std::vector<Clock::time_point> times;
    QFile file(logPath());
    if (!file.open(QIODevice::ReadOnly))
        return times;
    for (QByteArray line = file.readLine(); line.endsWith('\n'); line = file.readLine()) {
        const qint64 time = line.mid(line.indexOf(' ')).trimmed().toLongLong();
        times.emplace_back(std::chrono::nanoseconds(time));
    }
    return times;
}

} // namespace quenby::testing
