#include "app/recording/RecordingFlow.h"

#include "app/agent/CacheFolderNames.h"
#include "app/recording/InterruptedRecordings.h"
#include "platform/Alerts.h"
#include "platform/CacheFolders.h"
#include "recording/review/MovieSaving.h"
#include "recording/review/ShareVideoController.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QLoggingCategory>

namespace quenby {
namespace {

Q_LOGGING_CATEGORY(recordingLog, "quenby.recording")

// Let the status bar and the file come to rest, and windows that were shown before.
constexpr std::chrono::milliseconds delayBeforeStop(100);
constexpr std::chrono::milliseconds delayBeforeReview(200);

} // namespace

RecordingFlow::RecordingFlow(const Surroundings& surroundings)
    : surroundings_(surroundings)
    , myStatusItemRemove_(surroundings.makeStopItemHosts, surroundings.timeSource) {
    connect(&myStatusItemRemove_, &StopItem::clicked, this, &RecordingFlow::stopRecordingSelf);
}

RecordingFlow::~RecordingFlow() = default;

// --- Start and stop -------------------------------------------------------------------------------------------------

void RecordingFlow::startRecordingSelf() {
    if (state_.isRecordingVideo) {
        surroundings_.alerts.show(nullptr, {tr("Alert"), tr("Video recording is already running."), {}, {tr("OK")}});
        return;
    }
    if (isMovieAwaited_) // the last one is not in the review window yet, and would be lost
        return;
    releaseRecording();
    shareVideoControllerObj_.reset();
    auto recording = ScreenRecording::create({surroundings_.captureSessions, surroundings_.displays,
                                              surroundings_.cacheFolders, cacheFolderName::recordings,
                                              surroundings_.timeSource, state_, surroundings_.minimizeAllWindows});
    if (recording) {
        ScreenRecordingObj_ = std::move(recording).value();
        connectRecording();
        qApp->installEventFilter(this);
        ScreenRecordingObj_->setDisplayAndCropRect();
    }
    state_.isRecordingVideo = true;
    myStatusItemRemove_.show();
    if (!recording)
        sessionNotMade(recording.error());
}

void RecordingFlow::connectRecording() {
    const ScreenRecording* recording = ScreenRecordingObj_.get();
    connect(recording, &ScreenRecording::selectionTooSmall, this, &RecordingFlow::selectionTooSmall);
    connect(recording, &ScreenRecording::abandoned, this, &RecordingFlow::stopMannually);
    connect(recording, &ScreenRecording::selected, this, [this] { Q_EMIT reached("selected"); });
    connect(recording, &ScreenRecording::recordingStarted, this, [this] {
        Q_EMIT reached("recording");
        isMovieAwaited_ = true;
        myStatusItemRemove_.startClock();
    });
    connect(recording, &ScreenRecording::recordingFinished, this, &RecordingFlow::recordingFinished);
    connect(recording, &ScreenRecording::recordingFailed, this, &RecordingFlow::recordingFailed);
}

void RecordingFlow::stopRecordingSelf() {
    Q_EMIT reached("stopped");
    isMovieAwaited_ = ScreenRecordingObj_ && state_.isRecordingVideo && !state_.isRecordingVideoClicked;
    becomeIdle();
    if (ScreenRecordingObj_)
        soon_ = surroundings_.timeSource->startTimer(delayBeforeStop, [this] {
            if (ScreenRecordingObj_)
                ScreenRecordingObj_->stopRecording();
        });
}

void RecordingFlow::stopMannually() {
    becomeIdle();
    releaseRecording();
}

void RecordingFlow::becomeIdle() {
    state_.isRecordingVideo = false;
    state_.isRecordingVideoClicked = false;
    qApp->removeEventFilter(this);
    myStatusItemRemove_.remove();
    notMade_.cancel(); // read later, it would end another recording
}

// It may be what is telling.
void RecordingFlow::releaseRecording() {
    soon_.reset();
    isMovieAwaited_ = false;
    if (!ScreenRecordingObj_)
        return;
    ScreenRecordingObj_->disconnect(this);
    ScreenRecordingObj_.release()->deleteLater();
}

// Nothing is recorded and the item is there all the same, until the message has been read.
void RecordingFlow::sessionNotMade(const Error& error) {
    notMade_ = surroundings_.alerts.show(
        nullptr, {tr("The screen could not be recorded."), error.detail(errorKey::reason).toString(), {}, {tr("OK")}},
        this, [this](int) { stopRecordingSelf(); });
}

void RecordingFlow::selectionTooSmall() {
    stopMannually();
    surroundings_.alerts.show(nullptr,
                              {tr("Alert"),
                               tr("Video can not be cropped. Please select proper selection."),
                               {},
                               {tr("Try Again"), tr("Close")}},
                              this, [this](int button) {
                                  if (button == 0)
                                      startRecordingSelf();
                              });
}

// Any other key than Escape leaves the overlay to the pointer alone.
bool RecordingFlow::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::KeyPress || !watched->isWindowType() || !state_.isRecordingVideoClicked)
        return QObject::eventFilter(watched, event);
    const int key = static_cast<QKeyEvent*>(event)->key();
    qCDebug(recordingLog, "%hu", quint16(static_cast<QKeyEvent*>(event)->nativeScanCode()));
    const bool isModifier = key == Qt::Key_Shift || key == Qt::Key_Control || key == Qt::Key_Alt ||
                            key == Qt::Key_Meta || key == Qt::Key_AltGr || key == Qt::Key_CapsLock;
    if (isModifier)
        return false;
    if (key == Qt::Key_Escape)
        stopMannually();
    state_.isRecordingVideoClicked = false;
    return false;
}

