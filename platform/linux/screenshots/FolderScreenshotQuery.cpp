#include "platform/linux/screenshots/FolderScreenshotQuery.h"

#include "platform/linux/screenshots/ScreenshotFolders.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QScreen>

#include <algorithm>

namespace quenby {
namespace {

using namespace std::chrono_literals;

// Pictures that are told together.
constexpr auto quickSuccession = 300ms;
// Tools that were at work when the program started.
constexpr qint64 beforeStart = 60'000; // milliseconds

constexpr ScreenshotFacts allFacts =
    ScreenshotFact::isScreenCapture | ScreenshotFact::captureType | ScreenshotFact::capturedRectangle;

// Whatever way the screens are arranged, side by side or one above the other.
QSize pixelsOfScreens() {
    QSize pixels(0, 0);
    const QList<QScreen*> screens = QGuiApplication::screens();
    for (const QScreen* const screen : screens) {
        const QSizeF size = QSizeF(screen->geometry().size()) * screen->devicePixelRatio();
        pixels += QSize(qCeil(size.width()), qCeil(size.height()));
    }
    return pixels;
}

struct Candidate {
    QByteArray path;
    const FoundPicture* picture;
    qint64 creation; // milliseconds since 1970
};

// By the clock that stamps the files.
qint64 now() { return QDateTime::currentMSecsSinceEpoch(); }

QByteArray cleanPath(const QByteArray& path) { return QFile::encodeName(QDir::cleanPath(QFile::decodeName(path))); }

bool isOlder(const Candidate& one, const Candidate& other) {
    return one.creation != other.creation ? one.creation < other.creation : one.path < other.path;
}

} // namespace

ScreenshotPlaces screenshotPlaces() { return {screenshotFolders(), pixelsOfScreens, isBehindNetwork}; }

FolderScreenshotQuery::FolderScreenshotQuery(std::shared_ptr<TimeSource> timeSource, ScreenshotPlaces places,
                                             QObject* parent)
    : timeSource_(std::move(timeSource))
    , places_(std::move(places)) {
    setParent(parent);
}

FolderScreenshotQuery::~FolderScreenshotQuery() = default;

void FolderScreenshotQuery::start() {
    if (std::exchange(isStarted_, true))
        return;
    const qint64 notBefore = now() - beforeStart;
    for (const QByteArray& folder : places_.folders)
        watches_.push_back(watch(folder, notBefore));
    for (const QByteArray& folder : std::as_const(addedFolders_))
        addedWatches_.push_back(watch(folder, notBefore));
}

void FolderScreenshotQuery::setAddedFolders(const QList<QByteArray>& folders) {
    addedFolders_.clear();
    for (const QByteArray& folder : folders) {
        const QByteArray clean = cleanPath(folder);
        if (clean.startsWith('/') && !places_.folders.contains(clean) && !addedFolders_.contains(clean))
            addedFolders_.append(clean);
    }
    if (!isStarted_)
        return;
    const qint64 notBefore = now() + 1; // what was made in this moment lies there already
    Watches former = std::exchange(addedWatches_, {});
    for (const QByteArray& folder : std::as_const(addedFolders_)) {
        const auto kept = std::find_if(former.begin(), former.end(),
                                       [&folder](const auto& watch) { return watch && watch->folder() == folder; });
        addedWatches_.push_back(kept == former.end() ? watch(folder, notBefore) : std::move(*kept));
    }
    former.clear();
    tellSoon();
}

std::unique_ptr<FolderWatch> FolderScreenshotQuery::watch(const QByteArray& folder, qint64 notBefore) {
    const FolderWatchInputs inputs{notices_, *timeSource_, places_.tellsNoChanges, places_.desktopPixels, notBefore};
    auto watch = std::make_unique<FolderWatch>(folder, inputs);
    connect(watch.get(), &FolderWatch::changed, this, &FolderScreenshotQuery::tellSoon);
    return watch;
}

void FolderScreenshotQuery::tellSoon() {
    if (!telling_)
        telling_ = timeSource_->startTimer(quickSuccession, [this] { tell(); });
}

void FolderScreenshotQuery::tell() {
    telling_.reset();
    const QList<ScreenshotItem> items = gather();
    if (items == results_)
        return;
    results_ = items;
    Q_EMIT updated();
}

QList<ScreenshotItem> FolderScreenshotQuery::gather() {
    std::vector<Candidate> candidates;
    QList<FileStamp> seen; // a folder may have several paths
    const auto collect = [&](const FolderWatch& watch) {
        const auto& folder = watch.contents().folder;
        const auto isThis = [&](const FileStamp& other) {
            return other.device == folder->device && other.inode == folder->inode;
        };
        if (!folder || std::any_of(seen.cbegin(), seen.cend(), isThis))
            return;
        seen.append(*folder);
        const FoundPictures& pictures = watch.contents().pictures;
        for (auto it = pictures.cbegin(); it != pictures.cend(); ++it) {
            if (!it->isPartial)
                candidates.push_back({watch.folder() + '/' + it.key(), &*it, it->stamp.creation()});
        }
    };
    for (const Watches* const watches : {&watches_, &addedWatches_}) {
        for (const auto& watch : *watches)
            collect(*watch);
    }
    std::sort(candidates.begin(), candidates.end(), isOlder);

    QList<ScreenshotItem> items;
    items.reserve(static_cast<qsizetype>(candidates.size()));
    QSet<QByteArray> fresh;
    for (const Candidate& candidate : candidates) {
        const FileStamp& stamp = candidate.picture->stamp;
        ScreenshotFacts facts = candidate.picture->facts;
        if (facts == allFacts) {
            fresh.insert(candidate.path);
            if (!originals_.isOriginal(candidate.path, stamp))
                facts.setFlag(ScreenshotFact::capturedRectangle, false);
        }
        items.append({candidate.path, stamp.creationDate(), facts});
    }
    originals_.forgetPlacesBut(fresh);
    return items;
}

} // namespace quenby
