// Holds the computer's automatic suspend off while something must not be interrupted. What the user orders, such as
// closing the lid, goes first wherever the desktop lets it.
//
// Threads: the main thread; nothing waits for the desktop.
#pragma once

#include "platform/Service.h"

#include <memory>

namespace quenby {

class SleepInhibitor : public PlatformService {
public:
    // Destroying it lets the computer sleep again.
    class Hold {
    public:
        virtual ~Hold() = default;
    };

    // The reason is shown to people by desktops that list who keeps them awake. Never null; where nothing can hold the
    // computer awake, it holds nothing.
    virtual std::unique_ptr<Hold> hold(const QString& reason) = 0;
};

} // namespace quenby
