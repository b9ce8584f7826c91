#include "app/cli/TokenFile.h"

#include "app/cli/DisplayText.h"
#include "app/cli/Folders.h"
#include "app/cli/OwnedDescriptor.h"

#include <QFile>
#include <QRandomGenerator>
#include <QUrlQuery>

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quenby {
namespace {

constexpr qint64 longestToken = 64 * 1024; // bytes; whatever is longer was not written by us

Error damaged(const QByteArray& path, const QString& why) {
    const QString reason =
        QStringLiteral("the sign-in kept in ") + printablePath(path) + QStringLiteral(" can't be used: ") + why;
    return Error(errorDomain::posix, EBADMSG, {{errorKey::reason, reason}});
}

bool writeDurably(int descriptor, const QByteArray& content) {
    QFile file;
    return file.open(descriptor, QIODevice::WriteOnly | QIODevice::Unbuffered) &&
           file.write(content) == content.size() && ::fsync(descriptor) == 0;
}

void syncFolder(const QByteArray& folder) {
    const OwnedDescriptor descriptor(::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (descriptor)
        ::fsync(descriptor.get());
}

} // namespace

TokenFile::TokenFile(QByteArray path)
    : path_(std::move(path)) {}

Result<QString> TokenFile::load() const {
    // Neither a link nor a pipe is followed or waited for.
    const OwnedDescriptor file(::open(path_.constData(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    if (!file) {
        if (errno == ENOENT)
            return QString();
        return fileError(errno, QStringLiteral("can't read the sign-in kept in"), path_);
    }
    struct stat status {};
    if (::fstat(file.get(), &status) != 0)
        return fileError(errno, QStringLiteral("can't examine"), path_);
    if (!S_ISREG(status.st_mode) || status.st_uid != ::geteuid())
        return damaged(path_, QStringLiteral("it is no regular file of this user"));
    if ((status.st_mode & (S_IRWXG | S_IRWXO)) && ::fchmod(file.get(), S_IRUSR | S_IWUSR) != 0)
        return fileError(errno, QStringLiteral("can't close to others the file"), path_);

    QFile content;
    if (!content.open(file.get(), QIODevice::ReadOnly))
        return damaged(path_, QStringLiteral("it can't be read"));
    const QByteArray text = content.read(longestToken + 1);
    const bool isKnown = text.size() <= longestToken &&
                         !QUrlQuery(QString::fromUtf8(text)).queryItemValue(QStringLiteral("refresh_token")).isEmpty();
    if (!isKnown)
        return damaged(path_, QStringLiteral("it is damaged"));
    return QString::fromUtf8(text);
}

Result<void> TokenFile::save(const QString& persistenceString) const {
    const QByteArray folder = folderOf(path_);
    if (auto made = makePrivateFolder(folder); !made)
        return made;

    const QByteArray temporary = path_ + '.' + QByteArray::number(QRandomGenerator::system()->generate64(), 16);
    const auto failed = [&](int code) {
        ::unlink(temporary.constData());
        return fileError(code, QStringLiteral("can't keep the sign-in in"), path_);
    };
    {
        const OwnedDescriptor file(
            ::open(temporary.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR));
        if (!file)
            return fileError(errno, QStringLiteral("can't keep the sign-in in"), path_);
        if (!writeDurably(file.get(), persistenceString.toUtf8()))
            return failed(errno);
    }
    if (::rename(temporary.constData(), path_.constData()) != 0)
        return failed(errno);
    syncFolder(folder);
    return {};
}

} // namespace quenby
