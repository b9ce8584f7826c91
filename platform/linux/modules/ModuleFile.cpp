#include "platform/linux/modules/ModuleFile.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace quenby {

QStringList moduleFolders() {
    return {QDir::cleanPath(QCoreApplication::applicationDirPath() + QStringLiteral("/../lib/quenby")),
            QStringLiteral(QUENBY_MODULE_FOLDER)};
}

QString moduleFile(const QStringList& folders, const QString& name) {
    for (const QString& folder : folders) {
        for (const QString& prefix : {QString(), QStringLiteral("lib")}) {
            const QString path = folder + QLatin1Char('/') + prefix + name + QStringLiteral(".so");
            if (QFileInfo::exists(path))
                return path;
        }
    }
    return {};
}

} // namespace quenby
