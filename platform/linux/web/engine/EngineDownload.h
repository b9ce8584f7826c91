// A download of the engine.
//
// Threads: the main thread. It goes on when its page is closed; it ends, and what has arrived is removed, when it is
// destroyed.
#pragma once

#include "platform/WebDownload.h"

#include <QPointer>

#include <functional>
#include <memory>

class QWebEngineDownloadRequest;
class QWebEngineProfile;

namespace quenby {

// A child of the profile, by which it is found, but owned by whoever took it.
class EngineDownload final : public WebDownload {
    Q_OBJECT

public:
    // The engine offers a download again when it begins anew by itself, as after a lost connection. Whether this was
    // one that goes on.
    static bool goesOnWith(QWebEngineProfile& profile, QWebEngineDownloadRequest& request);

    // From inside of the engine's offer.
    EngineDownload(QWebEngineDownloadRequest& request, std::shared_ptr<QWebEngineProfile> profile);
    ~EngineDownload() override;

    // The offer ends.
    void dropUnlessBegun();

    QUrl url() const override { return url_; }
    QString suggestedFileName() const override { return suggestedFileName_; }
    QString mimeType() const override { return mimeType_; }
    qint64 receivedBytes() const override { return receivedBytes_; }
    qint64 totalBytes() const override { return totalBytes_; }
    State state() const override { return state_; }

    void begin(const QString& path) override;
    void pause() override;
    void resume() override;
    void cancel() override;

private:
    void accept();
    void readBytes();
    void readState();
    void end(State state, const MaybeError& error);
    void tellChanged();
    void removeArrived();
    void later(std::function<void()> function);

    const std::shared_ptr<QWebEngineProfile> profile_; // which owns the request
    QPointer<QWebEngineDownloadRequest> request_;
    const quint32 id_; // of all of the profile's downloads
    const QUrl url_;
    const QString suggestedFileName_;
    const QString mimeType_;
    QString path_;
    qint64 receivedBytes_ = 0;
    qint64 totalBytes_;
    State state_ = State::offered;
    bool isTellingChanged_ = false;
};

} // namespace quenby
