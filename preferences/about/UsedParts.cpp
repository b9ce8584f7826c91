#include "preferences/about/UsedParts.h"

#include "PartVersions.h"

#include <QCoreApplication>
#include <QFile>
#include <QRegularExpression>

namespace quenby {
namespace {

QString tr(const char* text) { return QCoreApplication::translate("UsedParts", text); }

// Without empty lines around; the first line may be indented.
QString readFile(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    static const QRegularExpression emptyLines(QStringLiteral("\\A(?:[ \\t]*\\n)+|\\s+\\z"));
    return QString::fromUtf8(file.readAll()).remove(emptyLines);
}

struct Row {
    const char* name;
    const char* purpose;
    const char* version;
    const char* licence;
    const char* sharedTexts; // with spaces between
    const char* package;
};

// Parts without a version are found by other parts while the program runs.
const Row rows[] = {
    {"Quenby", QT_TRANSLATE_NOOP("UsedParts", "This program"), QUENBY_VERSION, "Apache-2.0", "Apache-2.0", ""},
    {"Qt", QT_TRANSLATE_NOOP("UsedParts", "Windows, event loop, buses, settings"), nullptr,
     "LGPL-3.0-only OR GPL-2.0-only OR GPL-3.0-only", "LGPL-3 GPL-3 GPL-2", "libqt6core6"},
    {"Qt WebEngine", QT_TRANSLATE_NOOP("UsedParts", "Web pages"), builtAgainst::webEngine,
     "LGPL-3.0-only OR GPL-2.0-only OR GPL-3.0-only", "LGPL-3 GPL-3 GPL-2", ""},
    {"Chromium", QT_TRANSLATE_NOOP("UsedParts", "Inside of Qt WebEngine, with many libraries of other licences"), "",
     "BSD-3-Clause", "", "libqt6webenginecore6"},
    {"libcurl", QT_TRANSLATE_NOOP("UsedParts", "HTTP"), builtAgainst::curl, "curl", "", "libcurl4"},
    {"simdjson", QT_TRANSLATE_NOOP("UsedParts", "Reading JSON"), builtAgainst::simdjson, "Apache-2.0", "Apache-2.0",
     "libsimdjson14"},
    {"OpenSSL", QT_TRANSLATE_NOOP("UsedParts", "Checksums and encryption"), builtAgainst::openSSL, "Apache-2.0",
     "Apache-2.0", "libssl3"},
    {"QtKeychain", QT_TRANSLATE_NOOP("UsedParts", "The desktop's keyring"), builtAgainst::keychain, "BSD-2-Clause", "",
     "libqt6keychain1"},
    {"libsecret", QT_TRANSLATE_NOOP("UsedParts", "The desktop's keyring, for QtKeychain"), "", "LGPL-2.1-or-later",
     "LGPL-2.1", "libsecret-1-0"},
    {"GStreamer", QT_TRANSLATE_NOOP("UsedParts", "Recording and playing movies"), builtAgainst::gstreamer,
     "LGPL-2.0-or-later", "LGPL-2", "libgstreamer1.0-0"},
    {"x264", QT_TRANSLATE_NOOP("UsedParts", "Encoding movies, where it is installed"), "", "GPL-2.0-or-later", "GPL-2",
     "libx264-164"},
    {"OpenH264", QT_TRANSLATE_NOOP("UsedParts", "Encoding movies, where it is installed"), "", "BSD-2-Clause", "",
     "libopenh264-7"},
    {"FFmpeg", QT_TRANSLATE_NOOP("UsedParts", "Decoding movies, where it is installed"), "",
     "LGPL-2.1-or-later AND GPL-2.0-or-later", "LGPL-2.1 GPL-2", "libavcodec59"},
    {"PipeWire", QT_TRANSLATE_NOOP("UsedParts", "Recording the screen of a Wayland desktop"), "", "MIT", "",
     "gstreamer1.0-pipewire"},
    {"SQLite", QT_TRANSLATE_NOOP("UsedParts", "The storage of the local Drive"), "", "blessing", "", "libsqlite3-0"},
    {"cpp-httplib", QT_TRANSLATE_NOOP("UsedParts", "The server of the local Drive"), builtAgainst::httplib, "MIT", "",
     "libcpp-httplib0.11"},
    {"libxcb", QT_TRANSLATE_NOOP("UsedParts", "Trays and screens of X11"), builtAgainst::xcb, "X11", "", "libxcb1"},
    {"libxkbcommon", QT_TRANSLATE_NOOP("UsedParts", "Keys of the global shortcut"), builtAgainst::xkbcommon,
     "X11 AND HPND AND MIT", "", "libxkbcommon0"},
    {"libX11", QT_TRANSLATE_NOOP("UsedParts", "Recording the screen of an X11 desktop"), builtAgainst::x11,
     "MIT AND X11", "", "libx11-6"},
};

UsedPart partOf(const Row& row) {
    return {.name = QString::fromLatin1(row.name),
            .purpose = tr(row.purpose),
            .version = QString::fromLatin1(row.version ? row.version : qVersion()),
            .licence = QString::fromLatin1(row.licence),
            .sharedTexts = QString::fromLatin1(row.sharedTexts).split(QLatin1Char(' '), Qt::SkipEmptyParts),
            .package = QString::fromLatin1(row.package)};
}

} // namespace

QList<UsedPart> usedParts() {
    QList<UsedPart> parts;
    for (const Row& row : rows)
        parts.append(partOf(row));
    return parts;
}

QStringList licenceIdentifiers(const QString& expression) {
    QString words = expression;
    words.replace(QLatin1Char('('), QLatin1Char(' ')).replace(QLatin1Char(')'), QLatin1Char(' '));
    QStringList found = words.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (const char* word : {"OR", "AND", "WITH"})
        found.removeAll(QString::fromLatin1(word));
    found.removeDuplicates();
    return found;
}

QString licenceText(const UsedPart& part, const QString& root) {
    QStringList texts;
    for (const QString& name : part.sharedTexts)
        texts.append(readFile(root + QStringLiteral("usr/share/common-licenses/") + name));
    if (!part.package.isEmpty())
        texts.append(readFile(root + QStringLiteral("usr/share/doc/%1/copyright").arg(part.package)));
    texts.removeAll(QString());
    return texts.join(QStringLiteral("\n\n%1\n\n").arg(QString(72, QLatin1Char('_'))));
}

} // namespace quenby
