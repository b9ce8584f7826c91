// "The server is ending", as something that a thread waiting on a socket can wait for at the same time.
#pragma once

#include <chrono>

namespace quenby::localdrive {

// Threads: any. Raised once, and for good.
class StopEvent {
public:
    StopEvent();
    ~StopEvent();
    StopEvent(const StopEvent&) = delete;
    StopEvent& operator=(const StopEvent&) = delete;

    void raise();
    bool isRaised() const;
    // Readable from the moment on that the event is raised.
    int descriptor() const { return descriptor_; }

private:
    int descriptor_;
};

} // namespace quenby::localdrive
