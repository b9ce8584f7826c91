#include "app/agent/AccountInputs.h"

#include "app/session/AccountDetails.h"
#include "app/session/AccountSession.h"
#include "app/uploads/UploadPipeline.h"

namespace quenby {

bool AccountInputs::isSignedIn() const { return session_.isSignedIn(); }

AccountSummary AccountInputs::accountSummary() const { return details_.dicUserData().value_or(AccountSummary()); }

bool AccountInputs::isUploadInProgress() const { return !uploads_.uploadStatusPath().isNull(); }

int AccountInputs::uploadStatusPer() const { return uploads_.uploadStatusPer(); }

} // namespace quenby
