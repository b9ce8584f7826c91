// Recordings by the media framework.
#pragma once

#include "platform/linux/media/engine/capture/CaptureSource.h"
#include "platform/linux/media/engine/capture/RecorderThreads.h"

namespace quenby {

class GstCaptureSession final : public CaptureSession {
    Q_OBJECT

public:
    // Begins to make ready. The recorder is retired with this object, not destroyed.
    GstCaptureSession(std::unique_ptr<CaptureSource> source, Recorder* recorder);
    ~GstCaptureSession() override;

    void setScreenInput(const CaptureInput& input) override;
    const CaptureInput& screenInput() const override { return input_; }
    void startRecording(const QByteArray& path) override;
    void stopRecording() override;

private:
    // Preparing begins when it was asked for and the recorder is ready.
    enum class State { idle, asked, preparing, recording, over };

    void prepareWhenReady();
    void record(const CaptureFeed& feed);
    void fail(const Error& error);

    CaptureInput input_;
    QByteArray path_;
    State state_ = State::idle;
    bool isReady_ = false;
    std::unique_ptr<CaptureSource> source_;
    Recorder* const recorder_;
    const std::shared_ptr<Mailbox> box_; // the recorder's
};

// Makes sessions. Threads: the main thread; sessions go before it, and it goes before the application.
class CaptureEngine {
public:
    std::unique_ptr<CaptureSession> createSession(const CaptureOptions& options);

private:
    RecorderThreads threads_;
    const std::shared_ptr<ScreenCastTokens> tokens_ = std::make_shared<ScreenCastTokens>();
};

} // namespace quenby
