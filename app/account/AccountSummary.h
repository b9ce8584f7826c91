// What there is to show of an account, made from what the Drive tells about it.
#pragma once

#include "core/AccountSummary.h"

namespace quenby {

class GTLDriveAbout;

// The total as a byte count ("15 GB", or "unlimited storage"), and the share of it that all services use together as a
// whole number of percent ("37%"; "0%" of a total of 0, and of no limit).
AccountSummary accountSummary(const GTLDriveAbout& about);

// Bytes used by all services together.
qint64 bytesUsed(const GTLDriveAbout& about);

// "37% of 15 GB used".
QString quotaText(const AccountSummary& summary);

} // namespace quenby
