#include "platform/linux/media/PluginMedia.h"

#include "platform/linux/media/ServerGrabs.h"
#include "platform/linux/modules/ModuleFile.h"

namespace quenby {
namespace {

const QString moduleName = QStringLiteral("quenby-media");

QString notLoaded(const QString& detail) {
    return QStringLiteral("Screen recordings cannot be made or played, because the media framework could not be "
                          "loaded. Install it (on Debian the packages libgstreamer-plugins-base1.0-0 "
                          "and gstreamer1.0-plugins-good) and try again. Details: %1")
        .arg(detail);
}

} // namespace

LoadedMedia::LoadedMedia(QStringList folders)
    : folders_(std::move(folders)) {}

LoadedMedia::~LoadedMedia() = default;

Result<MediaEngine*> LoadedMedia::engine() {
    if (engine_)
        return engine_.get();
    const auto fail = [this](const QString& sentence) {
        unavailableBecause_ = sentence;
        return Error(URLErrorCode::unknown, {{errorKey::reason, sentence}});
    };
    useNoServerGrabs();
    const auto module = loadModule<MediaModule>(folders_, moduleName);
    if (!module)
        return fail(notLoaded(module.error().detail(errorKey::reason).toString()));
    auto engine = (*module)->start();
    if (!engine)
        return fail(engine.error().detail(errorKey::reason).toString());
    engine_ = std::move(engine).value();
    unavailableBecause_.clear();
    return engine_.get();
}

PluginCaptureSessions::PluginCaptureSessions(std::shared_ptr<LoadedMedia> media, CaptureOptions options)
    : media_(std::move(media))
    , options_(std::move(options)) {}

Result<std::unique_ptr<CaptureSession>> PluginCaptureSessions::create() {
    const auto engine = media_->engine();
    if (!engine)
        return engine.error();
    return (*engine)->createSession(options_);
}

PluginMoviePlayers::PluginMoviePlayers(std::shared_ptr<LoadedMedia> media)
    : media_(std::move(media)) {}

Result<std::unique_ptr<MoviePlayer>> PluginMoviePlayers::create() {
    const auto engine = media_->engine();
    if (!engine)
        return engine.error();
    return (*engine)->createPlayer();
}

void PluginMoviePlayers::readFacts(const QByteArray& path, QObject* context, FactsRead read) {
    const auto engine = media_->engine();
    if (engine)
        return (*engine)->readFacts(path, context, std::move(read));
    QMetaObject::invokeMethod(
        context, [read = std::move(read)] { read({}); }, Qt::QueuedConnection);
}

} // namespace quenby
