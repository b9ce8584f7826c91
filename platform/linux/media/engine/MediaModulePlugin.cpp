#include "platform/linux/media/engine/MediaModulePlugin.h"

#include "platform/linux/media/engine/capture/GstCaptureSession.h"
#include "platform/linux/media/engine/player/GstMoviePlayer.h"
#include "platform/linux/media/engine/player/MovieFactsReader.h"

namespace quenby {
namespace {

class FrameworkEngine final : public MediaEngine {
public:
    Result<std::unique_ptr<CaptureSession>> createSession(const CaptureOptions& options) override {
        return capture_.createSession(options);
    }
    std::unique_ptr<MoviePlayer> createPlayer() override { return std::make_unique<GstMoviePlayer>(); }
    void readFacts(const QByteArray& path, QObject* context, MoviePlayers::FactsRead read) override {
        readMovieFacts(path, context, std::move(read));
    }

private:
    CaptureEngine capture_;
};

} // namespace

Result<std::unique_ptr<MediaEngine>> MediaModulePlugin::start() {
    return std::unique_ptr<MediaEngine>(std::make_unique<FrameworkEngine>());
}

} // namespace quenby
