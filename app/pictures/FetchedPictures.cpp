#include "app/pictures/FetchedPictures.h"

#include "app/agent/CacheFolderNames.h"
#include "app/pictures/PictureAddress.h"
#include "app/pictures/PictureDecoder.h"
#include "app/pictures/PictureDownload.h"
#include "app/pictures/PictureFile.h"
#include "core/CompletionGate.h"
#include "http/GTMHTTPFetcherService.h"
#include "platform/CacheFolders.h"

#include <QCache>
#include <QThreadPool>

#include <atomic>
#include <functional>

namespace quenby {
namespace {

// A picture costs its pixels, at most 126 KB.
constexpr qsizetype memoryForPictures = 5'000'000; // the 16 rows of the list, and as many that have been in it
constexpr qsizetype memoryForIcons = 1'000'000;
constexpr int servicePriority = 10; // behind whatever else waits in the fetcher service, which is 0

qsizetype costOf(const QImage& picture) { return std::max<qsizetype>(picture.sizeInBytes(), 1); }

bool isDeleted(const ChangeRecord& record) { return record.status == ChangeRecord::Status::deleted; }

// A deleted file's picture is another matter than the one that the file had: it is not taken from the folder.
QString keyOf(const ChangeRecord& record) {
    return (isDeleted(record) ? QLatin1String("-") : QLatin1String("+")) + record.identifier;
}

// The time between two clear(). Work on the other thread looks at it to see whether it still matters.
struct Round {
    std::atomic<bool> isOver = false;
};

struct Kept {
    QImage picture;
    bool hasThumbnail = false; // nothing better is to be had
};

} // namespace

struct FetchedPictures::Private {
    FetchedPictures& q;
    const std::shared_ptr<GTMHTTPFetcherService> service;
    const Endpoints endpoints;
    CacheFolders& folders;

    QCache<QString, Kept> kept{memoryForPictures};   // by keyOf()
    QCache<QString, QImage> icons{memoryForIcons};   // by address: most rows show one of a few
    QHash<QString, QList<ChangeRecord>> iconWaiters; // by the address that is on its way
    QHash<QString, int> onTheWay;                    // by keyOf(): how much of it may still come
    std::shared_ptr<Round> round = std::make_shared<Round>();
    std::unique_ptr<QObject> downloads = std::make_unique<QObject>(); // their parent
    QThreadPool worker; // one thread is enough, and leaves the computer to others

    Private(FetchedPictures& pictures, std::shared_ptr<GTMHTTPFetcherService> fetcherService, Endpoints addresses,
            CacheFolders& cacheFolders)
        : q(pictures)
        , service(std::move(fetcherService))
        , endpoints(std::move(addresses))
        , folders(cacheFolders) {
        worker.setMaxThreadCount(1);
    }

