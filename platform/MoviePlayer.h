// Plays one movie, and tells what is known of it. Threads: the main thread; nothing here blocks.
#pragma once

#include "core/CompletionGate.h"
#include "core/Result.h"
#include "platform/Service.h"

#include <QByteArray>
#include <QObject>
#include <QSize>

#include <chrono>
#include <functional>
#include <memory>

class QWidget;

namespace quenby {

// All zero for a movie that cannot be read.
struct MovieFacts {
    QSize naturalSize{0, 0}; // pixels
    double seconds = 0;

    friend bool operator==(const MovieFacts&, const MovieFacts&) = default;
};

class MoviePlayer : public QObject {
    Q_OBJECT

public:
    // Shows the picture, as large as fits, black around it. Owned by the player until it is given a parent.
    virtual QWidget* view() = 0;
    // An absolute path, as bytes. Shows the first picture and waits.
    virtual void open(const QByteArray& path) = 0;
    virtual void play() = 0;
    virtual void pause() = 0;
    virtual bool isPlaying() const = 0;
    virtual void setPosition(std::chrono::milliseconds position) = 0;
    virtual std::chrono::milliseconds position() const = 0;
    virtual std::chrono::milliseconds duration() const = 0; // 0 until it is known
    virtual bool hasSound() const = 0;                      // false until the duration is known
    virtual void setVolume(double volume) = 0;              // 0 to 1, as it is heard

Q_SIGNALS:
    void positionChanged();
    void durationChanged();
    void playingChanged(); // the end of the movie is a pause at its last picture
    // A sentence for people.
    void failed(const QString& reason);
};

class MoviePlayers : public PlatformService {
public:
    using FactsRead = std::function<void(const MovieFacts& facts)>;

    // Fails with a reason for people.
    virtual Result<std::unique_ptr<MoviePlayer>> create() = 0;
    virtual void readFacts(const QByteArray& path, QObject* context, FactsRead read) = 0;
};

} // namespace quenby
