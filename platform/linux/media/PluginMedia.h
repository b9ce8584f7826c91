// Recordings and movies by the media framework in the module "quenby-media", which is loaded with the first of them.
//
// Threads: the main thread. Sessions and players must be gone before the last of these objects, and that before the
// application.
#pragma once

#include "platform/linux/media/MediaModule.h"

#include <QStringList>

#include <memory>

namespace quenby {

// The module, shared by the services below.
class LoadedMedia {
public:
    explicit LoadedMedia(QStringList folders);
    ~LoadedMedia();

    // Loads it with the first call. A failure is tried again: the user may have installed what was missing.
    Result<MediaEngine*> engine();
    const QString& unavailableBecause() const { return unavailableBecause_; }

private:
    const QStringList folders_;
    std::unique_ptr<MediaEngine> engine_;
    QString unavailableBecause_;
};

class PluginCaptureSessions final : public CaptureSessions {
public:
    explicit PluginCaptureSessions(std::shared_ptr<LoadedMedia> media, CaptureOptions options = {});

    Result<std::unique_ptr<CaptureSession>> create() override;
    QString unavailableBecause() const override { return media_->unavailableBecause(); }

private:
    const std::shared_ptr<LoadedMedia> media_;
    const CaptureOptions options_;
};

class PluginMoviePlayers final : public MoviePlayers {
public:
    explicit PluginMoviePlayers(std::shared_ptr<LoadedMedia> media);

    Result<std::unique_ptr<MoviePlayer>> create() override;
    void readFacts(const QByteArray& path, QObject* context, FactsRead read) override;
    QString unavailableBecause() const override { return media_->unavailableBecause(); }

private:
    const std::shared_ptr<LoadedMedia> media_;
};

} // namespace quenby
