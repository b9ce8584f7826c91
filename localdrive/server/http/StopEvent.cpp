#include "localdrive/server/http/StopEvent.h"

#include <QtGlobal>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cstdint>

namespace quenby::localdrive {

StopEvent::StopEvent()
    : descriptor_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (descriptor_ < 0)
        qFatal("No event descriptor: too many files are open.");
}

StopEvent::~StopEvent() { ::close(descriptor_); }

void StopEvent::raise() {
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = ::write(descriptor_, &one, sizeof one);
}

bool StopEvent::isRaised() const {
    pollfd waiting{descriptor_, POLLIN, 0};
    return ::poll(&waiting, 1, 0) > 0;
}

} // namespace quenby::localdrive
