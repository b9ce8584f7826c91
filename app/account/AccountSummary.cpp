#include "app/account/AccountSummary.h"

#include "app/cli/DisplayText.h"
#include "driveapi/GTLDriveAbout.h"

namespace quenby {

qint64 bytesUsed(const GTLDriveAbout& about) {
    qint64 used = 0;
    if (const auto services = about.quotaBytesByService()) {
        for (const auto& service : *services)
            used += service->bytesUsed();
    }
    return used;
}

AccountSummary accountSummary(const GTLDriveAbout& about) {
    AccountSummary summary;
    if (const auto user = about.user()) {
        summary.displayName = user->displayName();
        summary.emailAddress = user->emailAddress();
    }
    const qint64 total = about.quotaBytesTotal();
    summary.getBytesTotal = byteCountText(total);
    const float percent =
        total > 0 ? static_cast<float>(bytesUsed(about)) * 100 / static_cast<float>(total) : 0; // in single precision
    summary.getBytesUsed = QString::number(static_cast<qint64>(percent)) + QLatin1Char('%');
    return summary;
}

QString quotaText(const AccountSummary& summary) {
    return summary.getBytesUsed + QStringLiteral(" of ") + summary.getBytesTotal + QStringLiteral(" used");
}

} // namespace quenby
