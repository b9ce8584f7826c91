// What the status item shows, as a test wishes it.
#pragma once

#include "app/statusitem/StatusItemInputs.h"

namespace quenby::testing {

class FakeStatusItemInputs final : public StatusItemInputs {
public:
    bool signedIn = true;
    AccountSummary summary{QStringLiteral("Ada"), QStringLiteral("ada@example.com"), QStringLiteral("15 GB"),
                           QStringLiteral("37%")};
    int uploadPercent = -1; // -1: no upload
    bool popoverVisible = false;

    bool isSignedIn() const override { return signedIn; }
    AccountSummary accountSummary() const override { return summary; }
    bool isUploadInProgress() const override { return uploadPercent >= 0; }
    int uploadStatusPer() const override { return uploadPercent; }
    bool isPopoverVisible() const override { return popoverVisible; }
};

} // namespace quenby::testing
