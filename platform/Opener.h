// Hands addresses and files to the programs that the user has chosen for them. Threads: the main thread.
#pragma once

#include "platform/Service.h"

#include <QUrl>

namespace quenby {

class Opener : public PlatformService {
public:
    // In the default browser. Only http and https; whether a program took it.
    virtual bool openURL(const QUrl& url) = 0;
};

} // namespace quenby
