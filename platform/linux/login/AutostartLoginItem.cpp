#include "platform/linux/login/AutostartLoginItem.h"

#include "platform/linux/login/AutostartEntry.h"
#include "platform/linux/login/EntryFile.h"
#include "platform/linux/session/UserFolders.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QLoggingCategory>
#include <QStandardPaths>
#include <QTimer>

#include <chrono>
#include <utility>

namespace quenby {
namespace {

Q_LOGGING_CATEGORY(loginLog, "quenby.login")

const QString mainProfile = QStringLiteral("quenby");
const QByteArray programKey = "TryExec";

// While an entry is being written by somebody, it may be seen half or not at all.
constexpr std::chrono::milliseconds untilWritten{300};

// A program's path, or its name as a shell finds it.
bool isThere(const QString& program) {
    if (!QDir::isAbsolutePath(program))
        return !program.isEmpty() && !QStandardPaths::findExecutable(program).isEmpty();
    const QFileInfo file(program);
    return file.isFile() && file.isExecutable();
}

bool isSameFile(const QString& one, const QString& other) {
    const QString canonical = QFileInfo(one).canonicalFilePath();
    return !canonical.isEmpty() && canonical == QFileInfo(other).canonicalFilePath();
}

// The variable is inherited, so that it may speak of the package that some other program lies in.
QString packageAround(const QString& program) {
    const QString package = qEnvironmentVariable("APPIMAGE");
    const QString contents = qEnvironmentVariable("APPDIR");
    const QString mounted = QFileInfo(contents).canonicalFilePath(); // empty once that program has ended
    const bool isAround = contents.isEmpty() || (!mounted.isEmpty() && program.startsWith(mounted + QLatin1Char('/')));
    return isAround && QDir::isAbsolutePath(package) && isThere(package) ? package : QString();
}

QString lastingPath(const QString& program) {
    if (const QString package = packageAround(program); !package.isEmpty())
        return package;
    const QString found = QStandardPaths::findExecutable(QFileInfo(program).fileName());
    return isSameFile(found, program) ? found : program;
}

AutostartEntry newEntry(const QString& name, const QStringList& command) {
    AutostartEntry entry;
    // As in the entry of the desktop's menus.
    entry.setValue("Type", "Application");
    entry.setValue("Version", "1.0");
    entry.setString("Name", name);
    entry.setValue("Comment", "Watch your Drive and upload files to it");
    entry.setCommand(command);
    // An entry whose program was removed is passed over in silence.
    entry.setString(programKey, command.value(0));
    entry.setValue("Icon", "quenby");
    entry.setValue("Terminal", "false");
    entry.setValue("StartupNotify", "false");
    return entry;
}

// Whether it starts what it names, and not a command that people put around it.
bool hasPlainCommand(const AutostartEntry& entry) { return entry.string(programKey) == entry.command().value(0); }

bool startsSomething(const AutostartEntry& entry) {
    const QString condition = entry.string(programKey);
    return isThere(entry.command().value(0)) && (condition.isEmpty() || isThere(condition));
}

// Nothing is lost with it, switches aside.
bool isAsWritten(AutostartEntry entry, const QString& name) {
    entry.setEnabled(true);
    entry.setValue("X-GNOME-Autostart-enabled", {});
    AutostartEntry written = newEntry(name, entry.command());
    written.setString(programKey, entry.string(programKey));
    return entry.text() == written.text();
}

// The entry of this name that the system has for all of its users; nothing when there is none.
std::optional<AutostartEntry> entryOfSystem(const QString& fileName) {
    QStringList folders = qEnvironmentVariable("XDG_CONFIG_DIRS").split(QLatin1Char(':'), Qt::SkipEmptyParts);
    if (folders.isEmpty())
        folders << QStringLiteral("/etc/xdg");
    for (const QString& folder : std::as_const(folders)) {
        if (!QDir::isAbsolutePath(folder))
            continue;
        const QString path = folder + QStringLiteral("/autostart/") + fileName;
        if (const auto text = readEntryFile(QFile::encodeName(path)); text && *text)
            return AutostartEntry(**text);
    }
    return std::nullopt;
}

} // namespace

AutostartOptions autostartOptions(const QString& profile, const QStringList& arguments) {
    AutostartOptions options;
    options.program = lastingPath(QCoreApplication::applicationFilePath());
    options.arguments = arguments;
    const QString hidden = QStringLiteral("--hidden");
    if (!options.arguments.contains(hidden))
        options.arguments << hidden;
    QString fileName = QStringLiteral("org.quenby.Quenby");
    if (profile != mainProfile) { // "quenby-local"
        const QString kind = profile.mid(profile.lastIndexOf(QLatin1Char('-')) + 1);
        fileName += QLatin1Char('-') + kind;
        options.name += QStringLiteral(" (%1)").arg(kind);
    }
    options.path = configFolderPath() + QStringLiteral("/autostart/") + fileName + QStringLiteral(".desktop");
    return options;
}

class AutostartLoginItem::Private {
public:
    Private(AutostartOptions options, AutostartLoginItem* item)
        : options_(std::move(options))
        , path_(QFile::encodeName(options_.path))
        , item_(item) {
        settling_.setSingleShot(true);
        QObject::connect(&settling_, &QTimer::timeout, item_, [this] { look(); });
        const auto somethingHappened = [this] {
            watch();
            settling_.start(untilWritten);
        };
        QObject::connect(&watcher_, &QFileSystemWatcher::fileChanged, item_, somethingHappened);
        QObject::connect(&watcher_, &QFileSystemWatcher::directoryChanged, item_, somethingHappened);
        watch();
        wasEnabled_ = isEnabled();
    }

