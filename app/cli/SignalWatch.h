// Tells about SIGINT and SIGTERM on the event loop. The first one is told; from then on they end the program at once,
// so that a second Ctrl-C always helps. At most one watch at a time.
#pragma once

#include <QObject>
#include <QSocketNotifier>

#include <functional>
#include <memory>

namespace quenby {

class SignalWatch : public QObject {
public:
    // Calls the handler on this thread with the signal's number. SIGPIPE and SIGXFSZ are ignored from here on:
    // writing tells.
    explicit SignalWatch(std::function<void(int)> handler);
    ~SignalWatch() override;

private:
    std::unique_ptr<QSocketNotifier> notifier_;
    int readEnd_ = -1;
};

} // namespace quenby
