// Recordings that are made by nobody: the test says how they go by emitting the session's signals.
#pragma once

#include "platform/CaptureSession.h"

#include <QPointer>

#include <optional>

namespace quenby::testing {

class FakeCaptureSession final : public CaptureSession {
public:
    void setScreenInput(const CaptureInput& input) override { input_ = input; }
    const CaptureInput& screenInput() const override { return input_; }
    void startRecording(const QByteArray& path) override { path_ = path; }
    void stopRecording() override { ++stops_; }

    const QByteArray& path() const { return path_; } // empty: nothing was started
    int stops() const { return stops_; }

private:
    CaptureInput input_;
    QByteArray path_;
    int stops_ = 0;
};

class FakeCaptureSessions final : public CaptureSessions {
public:
    Result<std::unique_ptr<CaptureSession>> create() override {
        if (failure_)
            return *failure_;
        auto session = std::make_unique<FakeCaptureSession>();
        last_ = session.get();
        ++made_;
        return std::unique_ptr<CaptureSession>(std::move(session));
    }

    // Null when it is gone.
    FakeCaptureSession* last() const { return last_; }
    int made() const { return made_; }
    void setFailure(const std::optional<Error>& failure) { failure_ = failure; }

private:
    QPointer<FakeCaptureSession> last_;
    int made_ = 0;
    std::optional<Error> failure_;
};

} // namespace quenby::testing
