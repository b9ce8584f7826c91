#include "platform/linux/media/engine/capture/PortalSource.h"

#include "platform/linux/media/engine/GstHandles.h"
#include "platform/linux/media/engine/capture/GstSetup.h"

#include <QGuiApplication>
#include <QScreen>

#include <algorithm>

namespace quenby {
namespace {

constexpr auto elementName = "pipewiresrc";

Error declined() { return Error(errorDomain::url, 0); }

QList<QRect> screenFrames() {
    QList<QRect> frames;
    for (const QScreen* screen : QGuiApplication::screens())
        frames.append(screen->geometry());
    return frames;
}

// A desktop that changes nothing sends nothing: the last picture is sent again. Pictures are stamped when they come,
// because the desktop's own times may be of any clock. They are copied, because the desktop has only a few places for
// them and waits while all are in use; a copy is in memory, too, wherever the desktop had the picture. Those of a
// turned screen may come as they lie in it. When the stream breaks off, not all of the framework's versions notice.
QByteArray elementsFor(const ScreenCastStream& stream) {
    return QByteArray(elementName) + " fd=" + QByteArray::number(stream.connection.fileDescriptor()) +
           " path=" + QByteArray::number(stream.node) +
           " do-timestamp=true keepalive-time=200 always-copy=true ! watchdog name=" + CaptureFeed::stallGuard +
           " timeout=0 ! videoflip video-direction=auto";
}

} // namespace

bool isOtherScreen(const ScreenCastStream& stream, const Display& meant, const QList<QRect>& screens) {
    // Sizes say nothing: the toolkit's scale may be another than the desktop's. Origins are the desktop's in both.
    const QPoint origin = stream.frame.topLeft();
    return !stream.frame.isEmpty() && origin != meant.frame.topLeft() &&
           std::any_of(screens.begin(), screens.end(),
                       [&origin](const QRect& screen) { return screen.topLeft() == origin; });
}

PortalSource::PortalSource(std::shared_ptr<ScreenCastTokens> tokens, const QDBusConnection& bus)
    : tokens_(std::move(tokens))
    , portal_(bus) {
    connect(&portal_, &ScreenCastPortal::closed, this, &CaptureSource::gone);
}

PortalSource::~PortalSource() = default;

void PortalSource::warmUp() {
    if (const GstHandle<GstElementFactory> factory(gst_element_factory_find(elementName)); factory)
        GstHandle<GstPluginFeature>(gst_plugin_feature_load(GST_PLUGIN_FEATURE(factory.get())));
}

void PortalSource::prepare(const CaptureInput& input) {
    // Before the user is asked for something that cannot be done then.
    if (!missingElement(elementName).isEmpty()) {
        const Error error(URLErrorCode::unknown, {{errorKey::reason, missingElementReason(elementName)}});
        QMetaObject::invokeMethod(
            this, [this, error] { Q_EMIT failed(error); }, Qt::QueuedConnection);
        return;
    }
    portal_.open(tokens_->take(input.display.name), this,
                 [this, input](const Result<std::optional<ScreenCastStream>>& stream) { takeStream(input, stream); });
}

void PortalSource::takeStream(const CaptureInput& input, const Result<std::optional<ScreenCastStream>>& stream) {
    if (!stream)
        return Q_EMIT failed(stream.error());
    if (!stream.value())
        return Q_EMIT failed(declined());
    const auto keptOpen = std::make_shared<ScreenCastStream>(*stream.value());
    CaptureFeed feed;
    feed.description = elementsFor(*keptOpen);
    feed.keptOpen = keptOpen;
    // A selection means nothing on another screen: all of what the user chose is recorded.
    if (!isOtherScreen(*keptOpen, input.display, screenFrames())) {
        feed.crop = input.cropRect;
        feed.cropSize = input.display.pixels.size();
        if (!portal_.restoreToken().isEmpty())
            tokens_->insert(input.display.name, portal_.restoreToken());
        watchScreen(input.display.name);
    }
    Q_EMIT prepared(feed);
}

// Not every desktop ends the stream of a screen that was taken away.
void PortalSource::watchScreen(const QString& name) {
    connect(qApp, &QGuiApplication::screenRemoved, this, [this, name](const QScreen* screen) {
        if (screen->name() == name)
            Q_EMIT gone();
    });
}

} // namespace quenby
