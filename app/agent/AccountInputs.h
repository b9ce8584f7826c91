// The status item's view of the account and the uploads. Threads: the main thread. Everything referred to outlives it.
#pragma once

#include "app/statusitem/StatusItemInputs.h"

namespace quenby {

class AccountDetails;
class AccountSession;
class UploadPipeline;

class AccountInputs final : public StatusItemInputs {
public:
    AccountInputs(const AccountSession& session, const AccountDetails& details, const UploadPipeline& uploads)
        : session_(session)
        , details_(details)
        , uploads_(uploads) {}

    bool isSignedIn() const override;
    AccountSummary accountSummary() const override;
    bool isUploadInProgress() const override;
    int uploadStatusPer() const override;
    bool isPopoverVisible() const override { return false; }

private:
    const AccountSession& session_;
    const AccountDetails& details_;
    const UploadPipeline& uploads_;
};

} // namespace quenby
