#include "platform/linux/session/ProcessSignals.h"

#include <array>
#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

namespace quenby {
namespace {

// All that a signal handler may know: where to write the number of the signal.
volatile std::sig_atomic_t writeEnd = -1;

extern "C" void tellProcessSignal(int number, siginfo_t* about, void*) {
    if (number == SIGTERM && about->si_code == SI_TKILL && about->si_pid == ::getpid())
        return;
    const int errorBefore = errno;
    const auto byte = static_cast<char>(number);
    [[maybe_unused]] const auto written = ::write(writeEnd, &byte, 1);
    errno = errorBefore;
}

} // namespace

ProcessSignals::ProcessSignals(const std::vector<WatchedSignal>& signals, std::function<void(int)> told,
                               QObject* parent)
    : QObject(parent) {
    Q_ASSERT(writeEnd == -1);
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0)
        return; // signals then end the program in the ordinary way
    readEnd_ = ends[0];
    writeEnd = ends[1];
    notifier_ = std::make_unique<QSocketNotifier>(readEnd_, QSocketNotifier::Read);
    connect(notifier_.get(), &QSocketNotifier::activated, this, [this, handler = std::move(told)] {
        char number = 0;
        if (::read(readEnd_, &number, 1) == 1)
            handler(number);
    });
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    for (const WatchedSignal& one : signals) {
        struct sigaction before {};
        if (::sigaction(one.number, nullptr, &before) != 0 || before.sa_handler == SIG_IGN)
            continue;
        struct sigaction action {};
        action.sa_sigaction = tellProcessSignal;
        sigfillset(&action.sa_mask);
        action.sa_flags = SA_SIGINFO | SA_RESTART;
        if (one.endsAtOnceWhenRepeated)
            action.sa_flags |= static_cast<int>(SA_RESETHAND);
        if (::sigaction(one.number, &action, nullptr) == 0)
            before_.emplace_back(one.number, before);
    }
}

ProcessSignals::~ProcessSignals() {
    if (!notifier_)
        return;
    for (const auto& [number, before] : before_)
        ::sigaction(number, &before, nullptr);
    notifier_.reset();
    const int end = writeEnd;
    writeEnd = -1;
    ::close(end);
    ::close(readEnd_);
}

} // namespace quenby
