#include "platform/linux/screenshots/FolderScreenshotQuery.h"

#include "platform/linux/screenshots/ScreenshotFolders.h"

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
    if (!watches_.empty())
        return;
    // By the clock that stamps the files.
    const qint64 notBefore = QDateTime::currentMSecsSinceEpoch() - beforeStart;
    const FolderWatchInputs inputs{notices_, *timeSource_, places_.tellsNoChanges, places_.desktopPixels, notBefore};
    for (const QByteArray& folder : places_.folders) {
        watches_.push_back(std::make_unique<FolderWatch>(folder, inputs));
        connect(watches_.back().get(), &FolderWatch::changed, this, &FolderScreenshotQuery::tellSoon);
    }
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
    for (const auto& watch : watches_) {
        const auto& folder = watch->contents().folder;
        const auto isThis = [&](const FileStamp& other) {
            return other.device == folder->device && other.inode == folder->inode;
        };
        if (!folder || std::any_of(seen.cbegin(), seen.cend(), isThis))
            continue;
        seen.append(*folder);
        const FoundPictures& pictures = watch->contents().pictures;
        for (auto it = pictures.cbegin(); it != pictures.cend(); ++it) {
            if (!it->isPartial)
                candidates.push_back({watch->folder() + '/' + it.key(), &*it, it->stamp.creation()});
        }
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
