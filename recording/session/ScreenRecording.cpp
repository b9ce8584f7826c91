#include "recording/session/ScreenRecording.h"

#include "core/CaptureNames.h"
#include "platform/CacheFolders.h"
#include "recording/overlay/OverlayWindow.h"
#include "recording/session/MoviePlace.h"
#include "recording/session/SelectionTarget.h"

#include <QLoggingCategory>

namespace quenby {
namespace {

Q_LOGGING_CATEGORY(recordingLog, "quenby.recording")

// Lets the overlays close, and the panel come to rest.
constexpr std::chrono::milliseconds delayBeforeStart(100);
// Where overlays show a picture of the screen, windows that are on their way out must not be in it.
constexpr std::chrono::milliseconds timeForWindowsToGo(250);

// Points. Whatever is not larger is taken for a slip.
constexpr qreal tooSmall = 10;

QString noteOf(RecordingEnd end, bool isDisplayGone) {
    switch (end) {
    case RecordingEnd::diskFull:
        return ScreenRecording::tr("The recording was ended because the disk is almost full. Make room before you "
                                   "record again.");
    case RecordingEnd::encoderFailed:
        return ScreenRecording::tr("The recording was ended because the video encoder failed. What was recorded until "
                                   "then is in the movie.");
    case RecordingEnd::sourceGone:
        return ScreenRecording::tr("The recording was ended because the screen could not be captured any longer.");
    case RecordingEnd::asked:
        break;
    }
    return isDisplayGone ? ScreenRecording::tr("The recording was ended because the screens were changed.") : QString();
}

} // namespace

Result<std::unique_ptr<ScreenRecording>> ScreenRecording::create(const RecordingServices& services) {
    auto session = services.sessions.create();
    if (!session)
        return session.error();
    return std::unique_ptr<ScreenRecording>(new ScreenRecording(services, std::move(session).value()));
}

ScreenRecording::ScreenRecording(const RecordingServices& services, std::unique_ptr<CaptureSession> session)
    : services_(services)
    , session_(std::move(session))
    , display_(services.displays.main()) {
    session_->setScreenInput({display_, {}});
    connect(session_.get(), &CaptureSession::recordingStarted, this, &ScreenRecording::recordingStarted);
    connect(session_.get(), &CaptureSession::recordingFinished, this, &ScreenRecording::finished);
    connect(session_.get(), &CaptureSession::recordingFailed, this, [this](const Error& error) {
        qCWarning(recordingLog, "The recording failed: %s", qPrintable(error.description()));
        const bool isDeclined = error.code() == 0;
        Q_EMIT recordingFailed(isDeclined ? QString() : tr("The screen could not be recorded."),
                               error.detail(errorKey::reason).toString());
    });
    connect(&services_.displays, &Displays::changed, this, &ScreenRecording::displaysChanged);
}

ScreenRecording::~ScreenRecording() { closeOverlays(); }

// --- Selecting ------------------------------------------------------------------------------------------------------

void ScreenRecording::setDisplayAndCropRect() {
    RecordingState& state = services_.state;
    if (state.isRecordingVideo || state.isRecordingVideoClicked)
        return;
    const bool wereWindowsShown = services_.minimizeAllWindows();
    state.isCropSelection = false;
    state.isRecordingVideo = false;
    state.isRecordingVideoClicked = true;
    if (wereWindowsShown && !services_.displays.isComposited())
        soon_ = services_.timeSource->startTimer(timeForWindowsToGo, [this] { showOverlays(); });
    else
        showOverlays();
}

void ScreenRecording::showOverlays() {
    const Display mainDisplay = services_.displays.main();
    for (const Display& display : services_.displays.all()) {
        auto overlay = std::make_unique<OverlayWindow>(display, mainDisplay, services_.displays, services_.state);
        connect(overlay.get(), &OverlayWindow::didSelectRect, this,
                [this, display](const QRectF& rect) { drawMouseBoxView_didSelectRect(display, rect); });
        connect(overlay.get(), &OverlayWindow::abandoned, this, &ScreenRecording::abandoned);
        shadeWindows_.push_back(std::move(overlay));
    }
    for (const auto& overlay : shadeWindows_)
        overlay->present(overlay == shadeWindows_.front());
}

void ScreenRecording::closeOverlays() { shadeWindows_.clear(); }

void ScreenRecording::drawMouseBoxView_didSelectRect(const Display& overlaysDisplay, const QRectF& rect) {
    if (shadeWindows_.empty()) // a second answer
        return;
    const Display mainDisplay = services_.displays.main();
    const QRectF onDesktop = rect.translated(lowerLeft(overlaysDisplay, mainDisplay));
    // Otherwise the input stays what it was.
    if (const auto display = displayUnder(onDesktop, services_.displays.all(), mainDisplay))
        addDisplayInputToCaptureSession(*display, rect);
    closeOverlays();
    if (rect.width() <= tooSmall || rect.height() <= tooSmall) {
        Q_EMIT selectionTooSmall();
        return;
    }
    services_.state.isRecordingVideo = true;
    services_.state.isRecordingVideoClicked = false;
    soon_ = services_.timeSource->startTimer(delayBeforeStart, [this] { startRecording(); });
    Q_EMIT selected();
}

void ScreenRecording::addDisplayInputToCaptureSession(const Display& display, const QRectF& cropRect) {
    CaptureInput input = session_->screenInput();
    if (display.identifier != display_.identifier)
        input.display = display;
    input.cropRect = selectedPixels(cropRect, input.display);
    session_->setScreenInput(input);
}

// Overlays that lie where no display is would be a trap.
void ScreenRecording::displaysChanged() {
    // Any key ends the waiting for a selection, but not the overlays.
    if (services_.state.isRecordingVideoClicked || !shadeWindows_.empty()) {
        closeOverlays();
        Q_EMIT abandoned();
        return;
    }
    if (isDisplayGone_ || !(isStarted_ || soon_) || services_.displays.all().contains(session_->screenInput().display))
        return;
    isDisplayGone_ = true;
    if (isStarted_)
        session_->stopRecording();
    else
        Q_EMIT abandoned();
}

// --- Recording ------------------------------------------------------------------------------------------------------

void ScreenRecording::startRecording() {
    soon_.reset();
    const auto fail = [this](const Error& error) {
        Q_EMIT recordingFailed(tr("The screen could not be recorded."), error.detail(errorKey::reason).toString());
    };
    const auto folder = services_.cacheFolders.create(services_.folderName);
    if (!folder)
        return fail(folder.error());
    const auto place = freeMoviePlace(*folder, screenCastName(services_.timeSource->now().toLocalTime()));
    if (!place)
        return fail(place.error());
    if (!*place) {
        Q_EMIT recordingFailed({}, {});
        return;
    }
    isStarted_ = true;
    session_->startRecording(**place);
}

void ScreenRecording::stopRecording() {
    soon_.reset();
    if (isStarted_)
        session_->stopRecording();
    else
        Q_EMIT abandoned();
}

void ScreenRecording::finished(const QByteArray& path, RecordingEnd end) {
    isStarted_ = false;
    Q_EMIT recordingFinished(path, noteOf(end, isDisplayGone_));
}

} // namespace quenby
