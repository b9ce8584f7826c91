// The status item's view of the account and the uploads. Threads: the main thread. Everything referred to outlives it.
#pragma once

#include "app/statusitem/StatusItemInputs.h"

#include <functional>

namespace quenby {

class AccountDetails;
class AccountSession;
class UploadPipeline;

class AccountInputs final : public StatusItemInputs {
public:
    AccountInputs(const AccountSession& session, const AccountDetails& details, const UploadPipeline& uploads,
                  std::function<bool()> isPopoverVisible)
        : session_(session)
        , details_(details)
        , uploads_(uploads)
        , isPopoverVisible_(std::move(isPopoverVisible)) {}

    bool isSignedIn() const override;
    AccountSummary accountSummary() const override;
    bool isUploadInProgress() const override;
    int uploadStatusPer() const override;
    bool isPopoverVisible() const override { return isPopoverVisible_(); }

private:
    const AccountSession& session_;
    const AccountDetails& details_;
    const UploadPipeline& uploads_;
    const std::function<bool()> isPopoverVisible_;
};

} // namespace quenby
