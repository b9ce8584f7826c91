#include "platform/linux/login/EntryFile.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quenby {
namespace {

constexpr qsizetype largestEntry = 1 << 20; // bytes; far beyond any
constexpr mode_t modeOfFile = 0644;
constexpr mode_t modeOfFolder = 0700; // as the base directories' rules have it
constexpr int mostLinks = 40;         // one after the other, as for the kernel

class Descriptor {
public:
    explicit Descriptor(int number)
        : number_(number) {}
    ~Descriptor() { close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    bool isOpen() const { return number_ >= 0; }
    int number() const { return number_; }
    bool close() { return number_ < 0 || ::close(std::exchange(number_, -1)) == 0; }

private:
    int number_;
};

QByteArray folderOf(const QByteArray& path) {
    const qsizetype slash = path.lastIndexOf('/');
    return slash <= 0 ? QByteArray("/") : path.first(slash);
}

QString remedy(int code) {
    switch (code) {
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
        return QStringLiteral("Make room on that disk and try again.");
    case ENOTDIR:
    case EEXIST:
        return QStringLiteral("Something else has the name of that folder or of one above it: move it away and try "
                              "again.");
    case EISDIR:
        return QStringLiteral("A folder has the name of the entry: move it away and try again.");
    case ENOENT:
        return QStringLiteral("The link that stands there leads nowhere: mend or remove it, and try again.");
    default:
        return QStringLiteral("Make sure that you may read and write there, and try again.");
    }
}

// Of errno.
Error entryError(const QByteArray& path, int code = errno) {
    return Error(errorDomain::posix, code,
                 {{errorKey::reason,
                   QStringLiteral("The entry %1, by which your desktop starts Quenby, could not be changed: %2. %3")
                       .arg(QFile::decodeName(path), QString::fromLocal8Bit(std::strerror(code)), remedy(code))}});
}

bool makeFolders(const QByteArray& folder) {
    if (::mkdir(folder.constData(), modeOfFolder) == 0)
        return true;
    if (errno == EEXIST) {
        struct ::stat about {};
        if (::stat(folder.constData(), &about) == 0 && S_ISDIR(about.st_mode))
            return true;
        errno = ENOTDIR;
        return false;
    }
    if (errno != ENOENT || folder == "/" || !makeFolders(folderOf(folder)))
        return false;
    return ::mkdir(folder.constData(), modeOfFolder) == 0 || errno == EEXIST;
}

// Where the links lead, also when nothing is there yet. A link to something that is no file counts as none.
QByteArray fileBehindLinks(const QByteArray& path) {
    struct ::stat about {};
    if (::stat(path.constData(), &about) == 0 && !S_ISREG(about.st_mode))
        return path;
    QByteArray file = path;
    for (int i = 0; i < mostLinks; ++i) {
        char target[PATH_MAX];
        const ssize_t length = ::readlink(file.constData(), target, sizeof target);
        if (length < 0)
            return file;
        const QByteArray next(target, length);
        file = next.startsWith('/') ? next : folderOf(file) + '/' + next;
    }
    return path;
}

bool writeAll(int descriptor, const QByteArray& text) {
    for (qsizetype written = 0; written < text.size();) {
        const ssize_t count = ::write(descriptor, text.constData() + written, text.size() - written);
        if (count < 0 && errno != EINTR)
            return false;
        written += std::max<ssize_t>(count, 0);
    }
    return true;
}

mode_t modeFor(const QByteArray& file) {
    struct ::stat about {};
    return ::stat(file.constData(), &about) == 0 && S_ISREG(about.st_mode) ? about.st_mode & 07777 : modeOfFile;
}

} // namespace

Result<std::optional<QByteArray>> readEntryFile(const QByteArray& path) {
    // Whatever it is, opening it waits for nobody.
    const Descriptor file(::open(path.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file.isOpen() && (errno == ENOENT || errno == ENOTDIR))
        return std::optional<QByteArray>();
    struct ::stat about {};
    if (!file.isOpen() || ::fstat(file.number(), &about) != 0)
        return entryError(path);
    if (S_ISDIR(about.st_mode))
        return entryError(path, EISDIR);
    if (!S_ISREG(about.st_mode) || about.st_size > largestEntry)
        return std::optional(QByteArray());
    QByteArray text(about.st_size, Qt::Uninitialized);
    const ssize_t length = ::read(file.number(), text.data(), text.size());
    if (length < 0)
        return entryError(path);
    text.truncate(length);
    return std::optional(text);
}

MaybeError writeEntryFile(const QByteArray& path, const QByteArray& text) {
    const QByteArray file = fileBehindLinks(path);
    if (file == path && !makeFolders(folderOf(path)))
        return entryError(path);
    // No desktop takes it for an entry.
    QByteArray hidden = folderOf(file) + "/.quenby-XXXXXX";
    Descriptor whole(::mkostemp(hidden.data(), O_CLOEXEC));
    if (!whole.isOpen())
        return entryError(path);
    const bool isThere = ::fchmod(whole.number(), modeFor(file)) == 0 && writeAll(whole.number(), text) &&
                         ::fsync(whole.number()) == 0 && whole.close() &&
                         ::rename(hidden.constData(), file.constData()) == 0;
    if (isThere)
        return std::nullopt;
    const Error error = entryError(path);
    ::unlink(hidden.constData());
    return error;
}

bool isLink(const QByteArray& path) {
    struct ::stat about {};
    return ::lstat(path.constData(), &about) == 0 && S_ISLNK(about.st_mode);
}

MaybeError removeEntryFile(const QByteArray& path) {
    if (::unlink(path.constData()) == 0 || errno == ENOENT)
        return std::nullopt;
    return entryError(path);
}

} // namespace quenby
