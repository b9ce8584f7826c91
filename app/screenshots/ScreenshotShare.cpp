#include "app/screenshots/ScreenshotShare.h"

#include "core/DefaultsKeys.h"
#include "core/FolderBookmark.h"
#include "platform/Defaults.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QPointer>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <thread>

namespace quenby {
namespace {

Q_LOGGING_CATEGORY(screenshotLog, "quenby.screenshots")

// Exactly these are known of a screenshot that nobody has touched yet.
constexpr uint freshFactCount = 3;

bool isFresh(const ScreenshotItem& item) {
    return qPopulationCount(static_cast<quint32>(item.facts.toInt())) == freshFactCount;
}

bool isBelow(const QByteArray& path, const QByteArray& folder) {
    return !folder.isEmpty() && path.startsWith(folder.endsWith('/') ? folder : QByteArray(folder + '/'));
}

QByteArray canonical(const QByteArray& path) {
    return QFile::encodeName(QFileInfo(QFile::decodeName(path)).canonicalFilePath());
}

// As it is written, or by way of links.
bool liesInFolder(const QByteArray& path, const QByteArray& folder) {
    return isBelow(path, folder) || isBelow(canonical(path), canonical(folder));
}

// A settings file gives a list of one back as its only text. What is no absolute path is left out.
QList<QByteArray> foldersOf(const QVariant& setting) {
    QVariantList entries{setting};
    if (setting.typeId() == QMetaType::QStringList || setting.typeId() == QMetaType::QVariantList)
        entries = setting.toList();
    QList<QByteArray> folders;
    for (const QVariant& entry : std::as_const(entries)) {
        if (entry.typeId() != QMetaType::QString)
            continue;
        const QString path = entry.toString();
        if (QDir::isAbsolutePath(path))
            folders.append(QFile::encodeName(QDir::cleanPath(path)));
    }
    return folders;
}

} // namespace

ScreenshotShare::ScreenshotShare(ScreenshotQuery& query, Defaults& defaults, const QDateTime& launchDate,
                                 QObject* parent)
    : QObject(parent)
    , query_(query)
    , defaults_(defaults)
    , launchDate_(launchDate) {
    connect(&query_, &ScreenshotQuery::updated, this, &ScreenshotShare::queryUpdated);
    connect(&defaults_, &Defaults::changed, this, &ScreenshotShare::settingChanged);
    settingChanged(defaultsKey::screenshotFolders);
}

ScreenshotShare::~ScreenshotShare() = default;

CompletionTicket ScreenshotShare::makeBookMarkURLAccessible(const QVariantMap& bookmark, QObject* context,
                                                            Opened opened) {
    using Found = Result<QByteArray>;
    const CompletionGate<Found> gate(
        context, [this, share = QPointer<ScreenshotShare>(this), opened = std::move(opened)](const Found& folder) {
            if (!share)
                return;
            accessibleFolder_ = folder ? *folder : QByteArray();
            if (!folder)
                qCInfo(screenshotLog, "%s", qPrintable(folder.error().description()));
            opened(folder.ok());
        });
    try {
        std::thread([gate, bytes = bookmark.value(defaultsKey::bookmarkData).toByteArray()] {
            gate.deliver(resolveFolderBookmark(bytes));
        }).detach();
    } catch (const std::system_error&) {
        gate.deliver(Found(Error(errorDomain::posix, EAGAIN)));
    }
    return gate.ticket();
}

bool ScreenshotShare::isSwitchedOn() const { return defaults_.boolForKey(defaultsKey::screenshotShare); }

void ScreenshotShare::settingChanged(const QString& key) {
    if (key == defaultsKey::screenshotFolders) {
        addedFolders_ = foldersOf(defaults_.valueForKey(key));
        query_.setAddedFolders(addedFolders_);
    }
    // What waits for a folder that does not answer waits for the new one instead.
    if (key == defaultsKey::DirectoryBookmark && opening_.cancel())
        openFolder();
}

void ScreenshotShare::queryUpdated() {
    // First, because the folder of one who has switched this off is not touched at all.
    if (!isSwitchedOn())
        return;
    updates_.append(query_.results());
    if (updates_.size() == 1)
        openFolder();
}

// For each update anew: the folder may have gone meanwhile.
void ScreenshotShare::openFolder() {
    while (!updates_.isEmpty()) {
        const QVariantMap bookmark = defaults_.valueForKey(defaultsKey::DirectoryBookmark).toMap();
        if (isSwitchedOn() && !bookmark.value(defaultsKey::path).toString().isEmpty()) {
            opening_ = makeBookMarkURLAccessible(bookmark, this, [this](bool succeeded) {
                const QList<ScreenshotItem> results = updates_.takeFirst();
                if (succeeded && isSwitchedOn())
                    take(results);
                openFolder();
            });
            return;
        }
        updates_.removeFirst();
    }
}

void ScreenshotShare::take(const QList<ScreenshotItem>& results) {
    if (results.isEmpty() || queryResults_.contains(results.last()))
        return;
    queryResults_ = results;
    const ScreenshotItem& item = queryResults_.last();
    if (item.creationDate > launchDate_ && isFresh(item))
        uploadIfThere(item.path);
}

// On a thread of its own: it may lie in a network folder that has stopped answering.
void ScreenshotShare::uploadIfThere(const QByteArray& path) {
    const CompletionGate<bool> gate(this, [this, path](bool isThere) {
        if (isThere && isSwitchedOn())
            Q_EMIT uploadRequested(path);
    });
    try {
        std::thread([gate, path, folders = addedFolders_ + QList<QByteArray>{accessibleFolder_}] {
            const bool isInOne = std::any_of(folders.begin(), folders.end(),
                                             [&path](const QByteArray& folder) { return liesInFolder(path, folder); });
            gate.deliver(isInOne && QFileInfo(QFile::decodeName(path)).isFile());
        }).detach();
    } catch (const std::system_error&) {
        gate.deliver(false);
    }
}

} // namespace quenby
