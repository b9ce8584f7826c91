// The clipboard. Threads: the main thread.
#pragma once

#include "platform/Service.h"

namespace quenby {

class Pasteboard : public PlatformService {
public:
    virtual void setText(const QString& text) = 0;
    virtual QString text() const = 0;
};

} // namespace quenby
