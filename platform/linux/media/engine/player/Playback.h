// One movie in the media framework: a file goes in, pictures come out when it is time for them.
//
// Threads: the main thread; what the framework does is done on threads of its own, and nothing here waits for it.
// Destroying it stops them.
#pragma once

#include "core/Mailbox.h"
#include "platform/linux/media/engine/GstHandles.h"
#include "platform/linux/media/engine/player/MoviePicture.h"

#include <QByteArray>
#include <QObject>
#include <QTimer>

#include <atomic>
#include <chrono>
#include <memory>

namespace quenby {

class Playback final : public QObject {
    Q_OBJECT

public:
    Playback();
    ~Playback() override;

    // Loads the movie up to its first picture. Once.
    void open(const QByteArray& path);
    void setPlaying(bool isPlaying);
    // To the very picture. settled() tells when it is there; the next one has to wait for that.
    void seek(std::chrono::milliseconds position);
    // Once it has settled.
    bool hasSound() const { return hasSound_; }
    void setVolume(double volume); // 0 to 1, as it is heard
    // Pictures that are larger are made smaller before they come, on another thread.
    void setRoom(const QSize& room);
    // Nothing comes any more.
    void stop();
    std::chrono::milliseconds duration() const; // 0 until it is known

Q_SIGNALS:
    void pictureCame(const quenby::MoviePicture& picture);
    // The first picture, or the one that was sought, has come.
    void settled();
    void ended();
    // A sentence for people.
    void failed(const QString& reason);

private:
    struct Callbacks;
    class PictureSlot;

    void load(const QByteArray& path);
    void connectPipeline();
    GstHandle<GstElement> part(const char* name) const;
    void addSound(GstPad& pad);
    void fail(const QString& reason);

    const std::shared_ptr<Mailbox> mailbox_;
    const std::shared_ptr<PictureSlot> pictures_;
    std::shared_ptr<GstElement> pipeline_;
    bool isPlaying_ = false;
    QTimer opening_;
    std::atomic<bool> hasPictures_ = false;
    std::atomic<bool> hasSound_ = false;
    bool hasFailed_ = false;
};

} // namespace quenby
