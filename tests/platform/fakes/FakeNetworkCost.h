#pragma once

#include "platform/NetworkCost.h"

#include <utility>

namespace quenby {

class FakeNetworkCost final : public NetworkCost {
public:
    bool isMetered() const override { return isMetered_; }
    void setMetered(bool is) {
        if (std::exchange(isMetered_, is) != is)
            Q_EMIT changed();
    }

private:
    bool isMetered_ = false;
};

} // namespace quenby
