#include "app/cli/SignalWatch.h"

#include <array>
#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace quenby {
namespace {

constexpr std::array watchedSignals{SIGINT, SIGTERM};

// All that a signal handler may know: where to write the number of the signal.
volatile std::sig_atomic_t writeEnd = -1;

extern "C" void tellSignal(int number) {
    const auto byte = static_cast<char>(number);
    [[maybe_unused]] const auto written = ::write(writeEnd, &byte, 1);
    std::signal(number, SIG_DFL);
}

} // namespace

SignalWatch::SignalWatch(std::function<void(int)> handler) {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0)
        return; // signals then end the program in the ordinary way
    readEnd_ = ends[0];
    writeEnd = ends[1];
    notifier_ = std::make_unique<QSocketNotifier>(readEnd_, QSocketNotifier::Read);
    connect(notifier_.get(), &QSocketNotifier::activated, this, [this, told = std::move(handler)] {
        char number = 0;
        if (::read(readEnd_, &number, 1) == 1)
            told(number);
    });
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    for (const int number : watchedSignals)
        std::signal(number, tellSignal);
}

SignalWatch::~SignalWatch() {
    if (!notifier_)
        return;
    for (const int number : watchedSignals)
        std::signal(number, SIG_DFL);
    notifier_.reset();
    ::close(readEnd_);
    ::close(writeEnd);
    writeEnd = -1;
}

} // namespace quenby
