#include "platform/linux/modules/ModuleFile.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QPluginLoader>

namespace quenby {

QStringList moduleFolders() {
    return {QDir::cleanPath(QCoreApplication::applicationDirPath() + QStringLiteral("/../lib/quenby")),
            QStringLiteral(QUENBY_MODULE_FOLDER)};
}

namespace {

// The first "NAME.so" in one of the folders; empty when there is none.
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

} // namespace

bool isModuleThere(const QStringList& folders, const QString& name) { return !moduleFile(folders, name).isEmpty(); }

Error moduleError(const QString& reason) { return Error(URLErrorCode::unknown, {{errorKey::reason, reason}}); }

Result<QObject*> moduleInstance(const QStringList& folders, const QString& name) {
    const QString path = moduleFile(folders, name);
    if (path.isEmpty())
        return moduleError(QStringLiteral("there is no %1.so in %2").arg(name, folders.join(QStringLiteral(" or "))));
    QPluginLoader loader(path);
    if (QObject* const instance = loader.instance())
        return instance;
    return moduleError(loader.errorString());
}

} // namespace quenby
