#include "app/account/AccountUsage.h"

#include "app/account/AccountSummary.h"
#include "driveapi/GTLDriveAbout.h"

#include <QHash>

#include <algorithm>

namespace quenby {
namespace {

// "PHONE_BACKUP" becomes "Phone Backup".
QString titleCased(const QString& name) {
    QStringList words = name.toLower().split(QLatin1Char('_'), Qt::SkipEmptyParts);
    for (QString& word : words)
        word.front() = word.front().toTitleCase();
    return words.join(QLatin1Char(' ')).simplified();
}

QString nameForPeople(const QString& service) {
    static const QHash<QString, QString> names{{QStringLiteral("DRIVE"), QStringLiteral("Drive")},
                                               {QStringLiteral("GMAIL"), QStringLiteral("Gmail")},
                                               {QStringLiteral("PHOTOS"), QStringLiteral("Photos")}};
    const QString known = names.value(service.trimmed().toUpper());
    return known.isEmpty() ? titleCased(service) : known;
}

} // namespace

AccountUsage accountUsage(const GTLDriveAbout& about) {
    AccountUsage usage;
    if (about.quotaType() != QLatin1String("UNLIMITED"))
        usage.total = std::max<qint64>(about.quotaBytesTotal(), 0);
    usage.used = std::max<qint64>(bytesUsed(about), 0);
    if (const auto services = about.quotaBytesByService()) {
        for (const auto& service : *services) {
            if (service->bytesUsed() > 0)
                usage.services.append({nameForPeople(service->serviceName()), service->bytesUsed()});
        }
    }
    return usage;
}

} // namespace quenby
