#include "app/screenshots/ScreenshotShare.h"

#include "core/DefaultsKeys.h"
#include "core/FolderBookmark.h"
#include "platform/Defaults.h"
#include "preferences/general/AddedFolders.h"
#include "preferences/general/FolderPaths.h"

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
        addedFolders_ = addedFolders(defaults_);
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
                                             [&path](const QByteArray& folder) { return isInFolder(path, folder); });
            gate.deliver(isInOne && QFileInfo(QFile::decodeName(path)).isFile());
        }).detach();
    } catch (const std::system_error&) {
        gate.deliver(false);
    }
}

} // namespace quenby
