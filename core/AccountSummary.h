// What the interface shows of the signed-in account.
#pragma once

#include <QString>

namespace quenby {

struct AccountSummary {
    QString displayName;
    QString emailAddress;
    QString getBytesTotal; // formatted, for example "15 GB"
    QString getBytesUsed;  // formatted, for example "37%"

    bool isComplete() const { return !getBytesTotal.isEmpty() && !getBytesUsed.isEmpty(); }
    friend bool operator==(const AccountSummary&, const AccountSummary&) = default;
};

} // namespace quenby
