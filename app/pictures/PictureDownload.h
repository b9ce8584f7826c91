// One picture on its way from the network, of limited size and for a limited time: a body may be endless, and may
// trickle.
//
// Threads: the main thread. Destroying it gives the download up.
#pragma once

#include "core/TimeSource.h"

#include <QByteArray>
#include <QObject>

#include <memory>

namespace quenby {

class GTMHTTPFetcher;

class PictureDownload final : public QObject {
    Q_OBJECT

public:
    static constexpr qint64 mostBytes = 4 * 1024 * 1024;
    // From the moment when the connection begins; waiting for a place in the service's queue does not count.
    static constexpr std::chrono::milliseconds patience = std::chrono::seconds(30);

    PictureDownload(std::shared_ptr<GTMHTTPFetcher> fetcher, std::shared_ptr<TimeSource> timeSource, QObject* parent);
    ~PictureDownload() override;

    void begin();

Q_SIGNALS:
    // Once, never from inside of begin(). The body of a successful answer, or null for everything else.
    void ended(const QByteArray& bytes);

private:
    void end(const QByteArray& bytes);

    const std::shared_ptr<GTMHTTPFetcher> fetcher_;
    const std::shared_ptr<TimeSource> timeSource_;
    std::unique_ptr<Timer> timer_;
    bool hasEnded_ = false;
};

} // namespace quenby
