// Keeps the framework's X errors from ending the program.
//
// A screen that shrinks while it is read makes the X server report errors, and the X library's own answer to an error
// is exit(). The library has one function for all errors of a process; the one that is set here takes those that come
// to threads which read the screen, and hands all others on to the function that was there before.
#pragma once

#include <atomic>
#include <memory>

namespace quenby {

class XErrorTrap {
public:
    using Seen = std::shared_ptr<std::atomic<bool>>;

    // For this thread, as long as the object lives. Traps may stand within another.
    explicit XErrorTrap(Seen seen);
    ~XErrorTrap();
    XErrorTrap(const XErrorTrap&) = delete;
    XErrorTrap& operator=(const XErrorTrap&) = delete;

    // For this thread from now on; null: no more.
    static void setOnThread(Seen seen);

private:
    const Seen before_;
};

} // namespace quenby
