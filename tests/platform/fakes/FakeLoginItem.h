// A login item that exists only in memory.
#pragma once

#include "platform/LoginItem.h"

namespace quenby::testing {

class FakeLoginItem final : public LoginItem {
public:
    MaybeError failure; // of setEnabled()

    bool isEnabled() const override { return isEnabled_; }
    MaybeError setEnabled(bool isEnabled) override {
        ++writes_;
        if (!failure)
            isEnabled_ = isEnabled;
        return failure;
    }
    void followProgram() override { ++followed_; }

    // In the desktop's own settings.
    void switchByDesktop(bool isEnabled) {
        isEnabled_ = isEnabled;
        Q_EMIT changed();
    }
    int writes() const { return writes_; }
    int followed() const { return followed_; }

private:
    bool isEnabled_ = false;
    int writes_ = 0;
    int followed_ = 0;
};

} // namespace quenby::testing
