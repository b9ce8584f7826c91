// Tells on the event loop about signals that ask the program to end. At most one object of this kind at a time.
//
// A signal that the program was started to ignore (nohup) stays ignored. SIGTERM that the program raised itself is not
// told: the GLib bus client that the keyring's library brings along does so when the session bus goes away, which is no
// wish of anybody's. SIGPIPE and SIGXFSZ are ignored from here on: writing tells.
#pragma once

#include <QObject>
#include <QSocketNotifier>

#include <csignal>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace quenby {

struct WatchedSignal {
    int number;
    // A second one of the same kind ends the program at once, as it would without this object.
    bool endsAtOnceWhenRepeated = false;
};

class ProcessSignals final : public QObject {
    Q_OBJECT

public:
    // Calls the handler on this thread with the signal's number.
    ProcessSignals(const std::vector<WatchedSignal>& signals, std::function<void(int)> told, QObject* parent = nullptr);
    ~ProcessSignals() override;

private:
    std::vector<std::pair<int, struct sigaction>> before_; // what each signal did before
    std::unique_ptr<QSocketNotifier> notifier_;
    int readEnd_ = -1;
};

} // namespace quenby
