#include "app/recording/InterruptedRecordings.h"

#include "core/FileMoves.h"

#include <QDir>
#include <QFile>

namespace quenby {
namespace {

const QByteArray extension = QByteArrayLiteral(".part");

void nameUnfinished(const QDir& folder) {
    const QFileInfoList unfinished =
        folder.entryInfoList({QStringLiteral(".*.mov.part")}, QDir::Files | QDir::Hidden | QDir::NoSymLinks);
    for (const QFileInfo& file : unfinished) {
        // The name of the movie, without what unfinishedMoviePath() put around it.
        const QByteArray name = QFile::encodeName(file.fileName()).sliced(1).chopped(extension.size());
        if (file.size() == 0)
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
