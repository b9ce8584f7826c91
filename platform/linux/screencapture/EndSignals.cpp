#include "platform/linux/screencapture/EndSignals.h"

#include <csignal>

#include <sys/signalfd.h>
#include <unistd.h>

namespace quenby {

EndSignals::EndSignals() {
    sigset_t asked;
    sigemptyset(&asked);
    for (const int number : {SIGTERM, SIGINT, SIGHUP})
        sigaddset(&asked, number);
    ::sigprocmask(SIG_BLOCK, &asked, nullptr);
    descriptor_ = ::signalfd(-1, &asked, SFD_CLOEXEC | SFD_NONBLOCK);
}

EndSignals::~EndSignals() {
    notifier_.reset();
    ::close(descriptor_);
}

void EndSignals::watch() {
    notifier_ = std::make_unique<QSocketNotifier>(descriptor_, QSocketNotifier::Read);
    connect(notifier_.get(), &QSocketNotifier::activated, this, [this] {
        signalfd_siginfo about;
        if (::read(descriptor_, &about, sizeof about) == sizeof about)
            Q_EMIT endAsked();
    });
}

} // namespace quenby
