#include "workspace/downloads/Landing.h"

#include "core/FileMoves.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QThreadPool>

#include <cerrno>

#include <fcntl.h>
#include <stdio.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quenby {
namespace {

constexpr std::size_t copiedAtOnce = 1U << 20;
constexpr int oldAfterDays = 2; // nothing arrives for longer

QByteArray folderOf(const QByteArray& path) { return path.first(std::max<qsizetype>(path.lastIndexOf('/'), 1)); }
QByteArray nameOf(const QByteArray& path) { return path.mid(path.lastIndexOf('/') + 1); }

// The bytes are on the disk when it has succeeded. errno tells why it has not.
bool copyTo(const QByteArray& from, const QByteArray& to) {
    const int source = ::open(from.constData(), O_RDONLY | O_CLOEXEC);
    if (source < 0)
        return false;
    const int copy = ::open(to.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    ssize_t sent = copy < 0 ? -1 : 1;
    while (sent > 0)
        sent = ::sendfile(copy, source, nullptr, copiedAtOnce);
    const bool isWhole = sent == 0 && ::fsync(copy) == 0;
    const int error = errno;
    ::close(source);
    if (copy >= 0)
        ::close(copy);
    if (!isWhole && copy >= 0)
        ::unlink(to.constData());
    errno = error;
    return isWhole;
}

QByteArray nameArrival(const QByteArray& arrived, const QByteArray& destination, bool mayReplace) {
    if (!mayReplace)
        return renameIntoFolder(arrived, folderOf(destination), nameOf(destination));
    return ::rename(arrived.constData(), destination.constData()) == 0 ? destination : QByteArray();
}

QString reasonFor(int error, const QByteArray& destination) {
    const QString folder = QFile::decodeName(folderOf(destination));
    switch (error) {
    case ENOSPC:
    case EDQUOT:
        return QStringLiteral("There is no room for the file in “%1”. Free some space, or save it elsewhere.")
            .arg(folder);
    case EACCES:
    case EPERM:
    case EROFS:
        return QStringLiteral("Files cannot be written in “%1”. Save it in another folder.").arg(folder);
    case ENOENT:
        return QStringLiteral(
                   "The folder “%1”, or the file that had arrived, is not there any more. Download it again.")
            .arg(folder);
    default:
        return QStringLiteral("The file could not be saved in “%1” (%2).").arg(folder, qt_error_string(error));
    }
}

Result<QByteArray> landNow(const Landing& landing) {
    QByteArray path = nameArrival(landing.arrived, landing.destination, landing.mayReplace);
    if (path.isEmpty() && errno == EXDEV) {
        const QByteArray copy = arrivalPath(folderOf(landing.destination));
        if (copyTo(landing.arrived, copy)) {
            path = nameArrival(copy, landing.destination, landing.mayReplace);
            const int error = errno;
            ::unlink(path.isEmpty() ? copy.constData() : landing.arrived.constData());
            errno = error;
        }
    }
    if (!path.isEmpty())
        return path;
    const int error = errno;
    return Error(errorDomain::posix, error, {{errorKey::reason, reasonFor(error, landing.destination)}});
}

// With what an engine adds to the name while it writes.
QString arrivalPattern() { return QStringLiteral(".quenby-????????????????.part*"); }

} // namespace

CompletionTicket land(const Landing& landing, QObject* context,
                      std::function<void(const Result<QByteArray>& path)> done) {
    const CompletionGate<const Result<QByteArray>&> gate(context, std::move(done));
    QThreadPool::globalInstance()->start([landing, gate] { gate.deliver(landNow(landing)); });
    return gate.ticket();
}

QByteArray arrivalPath(const QByteArray& folder) {
    const quint64 number = QRandomGenerator::system()->generate64();
    return folder + "/.quenby-" + QByteArray::number(number, 16).rightJustified(16, '0') + ".part";
}

void removeOldArrivals(const QByteArray& folder) {
    QThreadPool::globalInstance()->start([folder] {
        const QDateTime limit = QDateTime::currentDateTimeUtc().addDays(-oldAfterDays);
        const QDir dir(QFile::decodeName(folder));
        for (const QFileInfo& file : dir.entryInfoList({arrivalPattern()}, QDir::Files | QDir::Hidden)) {
            if (file.lastModified() < limit)
                QFile::remove(file.filePath());
        }
    });
}

} // namespace quenby
