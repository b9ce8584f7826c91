#include "platform/linux/session/UserFolders.h"

#include <QDir>

namespace quenby {
namespace {

// The XDG base directory rules want relative paths to be ignored, which not every version of the toolkit does.
QString baseFolder(const char* variable, const QString& fallback) {
    const QString path = QFile::decodeName(qgetenv(variable));
    return QDir::isAbsolutePath(path) ? QDir::cleanPath(path) : QDir::home().filePath(fallback);
}

} // namespace

QString configFolderPath() { return baseFolder("XDG_CONFIG_HOME", QStringLiteral(".config")); }

QString settingsFilePath(const QString& profile) {
    return configFolderPath() + QStringLiteral("/quenby/") + profile + QStringLiteral(".ini");
}

QString cacheFolderPath(const QString& profile) {
    return baseFolder("XDG_CACHE_HOME", QStringLiteral(".cache")) + QLatin1Char('/') + profile;
}

} // namespace quenby