    bool isEnabled() const {
        const auto text = readEntryFile(path_);
        if (!text) // nor can the desktop read it
            return false;
        if (*text)
            return AutostartEntry(**text).isEnabled();
        const auto general = systemEntry();
        return general && general->isEnabled();
    }

    MaybeError switchOn() {
        const auto text = readEntryFile(path_);
        if (!text)
            return text.error();
        if (!*text) {
            const auto general = systemEntry();
            return general && general->isEnabled() ? std::nullopt : write(ownEntry());
        }
        AutostartEntry entry(**text);
        const bool wasEnabled = entry.isEnabled();
        if (wasEnabled && startsSomething(entry))
            return std::nullopt;
        if (entry.text().isEmpty())
            return write(ownEntry());
        entry.setEnabled(true);
        // Who switches it on here means this program, and not another copy.
        if (hasPlainCommand(entry) || !startsSomething(entry))
            leadHere(entry);
        return write(entry);
    }

    MaybeError switchOff() {
        const auto text = readEntryFile(path_);
        if (!text) // nor can the desktop read it
            return std::nullopt;
        auto general = systemEntry();
        const bool comesBack = general && general->isEnabled();
        if (!*text) {
            if (!comesBack)
                return std::nullopt;
            general->setEnabled(false);
            return write(*general);
        }
        AutostartEntry entry(**text);
        if (!comesBack && !isLink(path_) && isAsWritten(entry, options_.name))
            return removeEntryFile(path_);
        if (!entry.isEnabled())
            return std::nullopt;
        entry.setEnabled(false);
        return write(entry);
    }

    MaybeError follow() {
        const auto text = readEntryFile(path_);
        if (!text)
            return text.error();
        AutostartEntry entry(text->value_or(QByteArray()));
        if (!entry.isEnabled() || startsSomething(entry))
            return std::nullopt;
        leadHere(entry);
        return write(entry);
    }

    // What the watch will tell of the own writing is no news.
    void remember(bool isEnabled) { wasEnabled_ = isEnabled; }

    // A file that was replaced is not watched any more, and a folder that is missing not yet: then one above it tells
    // when it comes.
    void watch() {
        QString folder = QFileInfo(options_.path).path();
        while (!QFileInfo(folder).isDir() && folder != QLatin1String("/"))
            folder = QFileInfo(folder).path();
        QStringList outdated = watcher_.directories();
        const bool isWatched = outdated.removeOne(folder);
        if (!outdated.isEmpty())
            watcher_.removePaths(outdated);
        if (!isWatched)
            watcher_.addPath(folder);
        const QFileInfo file(options_.path);
        if (!watcher_.files().contains(options_.path) && file.isFile() && file.isReadable())
            watcher_.addPath(options_.path);
    }

private:
    std::optional<AutostartEntry> systemEntry() const { return entryOfSystem(QFileInfo(options_.path).fileName()); }
    AutostartEntry ownEntry() const {
        return newEntry(options_.name, QStringList(options_.program) + options_.arguments);
    }
    MaybeError write(const AutostartEntry& entry) const { return writeEntryFile(path_, entry.text()); }

    // The arguments are those that it had: people may have added some.
    void leadHere(AutostartEntry& entry) const {
        QStringList command = entry.command();
        if (command.isEmpty())
            command = QStringList(options_.program) + options_.arguments;
        else if (hasPlainCommand(entry) || !isThere(command.first()))
            command.first() = options_.program;
        entry.setCommand(command);
        entry.setString(programKey, options_.program);
    }

    void look() {
        watch();
        const bool isEnabledNow = isEnabled();
        if (std::exchange(wasEnabled_, isEnabledNow) != isEnabledNow)
            Q_EMIT item_->changed();
    }

    const AutostartOptions options_;
    const QByteArray path_;
    AutostartLoginItem* const item_;
    QFileSystemWatcher watcher_;
    QTimer settling_; // since the last notice
    bool wasEnabled_ = false;
};

AutostartLoginItem::AutostartLoginItem(AutostartOptions options)
    : d_(std::make_unique<Private>(std::move(options), this)) {}

AutostartLoginItem::~AutostartLoginItem() = default;

QString AutostartLoginItem::unavailableBecause() const { return {}; }

bool AutostartLoginItem::isEnabled() const { return d_->isEnabled(); }

MaybeError AutostartLoginItem::setEnabled(bool isEnabled) {
    const MaybeError error = isEnabled ? d_->switchOn() : d_->switchOff();
    if (!error)
        d_->remember(isEnabled);
    d_->watch();
    return error;
}

void AutostartLoginItem::followProgram() {
    if (const MaybeError error = d_->follow())
        qCWarning(loginLog, "%s", qUtf8Printable(error->description()));
    d_->watch();
}

} // namespace quenby
