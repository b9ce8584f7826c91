// The picture of the signed-in user: fetched when somebody looks, and again when the account has another one.
//
// Whatever comes from the network may be hostile: only https (or the local Drive) is asked, size and time are limited,
// and what is no picture is ignored.
//
// Threads: the main thread. What it is given outlives it.
#pragma once

#include "core/Endpoints.h"

#include <QImage>
#include <QObject>
#include <QThreadPool>

#include <atomic>
#include <memory>

namespace quenby {

class AccountDetails;
class DriveConnection;
class GTMHTTPFetcherService;
class PictureDownload;

class AccountPicture : public QObject {
    Q_OBJECT

public:
    AccountPicture(const DriveConnection& drive, const AccountDetails& details);
    ~AccountPicture() override;

    // Somebody looks. Before, nothing is fetched. What failed is tried again.
    void fetch();
    // Of at most 210 by 150 pixels; null when there is none, or not yet, or nobody is signed in.
    QImage picture() const;
    // Signed out: forgotten, and nothing is fetched until somebody looks again.
    void clear();

Q_SIGNALS:
    void changed();

private:
    QUrl address() const;
    void follow();
    void begin(const QUrl& address);
    void decode(const QByteArray& bytes);
    void giveUp();

    const std::shared_ptr<GTMHTTPFetcherService> service_;
    const Endpoints endpoints_;
    const AccountDetails& details_;
    bool isWanted_ = false;
    QUrl address_; // of the picture, or of what is on its way
    QImage picture_;
    std::unique_ptr<PictureDownload> download_;
    std::shared_ptr<std::atomic<bool>> isGivenUp_; // told to the decoder; null while none works
    QThreadPool worker_;
};

} // namespace quenby