// --- The movie ------------------------------------------------------------------------------------------------------

void RecordingFlow::recordingFinished(const QByteArray& path, const QString& note) {
    becomeIdle();
    if (!note.isEmpty())
        surroundings_.alerts.show(nullptr, {tr("Alert"), note, {}, {tr("OK")}});
    soon_ = surroundings_.timeSource->startTimer(delayBeforeReview, [this, path] { openShareVideoController(path); });
}

void RecordingFlow::recordingFailed(const QString& message, const QString& information) {
    stopMannually();
    if (!message.isEmpty())
        surroundings_.alerts.show(nullptr, {message, information, {}, {tr("OK")}});
}

void RecordingFlow::openShareVideoController(const QByteArray& path) {
    releaseRecording();
    shareVideoControllerObj_ = std::make_unique<ShareVideoController>(
        ShareVideoController::Services{surroundings_.moviePlayers, surroundings_.alerts, surroundings_.filePanels,
                                       surroundings_.fileBrowser, surroundings_.opener});
    const ShareVideoController* review = shareVideoControllerObj_.get();
    connect(review, &ShareVideoController::newRecordingRequested, this, &RecordingFlow::startRecordingSelf,
            Qt::QueuedConnection);
    connect(review, &ShareVideoController::closed, this, [this, review] {
        if (shareVideoControllerObj_.get() == review)
            shareVideoControllerObj_.release()->deleteLater();
    });
    connect(review, &ShareVideoController::uploadRequested, this, &RecordingFlow::uploadRequested);
    connect(review, &ShareVideoController::savingStarted, this, &RecordingFlow::savingStarted);
    shareVideoControllerObj_->setUrlVideo(path);
    shareVideoControllerObj_->showInFront();
    Q_EMIT reached("review");
}

void RecordingFlow::savingStarted(const MovieSaving* saving) {
    ++savings_;
    connect(saving, &MovieSaving::copyEnded, this, [this] { --savings_; });
}

bool RecordingFlow::minimizeReviewWindow() {
    return shareVideoControllerObj_ && shareVideoControllerObj_->minimizeWindow();
}

void RecordingFlow::findInterruptedRecordings() {
    interrupted_ = recoverInterruptedRecordings(surroundings_.cacheFolders.path(cacheFolderName::recordings));
    if (areInterruptedWaiting())
        qCInfo(recordingLog, "Recordings that were interrupted: %d", int(interrupted_.size()));
}

void RecordingFlow::leaveInterrupted(const QSet<QByteArray>& others) {
    interrupted_.removeIf([&others](const QByteArray& path) { return others.contains(path); });
}

void RecordingFlow::showInterruptedRecordings() {
    const bool isBusy = state_.isRecordingVideo || isMovieAwaited_ || shareVideoControllerObj_;
    if (areInterruptedWaiting() && !isBusy)
        soon_ = surroundings_.timeSource->startTimer(
            delayBeforeReview, [this] { openShareVideoController(std::exchange(interrupted_, {}).last()); });
}

} // namespace quenby
