// One file on its way from a page to its place: its bytes and the question where it is to go go on side by side.
//
// Threads: the main thread. An arrival that is destroyed before its end leaves nothing behind.
#pragma once

#include "core/CompletionGate.h"
#include "core/TimeSource.h"
#include "platform/WebDownload.h"

#include <QObject>
#include <QVariantMap>

#include <memory>
#include <optional>

namespace quenby {

class Arrival final : public QObject {
    Q_OBJECT

public:
    enum class State { running, paused, finished, failed, cancelled };

    // Begins the download, to `arrivingPath`.
    Arrival(std::shared_ptr<WebDownload> download, const QByteArray& arrivingPath,
            std::shared_ptr<TimeSource> timeSource);
    ~Arrival() override;

    // Where it goes; once. An existing file is replaced, or a free name beside it is taken.
    void setDestination(const QByteArray& path, bool mayReplace);
    bool hasDestination() const { return !destination_.isEmpty(); }
    void pause();
    void resume();
    void cancel();

    State state() const { return state_; }
    bool hasEnded() const { return state_ >= State::finished; }
    // The place that was chosen for it, later the one that it got; empty: not known yet.
    const QByteArray& path() const { return destination_; }
    QString reason() const { return reason_; } // why it failed, for people
    // "DownloadURL" and, once it is known, "DownloadPath".
    QVariantMap record() const;

    qint64 receivedBytes() const { return received_; }
    qint64 totalBytes() const { return total_; }                             // -1: not known
    std::optional<qint64> bytesPerSecond() const { return bytesPerSecond_; } // while it runs

Q_SIGNALS:
    // Bytes, or the state.
    void changed();
    // Once.
    void ended();

private:
    void progressed();
    void arrived(const MaybeError& error);
    void landWhenReady();
    void end(State state, const QString& reason = {});

    const std::shared_ptr<WebDownload> download_;
    const QUrl url_;
    const std::shared_ptr<TimeSource> timeSource_;
    QByteArray arriving_; // empty: it is not there any more
    QByteArray destination_;
    bool mayReplace_ = false;
    bool isWhole_ = false;
    State state_ = State::running;
    QString reason_;
    qint64 received_ = 0;
    qint64 total_ = -1;
    std::optional<qint64> bytesPerSecond_;
    std::chrono::milliseconds measuredAt_;
    qint64 measuredBytes_ = 0;
    CompletionTicket landing_;
};

} // namespace quenby
