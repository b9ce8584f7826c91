#include "app/recording/InterruptedRecordings.h"

#include "core/FileMoves.h"
#include "platform/CaptureSession.h"

#include <QDir>
#include <QFile>

namespace quenby {
namespace {

const QByteArray extension = QByteArrayLiteral(".part");

} // namespace

QList<QByteArray> recoverInterruptedRecordings(const QString& folder) {
    QList<QByteArray> movies;
    const QFileInfoList unfinished = QDir(folder).entryInfoList(
        {QStringLiteral(".*.mov.part")}, QDir::Files | QDir::Hidden | QDir::NoSymLinks, QDir::Time | QDir::Reversed);
    for (const QFileInfo& file : unfinished) {
        const QByteArray path = QFile::encodeName(file.filePath());
        if (file.size() == 0) {
            QFile::remove(file.filePath());
            continue;
        }
        // The name of the movie, without what unfinishedMoviePath() put around it.
        const QByteArray name = QFile::encodeName(file.fileName()).sliced(1).chopped(extension.size());
        const QByteArray movie = renameIntoFolder(path, QFile::encodeName(folder), name);
        if (!movie.isEmpty())
            movies.append(movie);
    }
    return movies;
}

} // namespace quenby
