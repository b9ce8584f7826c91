#include "platform/linux/media/engine/capture/XErrorTrap.h"

#include <mutex>
#include <utility>

#include <X11/Xlib.h>

namespace quenby {
namespace {

thread_local XErrorTrap::Seen seenOnThread;
thread_local bool isHandingOn = false;

std::mutex handlerMutex; // guards the handler below
XErrorHandler handlerBefore = nullptr;

int errorCame(Display* display, XErrorEvent* event) {
    if (seenOnThread) {
        *seenOnThread = true;
        return 0;
    }
    XErrorHandler next = nullptr;
    {
        const std::lock_guard lock(handlerMutex);
        next = handlerBefore;
    }
    // Others hand on what is not theirs as well, and then it comes round.
    if (!next || isHandingOn)
        return 0;
    isHandingOn = true;
    const int answer = next(display, event);
    isHandingOn = false;
    return answer;
}

void install() {
    const std::lock_guard lock(handlerMutex);
    if (const XErrorHandler before = XSetErrorHandler(&errorCame); before != &errorCame)
        handlerBefore = before;
}

} // namespace

XErrorTrap::XErrorTrap(Seen seen)
    : before_(std::exchange(seenOnThread, std::move(seen))) {
    install();
}

XErrorTrap::~XErrorTrap() { seenOnThread = before_; }

void XErrorTrap::setOnThread(Seen seen) { seenOnThread = std::move(seen); }

} // namespace quenby
