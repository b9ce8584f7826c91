// Tells on the event loop that the program is asked to end (SIGTERM, SIGINT, SIGHUP). Threads: made on the main thread
// before there are others.
#pragma once

#include <QObject>
#include <QSocketNotifier>

#include <memory>

namespace quenby {

class EndSignals final : public QObject {
    Q_OBJECT

public:
    EndSignals();
    ~EndSignals() override;

    // When there is an application. What came before is told then.
    void watch();

Q_SIGNALS:
    void endAsked();

private:
    int descriptor_;
    std::unique_ptr<QSocketNotifier> notifier_;
};

} // namespace quenby
