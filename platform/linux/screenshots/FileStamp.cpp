#include "platform/linux/screenshots/FileStamp.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace quenby {
namespace {

constexpr qint64 nanosecondsInMillisecond = 1'000'000;

qint64 nanoseconds(const struct statx_timestamp& time) {
    return qint64(time.tv_sec) * 1000 * nanosecondsInMillisecond + time.tv_nsec;
}

std::optional<FileStamp> stampOf(int folder, const char* path, int flags) {
    struct statx about {};
    if (::statx(folder, path, flags | AT_NO_AUTOMOUNT, STATX_BASIC_STATS | STATX_BTIME, &about) != 0)
        return {};
    FileStamp stamp;
    stamp.device = makedev(about.stx_dev_major, about.stx_dev_minor);
    stamp.inode = about.stx_ino;
    stamp.size = static_cast<qint64>(about.stx_size);
    stamp.isRegular = S_ISREG(about.stx_mode);
    // Some file systems claim to know it and say 1970.
    if ((about.stx_mask & STATX_BTIME) != 0 && about.stx_btime.tv_sec > 0)
        stamp.birth = nanoseconds(about.stx_btime) / nanosecondsInMillisecond;
    stamp.contentsChanged = nanoseconds(about.stx_mtime);
    stamp.attributesChanged = nanoseconds(about.stx_ctime);
    return stamp;
}

} // namespace

std::optional<FileStamp> FileStamp::of(const QByteArray& path) {
    return stampOf(AT_FDCWD, path.constData(), AT_SYMLINK_NOFOLLOW);
}

std::optional<FileStamp> FileStamp::of(int descriptor) { return stampOf(descriptor, "", AT_EMPTY_PATH); }

std::optional<FileStamp> FileStamp::ofTarget(const QByteArray& path) { return stampOf(AT_FDCWD, path.constData(), 0); }

qint64 FileStamp::creation() const {
    return birth.value_or(qMin(contentsChanged, attributesChanged) / nanosecondsInMillisecond);
}

QDateTime FileStamp::creationDate() const { return QDateTime::fromMSecsSinceEpoch(creation(), Qt::UTC); }

} // namespace quenby
