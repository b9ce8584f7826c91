// What every platform service has in common: it is there, or it can say why not.
#pragma once

#include <QString>

namespace quenby {

class PlatformService {
public:
    virtual ~PlatformService() = default;

    // Empty when the service works. Otherwise a sentence for people: what is missing and what to do about it.
    virtual QString unavailableBecause() const { return {}; }

protected:
    PlatformService() = default;
    PlatformService(const PlatformService&) = delete;
    PlatformService& operator=(const PlatformService&) = delete;
};

} // namespace quenby
