#include "app/account/AccountSummary.h"

#include "core/ByteCountText.h"
#include "driveapi/GTLDriveAbout.h"

#include <QtNumeric>

#include <algorithm>
#include <limits>

namespace quenby {
namespace {

// In single precision, and a number that people can read whatever the server says.
int percentOf(qint64 used, qint64 total) {
    constexpr float most = 999'999;
    if (total <= 0)
        return 0;
    return static_cast<int>(std::clamp(static_cast<float>(used) * 100 / static_cast<float>(total), 0.0F, most));
}

} // namespace

qint64 bytesUsed(const GTLDriveAbout& about) {
    qint64 used = 0;
    if (const auto services = about.quotaBytesByService()) {
        for (const auto& service : *services) {
            if (qAddOverflow(used, service->bytesUsed(), &used))
                return std::numeric_limits<qint64>::max();
        }
    }
    return used;
}

AccountSummary accountSummary(const GTLDriveAbout& about) {
    AccountSummary summary;
    if (const auto user = about.user()) {
        summary.displayName = user->displayName();
        summary.emailAddress = user->emailAddress();
    }
    // Without a limit, the total means nothing. Who says neither has none.
    const QString type = about.quotaType();
    const bool isLimited = type.isEmpty() ? about.quotaBytesTotal() > 0 : type != QLatin1String("UNLIMITED");
    const qint64 total = isLimited ? std::max<qint64>(about.quotaBytesTotal(), 0) : 0;
    summary.getBytesTotal = isLimited ? byteCountText(total) : QStringLiteral("unlimited storage");
    summary.getBytesUsed = QString::number(percentOf(bytesUsed(about), total)) + QLatin1Char('%');
    return summary;
}

QString quotaText(const AccountSummary& summary) {
    return summary.getBytesUsed + QStringLiteral(" of ") + summary.getBytesTotal + QStringLiteral(" used");
}

} // namespace quenby
