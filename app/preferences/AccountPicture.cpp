#include "app/preferences/AccountPicture.h"

#include "app/account/DriveConnection.h"
#include "app/pictures/PictureAddress.h"
#include "app/pictures/PictureDecoder.h"
#include "app/pictures/PictureDownload.h"
#include "app/session/AccountDetails.h"
#include "core/CompletionGate.h"
#include "driveapi/GTLDriveAbout.h"
#include "http/GTMHTTPFetcher.h"
#include "http/GTMHTTPFetcherService.h"

#include <QRegularExpression>

#include <utility>

namespace quenby {
namespace {

// The provider's addresses end in the size that they give, which is too small for a screen of twice the density.
QUrl withLargerSize(const QUrl& address, const Endpoints& endpoints) {
    static const QRegularExpression size(QStringLiteral("=s\\d{1,4}(-c)?$"));
    QString path = address.path(QUrl::FullyEncoded);
    if (endpoints.isLocal || !endpoints.webPlaces.userContent.contains(address) || !path.contains(size))
        return address;
    QUrl larger = address;
    larger.setPath(path.replace(size, QStringLiteral("=s150\\1")), QUrl::StrictMode); // what the decoder leaves of it
    return larger;
}

} // namespace

AccountPicture::AccountPicture(const DriveConnection& drive, const AccountDetails& details)
    : service_(drive.pictureFetcherService())
    , endpoints_(drive.endpoints())
    , details_(details) {
    worker_.setMaxThreadCount(1);
    connect(&details_, &AccountDetails::changed, this, &AccountPicture::follow);
}

// The worker's thread ends with its pool, soon: what it has begun sees that it was given up.
AccountPicture::~AccountPicture() { giveUp(); }

void AccountPicture::fetch() {
    isWanted_ = true;
    follow();
}

QImage AccountPicture::picture() const { return address() == address_ ? picture_ : QImage(); }

void AccountPicture::clear() {
    giveUp();
    isWanted_ = false;
    address_.clear();
    if (!std::exchange(picture_, QImage()).isNull())
        Q_EMIT changed();
}

QUrl AccountPicture::address() const {
    const auto about = details_.DriveInfoAPI();
    const auto user = about ? about->user() : nullptr;
    const auto picture = user ? user->picture() : nullptr;
    return picture ? withLargerSize(QUrl(picture->url(), QUrl::StrictMode), endpoints_) : QUrl();
}

void AccountPicture::follow() {
    if (!isWanted_)
        return;
    const QUrl now = address();
    if (now != address_) {
        giveUp();
        address_ = now;
        if (!std::exchange(picture_, QImage()).isNull())
            Q_EMIT changed();
    }
    const bool isHereOrComing = !picture_.isNull() || download_ || isGivenUp_;
    if (!isHereOrComing && pictureAddress(now, endpoints_) != PictureAddress::refused)
        begin(now);
}

void AccountPicture::begin(const QUrl& address) {
    const auto fetcher = service_->fetcherWithRequest(URLRequest(address));
    fetcher->setAuthorizer(nullptr); // whoever has the address may see the picture
    fetcher->setIsURLSecret(true);
    fetcher->setCookieStorageMethod(CookieStorageMethod::none);
    download_ = std::make_unique<PictureDownload>(fetcher, service_->timeSource(), nullptr);
    connect(download_.get(), &PictureDownload::ended, this, [this](const QByteArray& bytes) {
        download_.release()->deleteLater(); // this comes from inside of it
        if (!bytes.isEmpty())
            decode(bytes);
    });
    download_->begin();
}

void AccountPicture::decode(const QByteArray& bytes) {
    isGivenUp_ = std::make_shared<std::atomic<bool>>(false);
    const CompletionGate<QImage> gate(this, [this, work = isGivenUp_](const QImage& picture) {
        if (*work)
            return;
        isGivenUp_.reset();
        picture_ = picture;
        if (!picture.isNull())
            Q_EMIT changed();
    });
    worker_.start([bytes, gate, work = isGivenUp_] { gate.deliver(decodedRowPicture(bytes, *work)); });
}

void AccountPicture::giveUp() {
    download_.reset();
    if (const auto work = std::exchange(isGivenUp_, nullptr))
        *work = true;
}

} // namespace quenby
