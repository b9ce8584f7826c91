#include "platform/linux/media/engine/capture/GstCaptureSession.h"

#include <algorithm>

namespace quenby {
namespace {

constexpr int highestRate = 60; // pictures a second

} // namespace

GstCaptureSession::GstCaptureSession(std::unique_ptr<CaptureSource> source, Recorder* recorder)
    : source_(std::move(source))
    , recorder_(recorder)
    , box_(Mailbox::forContext(recorder)) {
    connect(recorder_, &Recorder::ready, this, [this] {
        if (state_ == State::over)
            return;
        isReady_ = true;
        source_->warmUp();
        prepareWhenReady();
    });
    connect(recorder_, &Recorder::started, this, &CaptureSession::recordingStarted);
    connect(recorder_, &Recorder::finished, this, [this](const QByteArray& path, RecordingEnd end) {
        state_ = State::over;
        source_.reset();
        Q_EMIT recordingFinished(path, end);
    });
    connect(recorder_, &Recorder::failed, this, &GstCaptureSession::fail);
    connect(source_.get(), &CaptureSource::prepared, this, &GstCaptureSession::record);
    connect(source_.get(), &CaptureSource::failed, this, &GstCaptureSession::fail);
    connect(source_.get(), &CaptureSource::gone, this,
            [this] { box_->post([recorder = recorder_] { recorder->end(RecordingEnd::sourceGone); }); });
    box_->post([recorder = recorder_] { recorder->warmUp(); });
}

GstCaptureSession::~GstCaptureSession() {
    box_->post([recorder = recorder_] { recorder->retire(); });
}

void GstCaptureSession::setScreenInput(const CaptureInput& input) {
    input_ = input;
    input_.maximumFrameRate = std::clamp(input.maximumFrameRate, 1, highestRate);
}

void GstCaptureSession::startRecording(const QByteArray& path) {
    if (state_ != State::idle)
        return;
    path_ = path;
    state_ = State::asked;
    prepareWhenReady();
}

void GstCaptureSession::prepareWhenReady() {
    if (state_ != State::asked || !isReady_)
        return;
    state_ = State::preparing;
    source_->prepare(input_);
}

void GstCaptureSession::record(const CaptureFeed& feed) {
    if (state_ != State::preparing)
        return;
    state_ = State::recording;
    box_->post([recorder = recorder_, feed, rate = input_.maximumFrameRate, path = path_] {
        recorder->start(feed, rate, path);
    });
}

void GstCaptureSession::stopRecording() {
    if (state_ == State::recording)
        return box_->post([recorder = recorder_] { recorder->end(RecordingEnd::asked); });
    if (state_ != State::asked && state_ != State::preparing)
        return;
    // The desktop may still be asking what may be recorded; the user has answered in another way. Its own answer may be
    // on its way, and one end is enough.
    state_ = State::over;
    source_->disconnect(this);
    const Error withdrawn(errorDomain::url, 0,
                          {{errorKey::reason, QStringLiteral("The recording was stopped before it began.")}});
    QMetaObject::invokeMethod(
        this, [this, withdrawn] { fail(withdrawn); }, Qt::QueuedConnection);
}

void GstCaptureSession::fail(const Error& error) {
    state_ = State::over;
    // It may be what tells this.
    if (source_)
        source_.release()->deleteLater();
    Q_EMIT recordingFailed(error);
}

std::unique_ptr<CaptureSession> CaptureEngine::createSession(const CaptureOptions& options) {
    return std::make_unique<GstCaptureSession>(makeCaptureSource(tokens_), threads_.add(options));
}

} // namespace quenby
