#include "app/uploads/transfer/SourceFacts.h"

#include "app/uploads/transfer/SourceRefusal.h"

#include <algorithm>
#include <limits>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quenby {
namespace {

constexpr qint64 nsPerSecond = 1'000'000'000;

// A date beyond what fits, which is some year 2262, counts as the last one that does.
qint64 nanoseconds(const timespec& time) {
    constexpr qint64 most = std::numeric_limits<qint64>::max() / nsPerSecond - 1;
    return std::clamp<qint64>(time.tv_sec, -most, most) * nsPerSecond + time.tv_nsec;
}

} // namespace

SourceFacts SourceFacts::of(const struct stat& status) { return {status.st_size, nanoseconds(status.st_mtim)}; }

Result<SourceFacts> SourceFacts::of(const QByteArray& path) {
    struct stat status {};
    if (::stat(path.constData(), &status) != 0)
        return openError(path);
    if (const auto refused = refuseSpecialFile(status.st_mode))
        return *refused;
    if (::faccessat(AT_FDCWD, path.constData(), R_OK, AT_EACCESS) != 0)
        return openError(path);
    return of(status);
}

} // namespace quenby
