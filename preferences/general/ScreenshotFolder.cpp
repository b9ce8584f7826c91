#include "preferences/general/ScreenshotFolder.h"

#include "core/DefaultsKeys.h"
#include "core/FolderBookmark.h"
#include "platform/Defaults.h"
#include "preferences/general/FolderPaths.h"
#include "preferences/general/FolderTrouble.h"

#include <QDir>
#include <QFile>
#include <QLoggingCategory>

#include <cerrno>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

namespace quenby {
namespace {

Q_LOGGING_CATEGORY(preferencesLog, "quenby.preferences")

struct StoredFolder {
    QString path;
    QByteArray bookmark;
};

// Nothing when the setting is absent or means no folder.
std::optional<StoredFolder> storedFolder(const Defaults& defaults) {
    const QVariant value = defaults.valueForKey(defaultsKey::DirectoryBookmark);
    if (value.typeId() != QMetaType::QVariantMap)
        return std::nullopt;
    const QVariantMap map = value.toMap();
    const StoredFolder folder{map.value(defaultsKey::path).toString(),
                              map.value(defaultsKey::bookmarkData).toByteArray()};
    return folder.path.isEmpty() || folder.bookmark.isEmpty() ? std::nullopt : std::optional(folder);
}

void switchOffUnlessStored(Defaults& defaults) {
    if (!storedFolder(defaults))
        defaults.setValueForKey(defaultsKey::screenshotShare, false);
}

// The folder in which the home lies, whose users' homes lie there as well.
QByteArray placeOfHomes() { return parentFolder(ScreenshotFolder::usersHomeDirectory()); }

bool mayBeChosen(const QByteArray& path) {
    return isSameFolder(path, ScreenshotFolder::usersHomeDirectory()) || isSameFolder(path, placeOfHomes());
}

} // namespace

ScreenshotFolder::ScreenshotFolder(Defaults& defaults, FilePanels& panels)
    : defaults_(defaults)
    , panels_(panels) {}

ScreenshotFolder::~ScreenshotFolder() {
    if (panel_.cancel())
        switchOffUnlessStored(defaults_);
}

void ScreenshotFolder::share_screeshot(bool isOn, QWidget* window) {
    defaults_.setValueForKey(defaultsKey::screenshotShare, isOn);
    if (isOn && !storedFolder(defaults_))
        ask(window);
}

void ScreenshotFolder::chooseAnother(QWidget* window) { ask(window); }

// Cancelling leaves a folder that is known as it is; without one, nothing would be uploaded.
void ScreenshotFolder::ask(QWidget* window) {
    if (panel_.isPending() && askedOver_)
        return;
    panel_.cancel();
    askedOver_ = window;
    panel_ = panels_.openFolder(window, tr("Choose path for Screen Shot"), rules(), this,
                                [this](const QList<QByteArray>& paths) {
                                    if (paths.isEmpty())
                                        switchOffUnlessStored(defaults_);
                                    else
                                        store(paths.constFirst());
                                });
}

// On a thread of its own: the folder may lie in a network that has stopped answering. What was confirmed is stored even
// when the preferences are closed by then.
void ScreenshotFolder::store(const QByteArray& folder) {
    Defaults& defaults = defaults_;
    const CompletionGate<Result<QByteArray>> gate(&defaults, [&defaults, folder](const Result<QByteArray>& bookmark) {
        if (bookmark) {
            defaults.setValueForKey(
                defaultsKey::DirectoryBookmark,
                QVariantMap{{defaultsKey::bookmarkData, *bookmark}, {defaultsKey::path, QFile::decodeName(folder)}});
            return;
        }
        qCWarning(preferencesLog, "Error bookmarking selected URL: %s", qPrintable(bookmark.error().description()));
        switchOffUnlessStored(defaults);
    });
    try {
        std::thread([gate, folder] { gate.deliver(makeFolderBookmark(folder)); }).detach();
    } catch (const std::system_error&) {
        gate.deliver(Result<QByteArray>(Error(errorDomain::posix, EAGAIN)));
    }
}

QString ScreenshotFolder::path() const {
    const auto folder = storedFolder(defaults_);
    return folder ? folder->path : QString();
}

void ScreenshotFolder::check(QObject* context, std::function<void(const QString& sentence)> checked) const {
    const CompletionGate<QString> gate(context, std::move(checked));
    const auto folder = storedFolder(defaults_);
    if (!folder) {
        gate.deliver(QString());
        return;
    }
    try {
        std::thread([gate, folder = *folder] { gate.deliver(folderTrouble(folder.path, folder.bookmark)); }).detach();
    } catch (const std::system_error&) {
        gate.deliver(QString()); // nothing is known against it
    }
}

QByteArray ScreenshotFolder::usersHomeDirectory() { return QFile::encodeName(QDir::homePath()); }

FolderPanelRules ScreenshotFolder::rules() {
    FolderPanelRules rules;
    rules.directory = usersHomeDirectory();
    rules.panel_shouldEnableURL = mayBeChosen;
    rules.panel_validateURL = [](const QByteArray& path) {
        if (mayBeChosen(path))
            return QString();
        return tr("Screenshots are looked for in your home folder as a whole. Choose %1, or %2 for all homes.")
            .arg(QFile::decodeName(usersHomeDirectory()), QFile::decodeName(placeOfHomes()));
    };
    rules.panel_didChangeToDirectoryURL = [](const QByteArray& path) {
        const QByteArray home = usersHomeDirectory();
        return isInFolder(path, home) ? QByteArray() : home;
    };
    return rules;
}

} // namespace quenby
