// The end of the session, when a test says so.
#pragma once

#include "platform/SessionEnd.h"

namespace quenby::testing {

class FakeSessionEnd final : public SessionEnd {
public:
    void requestEnd() { Q_EMIT endRequested(); }
};

} // namespace quenby::testing
