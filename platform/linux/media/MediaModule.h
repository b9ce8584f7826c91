// What the module that holds the media framework offers to the program that loads it.
//
// Threads: the main thread. Everything that the module made must be gone before the application object is.
#pragma once

#include "platform/CaptureSession.h"
#include "platform/MoviePlayer.h"

#include <QtPlugin>

#include <memory>

namespace quenby {

// How recordings are made on this machine; benchmarks and tests choose, people get what is here.
struct CaptureOptions {
    // Encoders in the order in which they are tried, by the framework's names; empty: those that are known to be good,
    // hardware first. A description of several elements, "identity ! x264enc", is one as well.
    QStringList encoders;
    // A recording ends in good order when its disk has less than this left, in bytes.
    qint64 leastFreeSpace = 64 * 1024 * 1024;
};

class MediaEngine {
public:
    virtual ~MediaEngine() = default;

    virtual Result<std::unique_ptr<CaptureSession>> createSession(const CaptureOptions& options) = 0;
    virtual std::unique_ptr<MoviePlayer> createPlayer() = 0;
    virtual void readFacts(const QByteArray& path, QObject* context, MoviePlayers::FactsRead read) = 0;
};

class MediaModule {
public:
    virtual ~MediaModule() = default;

    // Once. Fails with a sentence for people.
    virtual Result<std::unique_ptr<MediaEngine>> start() = 0;
};

} // namespace quenby

Q_DECLARE_INTERFACE(quenby::MediaModule, "org.quenby.MediaModule/1")
