#include "localdrive/store/About.h"

#include "localdrive/store/ChangeLog.h"
#include "localdrive/store/Changes.h"
#include "localdrive/store/Files.h"
#include "localdrive/store/Identifiers.h"
#include "localdrive/store/Links.h"
#include "localdrive/store/NativeTypes.h"
#include "localdrive/store/Text.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace quenby::localdrive::about {
namespace {

void addQuota(QJsonObject& about, Work& work) {
    const QString used = QString::number(quotaUsed(work.session()));
    about.insert(QStringLiteral("quotaType"), QStringLiteral("LIMITED"));
    about.insert(QStringLiteral("quotaBytesTotal"), int64(work.store().settings().quotaBytesTotal));
    about.insert(QStringLiteral("quotaBytesUsed"), used);
    about.insert(QStringLiteral("quotaBytesUsedAggregate"), used);
    about.insert(QStringLiteral("quotaBytesUsedInTrash"), int64(quotaUsedInTrash(work.session())));
    about.insert(QStringLiteral("quotaBytesByService"),
                 QJsonArray{QJsonObject{{QStringLiteral("serviceName"), QStringLiteral("DRIVE")},
                                        {QStringLiteral("bytesUsed"), used}}});
}

void addChanges(QJsonObject& about, Work& work, const Parameters& params) {
    const qint64 largest = largestChangeId(work.session());
    const qint64 start = params.number("startChangeId").value_or(0);
    qint64 remaining =
        work.session().value(QStringLiteral("SELECT COUNT(*) FROM changes WHERE id >= ?"), {start}).toLongLong();
    if (const std::optional<qint64> most = params.number("maxChangeIdCount"))
        remaining = std::min(remaining, *most);
    about.insert(QStringLiteral("largestChangeId"), int64(largest));
    about.insert(QStringLiteral("remainingChangeIds"), int64(remaining));
}

QJsonObject userWithPicture(Work& work, const Account& account) {
    QJsonObject user = work.user(account.emailAddress);
    user.insert(QStringLiteral("picture"),
                QJsonObject{{QStringLiteral("url"), links::face(work.caller().base, account.permissionId())}});
    return user;
}

QJsonArray exportFormats() {
    QJsonArray formats;
    for (const QString& type : documentTypes())
        formats.append(QJsonObject{{QStringLiteral("source"), type},
                                   {QStringLiteral("targets"), QJsonArray::fromStringList(exportTypes(type))}});
    return formats;
}

} // namespace

Result<QJsonObject> get(Work& work, const Parameters& params) {
    if (const MaybeError refused = changes::checkStartChangeId(work, params))
        return *refused;
    const Account& account = work.caller().user;
    QJsonObject about{
        {QStringLiteral("kind"), QStringLiteral("drive#about")},
        {QStringLiteral("selfLink"), links::api(work.caller().base, {QStringLiteral("about")})},
        {QStringLiteral("name"), account.displayName},
        {QStringLiteral("user"), userWithPicture(work, account)},
        {QStringLiteral("permissionId"), account.permissionId()},
        {QStringLiteral("rootFolderId"), work.store().rootFolderId()},
        {QStringLiteral("languageCode"), QStringLiteral("en")},
        {QStringLiteral("domainSharingPolicy"), QStringLiteral("allowed")},
        {QStringLiteral("isCurrentAppInstalled"), true},
        {QStringLiteral("importFormats"), QJsonArray()},
        {QStringLiteral("exportFormats"), exportFormats()},
        {QStringLiteral("additionalRoleInfo"), QJsonArray()},
        {QStringLiteral("features"), QJsonArray()},
        {QStringLiteral("maxUploadSizes"),
         QJsonArray{QJsonObject{{QStringLiteral("type"), QStringLiteral("*")},
                                {QStringLiteral("size"), int64(work.store().settings().quotaBytesTotal)}}}}};
    addQuota(about, work);
    if (work.store().offersChangeIds())
        addChanges(about, work, params);
    about.insert(QStringLiteral("etag"), entityTag(QJsonDocument(about).toJson(QJsonDocument::Compact)));
    return about;
}

} // namespace quenby::localdrive::about
