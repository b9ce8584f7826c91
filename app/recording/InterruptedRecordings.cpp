#include "app/recording/InterruptedRecordings.h"

#include "core/FileMoves.h"

#include <QDir>
#include <QFile>
#include <QtEndian>

namespace quenby {
namespace {

const QByteArray extension = QByteArrayLiteral(".part");

// Whether the movie's header, the atom "moov", has been written: without it nothing can be played. It comes within the
// first two seconds. (QuickTime File Format: each atom begins with its size and its type, the bytes big-endian.)
bool hasHeader(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    constexpr qint64 longestSearch = 64; // atoms
    for (qint64 begin = 0, atom = 0; atom < longestSearch && file.seek(begin); ++atom) {
        const QByteArray head = file.read(16);
        if (head.size() < 8 || head.sliced(4, 4) == "moov")
            return head.size() >= 8;
        quint64 size = qFromBigEndian<quint32>(head.constData());
        if (size == 1 && head.size() == 16) // a long one
            size = qFromBigEndian<quint64>(head.constData() + 8);
        if (size < 8 || size > quint64(file.size() - begin))
            return false;
        begin += qint64(size);
    }
    return false;
}

void nameUnfinished(const QDir& folder) {
    const QFileInfoList unfinished =
        folder.entryInfoList({QStringLiteral(".*.mov.part")}, QDir::Files | QDir::Hidden | QDir::NoSymLinks);
    for (const QFileInfo& file : unfinished) {
        // The name of the movie, without what unfinishedMoviePath() put around it.
        const QByteArray name = QFile::encodeName(file.fileName()).sliced(1).chopped(extension.size());
        if (!hasHeader(file.filePath()))
            QFile::remove(file.filePath());
        else
            renameIntoFolder(QFile::encodeName(file.filePath()), QFile::encodeName(folder.path()), name);
    }
}

} // namespace

QList<QByteArray> recoverInterruptedRecordings(const QString& folder) {
    nameUnfinished(QDir(folder));
    QList<QByteArray> movies;
    for (const QFileInfo& file : QDir(folder).entryInfoList({QStringLiteral("*.mov")}, QDir::Files | QDir::NoSymLinks,
                                                            QDir::Time | QDir::Reversed))
        movies.append(QFile::encodeName(file.filePath()));
    return movies;
}

} // namespace quenby
