#include "app/screenshots/ScreenshotShare.h"

#include "app/agent/DefaultsTable.h"
#include "core/CompletionGate.h"
#include "core/FolderBookmark.h"
#include "platform/Defaults.h"

#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>

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
    return path.startsWith(folder.endsWith('/') ? folder : QByteArray(folder + '/'));
}

QByteArray canonical(const QByteArray& path) {
    return QFile::encodeName(QFileInfo(QFile::decodeName(path)).canonicalFilePath());
}

// As it is written, or by way of links.
bool liesInFolder(const QByteArray& path, const QByteArray& folder) {
    return isBelow(path, folder) || isBelow(canonical(path), canonical(folder));
}

} // namespace

ScreenshotShare::ScreenshotShare(ScreenshotQuery& query, Defaults& defaults, const QDateTime& launchDate,
                                 QObject* parent)
    : QObject(parent)
    , query_(query)
    , defaults_(defaults)
    , launchDate_(launchDate) {
    connect(&query_, &ScreenshotQuery::updated, this, &ScreenshotShare::queryUpdated);
}

ScreenshotShare::~ScreenshotShare() = default;

bool ScreenshotShare::makeBookMarkURLAccessible(const QVariantMap& bookmark) {
    const auto folder = resolveFolderBookmark(bookmark.value(defaultsKey::bookmarkData).toByteArray());
    accessibleFolder_ = folder ? *folder : QByteArray();
    if (!folder)
        qCInfo(screenshotLog, "%s", qPrintable(folder.error().description()));
    return folder.ok();
}

void ScreenshotShare::queryUpdated() {
    // First, because the folder of one who has switched this off is not touched at all.
    if (!defaults_.boolForKey(defaultsKey::screenshotShare))
        return;
    const QVariantMap bookmark = defaults_.valueForKey(defaultsKey::DirectoryBookmark).toMap();
    if (bookmark.value(defaultsKey::path).toString().isEmpty() || !makeBookMarkURLAccessible(bookmark))
        return;
    const QList<ScreenshotItem> results = query_.results();
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
        if (isThere)
            Q_EMIT uploadRequested(path);
    });
    try {
        std::thread([gate, path, folder = accessibleFolder_] {
            const QFileInfo file(QFile::decodeName(path));
            gate.deliver(file.isFile() && liesInFolder(path, folder));
        }).detach();
    } catch (const std::system_error&) {
        gate.deliver(true); // the upload itself will see
    }
}

} // namespace quenby
