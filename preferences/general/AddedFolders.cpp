#include "preferences/general/AddedFolders.h"

#include "core/DefaultsKeys.h"
#include "platform/Defaults.h"
#include "preferences/general/FolderPaths.h"

#include <QFile>
#include <QStringList>

namespace quenby {

QList<QByteArray> addedFolders(const Defaults& defaults) {
    const QVariant value = defaults.valueForKey(defaultsKey::screenshotFolders);
    // A list of one text comes back from a settings file as the text.
    if (value.typeId() != QMetaType::QStringList && value.typeId() != QMetaType::QString)
        return {};
    QList<QByteArray> folders;
    for (const QString& path : value.toStringList()) {
        const QByteArray folder = cleanedPath(QFile::encodeName(path));
        if (folder.startsWith('/') && !folders.contains(folder))
            folders.append(folder);
    }
    return folders;
}

void setAddedFolders(Defaults& defaults, const QList<QByteArray>& folders) {
    QStringList paths;
    for (const QByteArray& folder : folders)
        paths.append(QFile::decodeName(folder));
    if (paths.isEmpty())
        defaults.removeValueForKey(defaultsKey::screenshotFolders);
    else
        defaults.setValueForKey(defaultsKey::screenshotFolders, paths);
}

bool canBeStored(const QByteArray& folder) { return QFile::encodeName(QFile::decodeName(folder)) == folder; }

} // namespace quenby
