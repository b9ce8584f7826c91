#include "platform/linux/screenshots/ScreenshotFolders.h"

#include "core/LocalPaths.h"
#include "platform/linux/screenshots/ScreenshotTools.h"

#include <QDir>
#include <QFile>
#include <QSettings>
#include <QStandardPaths>

#include <libintl.h>

namespace quenby {
namespace {

// Of a file address or a path, in which the home folder may have its short names; null when it is neither.
QByteArray folderOf(const QString& setting) {
    const QByteArray home = QFile::encodeName(QDir::homePath());
    QByteArray text = QFile::encodeName(setting.trimmed()).replace("${HOME}", home).replace("$HOME", home);
    if (text.startsWith("~/"))
        text.replace(0, 1, home);
    if (text.startsWith("file:"))
        return localPath(text);
    return text.startsWith('/') ? text : QByteArray();
}

// The key without its group and without the mark of values with variables in them.
QString plainKey(const QString& key) { return key.section(QLatin1Char('/'), -1).section(QLatin1Char('['), 0, 0); }

QList<QByteArray> foldersInSettings(const QString& file, const QStringList& keys) {
    QList<QByteArray> folders;
    const QSettings settings(file, QSettings::IniFormat);
    const QStringList all = settings.allKeys();
    for (const QString& key : all) {
        if (keys.contains(plainKey(key)))
            folders.append(folderOf(settings.value(key).toStringList().join(QLatin1Char(','))));
    }
    return folders;
}

// In the desktop's language, as the catalogue of its own program has it.
QList<QByteArray> screenshotsFolderNames() {
    QList<QByteArray> names{"Screenshots"};
    for (const char* const catalogue : {"gnome-shell", "spectacle"}) {
        ::bind_textdomain_codeset(catalogue, "UTF-8");
        names.append(::dgettext(catalogue, "Screenshots"));
    }
    return names;
}

QByteArray userFolder(const char* variable, QStandardPaths::StandardLocation location) {
    const QByteArray given = qgetenv(variable);
    return given.startsWith('/') ? given : QFile::encodeName(QStandardPaths::writableLocation(location));
}

} // namespace

QList<QByteArray> screenshotFolders() {
    const QByteArray pictures = userFolder("XDG_PICTURES_DIR", QStandardPaths::PicturesLocation);
    QList<QByteArray> folders{pictures};
    for (const QByteArray& name : screenshotsFolderNames())
        folders.append(pictures + '/' + name);
    folders.append(userFolder("XDG_DESKTOP_DIR", QStandardPaths::DesktopLocation));
    folders.append(QFile::encodeName(QDir::homePath()));
    folders.append(qgetenv("XDG_SCREENSHOTS_DIR"));

    const QDir configuration(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation));
    folders += foldersInSettings(configuration.filePath(QStringLiteral("user-dirs.dirs")),
                                 {QStringLiteral("XDG_SCREENSHOTS_DIR")});
    for (const ScreenshotTool& tool : screenshotTools()) {
        if (!tool.setting)
            continue;
        const QStringList parts = QString::fromLatin1(tool.setting).split(QLatin1Char(':'));
        folders += foldersInSettings(configuration.filePath(parts.first()), parts.last().split(QLatin1Char('|')));
    }

    QList<QByteArray> unique;
    for (const QByteArray& folder : std::as_const(folders)) {
        const QByteArray clean = QFile::encodeName(QDir::cleanPath(QFile::decodeName(folder)));
        if (clean.startsWith('/') && !unique.contains(clean))
            unique.append(clean);
    }
    return unique;
}

} // namespace quenby
