#include "app/uploads/DriveServiceProvider.h"

#include <QString>

namespace quenby {

Error nobodySignedIn() {
    return Error(FetcherErrorCode::fetchCouldNotBegin,
                 {{errorKey::reason, QStringLiteral("no user is signed in; sign in, then upload it again")}});
}

} // namespace quenby
