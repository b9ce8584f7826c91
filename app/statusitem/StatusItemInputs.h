// What the status item and its menus show, as somebody else knows it. Asked on the main thread whenever something is
// shown, so the answers must be at hand.
#pragma once

#include "core/AccountSummary.h"

namespace quenby {

class StatusItemInputs {
public:
    virtual ~StatusItemInputs() = default;

    virtual bool isSignedIn() const = 0;
    // Complete once the account was fetched; empty before, and after the sign-out.
    virtual AccountSummary accountSummary() const = 0;
    // Whether an upload owns the gauge (uploadStatusPath is set), and how far it is, in percent.
    virtual bool isUploadInProgress() const = 0;
    virtual int uploadStatusPer() const = 0;
    virtual bool isPopoverVisible() const = 0;
};

} // namespace quenby
