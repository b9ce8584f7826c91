#include "preferences/general/FolderTrouble.h"

#include "core/FolderBookmark.h"

#include <QCoreApplication>

#include <cerrno>

#include <unistd.h>

namespace quenby {
namespace {

struct FolderTrouble {
    Q_DECLARE_TR_FUNCTIONS(quenby::FolderTrouble)
};

QString sentenceFor(qint64 code, const QString& path) {
    switch (code) {
    case EINVAL:
        return FolderTrouble::tr("It is not known any more which folder was meant. Choose the folder again.");
    case ESTALE:
        return FolderTrouble::tr("%1 is not the folder that was chosen: that one was replaced, or its disk is not "
                                 "connected. Connect the disk, or choose the folder again.")
            .arg(path);
    case ENOENT:
    case ENOTDIR:
        return FolderTrouble::tr("%1 is not there any more: it was moved or removed, or its disk is not connected. "
                                 "Connect the disk, or choose the folder again.")
            .arg(path);
    case EACCES:
    case EPERM:
        return FolderTrouble::tr("You have no permission to read %1. Change its permissions, or choose another folder.")
            .arg(path);
    default:
        return FolderTrouble::tr("%1 does not answer. Check the disk or the network that it lies on, or choose "
                                 "another folder.")
            .arg(path);
    }
}

} // namespace

QString folderTrouble(const QString& path, const QByteArray& bookmark) {
    const auto folder = resolveFolderBookmark(bookmark);
    if (!folder)
        return sentenceFor(folder.error().code(), path);
    return ::access(folder->constData(), R_OK | X_OK) == 0 ? QString() : sentenceFor(errno, path);
}

} // namespace quenby
