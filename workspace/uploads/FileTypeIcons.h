// The desktop's pictures of file types, by a file's name alone: no file is read, whatever disk it lies on.
//
// Threads: the main thread.
#pragma once

#include <QCache>
#include <QHash>
#include <QIcon>
#include <QMimeDatabase>
#include <QString>

namespace quenby {

class FileTypeIcons {
public:
    // Never null.
    QIcon icon(const QString& fileName);

private:
    QIcon iconOfType(const QMimeType& type);

    QMimeDatabase types_;
    QCache<QString, QIcon> byFileName_{500}; // looking at a name costs more than painting its row
    QHash<QString, QIcon> byType_;
};

} // namespace quenby