    void onWorker(std::function<QImage(const Round&)> make, std::function<void(const QImage&)> use);
    void bring(const ChangeRecord& record);
    void download(const ChangeRecord& record);
    void downloadIcon(const ChangeRecord& record);
    void downloadThumbnail(const ChangeRecord& record);
    void fetch(const QString& address, std::function<void(const QImage&)> use);
    void iconCame(const QString& address, const QImage& icon);
    void thumbnailCame(const ChangeRecord& record, const QImage& thumbnail);
    void show(const ChangeRecord& record, const QImage& picture, bool isThumbnail);
    void partEnded(const ChangeRecord& record);
};

FetchedPictures::FetchedPictures(std::shared_ptr<GTMHTTPFetcherService> fetcherService, const Endpoints& endpoints,
                                 CacheFolders& folders)
    : d_(std::make_unique<Private>(*this, std::move(fetcherService), endpoints, folders)) {}

// The worker's thread ends with its pool, soon: what it has begun sees that the round is over.
FetchedPictures::~FetchedPictures() { clear(); }

QImage FetchedPictures::picture(const ChangeRecord& record) const {
    const Kept* kept = d_->kept.object(keyOf(record));
    return kept ? kept->picture : QImage();
}

void FetchedPictures::want(const ChangeRecord& record) {
    if (record.identifier.isEmpty() || d_->onTheWay.contains(keyOf(record)))
        return;
    const Kept* kept = d_->kept.object(keyOf(record));
    // An icon is all there is of a file without a thumbnail. Of others the thumbnail may have become ready.
    if (kept && (kept->hasThumbnail || record.thumbnailLink.isEmpty()))
        return;
    d_->bring(record);
}

void FetchedPictures::clear() {
    d_->round->isOver = true;
    d_->round = std::make_shared<Round>();
    d_->downloads = std::make_unique<QObject>();
    d_->iconWaiters.clear();
    d_->onTheWay.clear();
    d_->kept.clear();
    d_->icons.clear();
}

// Makes a picture on the other thread and uses it on this one, unless the round ends in between.
void FetchedPictures::Private::onWorker(std::function<QImage(const Round&)> make,
                                        std::function<void(const QImage&)> use) {
    CompletionGate<QImage> gate(&q, [now = round, use = std::move(use)](const QImage& picture) {
        if (!now->isOver)
            use(picture);
    });
    worker.start([now = round, make = std::move(make), gate = std::move(gate)] {
        if (!now->isOver)
            gate.deliver(make(*now));
    });
}

void FetchedPictures::Private::bring(const ChangeRecord& record) {
    onTheWay.insert(keyOf(record), 1);
    const QString path = folders.path(cacheFolderName::images) + QLatin1Char('/') + pictureFileName(record.identifier);
    onWorker([path, isRead = !isDeleted(record)](
                 const Round& now) { return isRead ? readPictureFile(path, now.isOver) : QImage(); },
             [this, record](const QImage& picture) {
                 if (picture.isNull())
                     download(record);
                 partEnded(record);
                 if (!picture.isNull())
                     show(record, picture, true);
             });
}

void FetchedPictures::Private::download(const ChangeRecord& record) {
    downloadThumbnail(record);
    if (!kept.contains(keyOf(record)))
        downloadIcon(record);
}

void FetchedPictures::Private::downloadIcon(const ChangeRecord& record) {
    ++onTheWay[keyOf(record)];
    const QString& address = record.iconLink;
    QList<ChangeRecord>& waiters = iconWaiters[address];
    waiters.append(record);
    if (waiters.size() > 1)
        return;
    const auto came = [this, address](const QImage& icon) { iconCame(address, icon); };
    if (const QImage* known = icons.object(address))
        return onWorker([icon = *known](const Round&) { return icon; }, came);
    fetch(address, came);
}

void FetchedPictures::Private::downloadThumbnail(const ChangeRecord& record) {
    ++onTheWay[keyOf(record)];
    fetch(record.thumbnailLink, [this, record](const QImage& thumbnail) { thumbnailCame(record, thumbnail); });
}

// Uses a null picture when the address has none to give.
void FetchedPictures::Private::fetch(const QString& address, std::function<void(const QImage&)> use) {
    const QUrl url(address, QUrl::StrictMode);
    const PictureAddress kind = pictureAddress(url, endpoints);
    if (kind == PictureAddress::refused)
        return onWorker([](const Round&) { return QImage(); }, std::move(use));
    const auto fetcher = service->fetcherWithRequest(URLRequest(url));
    if (kind != PictureAddress::ofTheDrive)
        fetcher->setAuthorizer(nullptr);
    fetcher->setIsURLSecret(true);
    fetcher->setServicePriority(servicePriority);
    fetcher->setCookieStorageMethod(CookieStorageMethod::none); // a picture is no reason to be recognised again
    auto* download = new PictureDownload(fetcher, service->timeSource(), downloads.get());
    connect(download, &PictureDownload::ended, &q, [this, download, use = std::move(use)](const QByteArray& bytes) {
        download->deleteLater();
        onWorker([bytes](const Round& now) { return decodedRowPicture(bytes, now.isOver); }, use);
    });
    download->begin();
}

void FetchedPictures::Private::iconCame(const QString& address, const QImage& icon) {
    const QList<ChangeRecord> waiters = iconWaiters.take(address);
    for (const ChangeRecord& record : waiters)
        partEnded(record);
    if (icon.isNull())
        return;
    icons.insert(address, new QImage(icon), costOf(icon));
    const auto now = round; // whoever hears of a picture may clear()
    for (qsizetype i = 0; i < waiters.size() && !now->isOver; ++i)
        show(waiters[i], icon, false);
}

void FetchedPictures::Private::thumbnailCame(const ChangeRecord& record, const QImage& thumbnail) {
    partEnded(record);
    if (thumbnail.isNull())
        return;
    if (const Result<QString> folder = folders.create(cacheFolderName::images)) {
        const QString path = *folder + QLatin1Char('/') + pictureFileName(record.identifier);
        worker.start([now = round, path, thumbnail] { writePictureFile(path, thumbnail, now->isOver); });
    }
    show(record, thumbnail, true);
}

void FetchedPictures::Private::show(const ChangeRecord& record, const QImage& picture, bool isThumbnail) {
    const QString key = keyOf(record);
    const Kept* former = kept.object(key);
    if (!isThumbnail && former && former->hasThumbnail)
        return; // an icon that is late
    kept.insert(key, new Kept{picture, isThumbnail}, costOf(picture));
    Q_EMIT q.arrived(record.identifier);
}

void FetchedPictures::Private::partEnded(const ChangeRecord& record) {
    const auto found = onTheWay.find(keyOf(record));
    if (found != onTheWay.end() && --found.value() == 0)
        onTheWay.erase(found);
}

} // namespace quenby
