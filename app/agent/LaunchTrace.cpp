#include "app/agent/LaunchTrace.h"

#include <QByteArray>
#include <QFile>

#include <cstdio>
#include <ctime>

#include <unistd.h>

namespace quenby {
namespace {

// Field 22 of proc(5)'s stat, in clock ticks since the machine started; the program's name, field 2, may hold anything
// but ends with the last parenthesis.
double processStart() {
    QFile file(QStringLiteral("/proc/self/stat"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray stat = file.readAll();
    constexpr int fieldsAfterName = 22 - 3;
    const QList<QByteArray> fields = stat.mid(stat.lastIndexOf(')') + 2).split(' ');
    return fields.value(fieldsAfterName).toDouble() / static_cast<double>(sysconf(_SC_CLK_TCK));
}

} // namespace

void traceLaunch(const char* word) {
    if (!qEnvironmentVariableIsSet("QUENBY_LAUNCH_TRACE"))
        return;
    timespec now{};
    clock_gettime(CLOCK_BOOTTIME, &now);
    const double seconds = static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9 - processStart();
    std::fprintf(stderr, "quenby-launch %.0f %s\n", seconds * 1000, word);
}

} // namespace quenby
