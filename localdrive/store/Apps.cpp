#include "localdrive/store/Apps.h"

#include "localdrive/store/ApiError.h"
#include "localdrive/store/Links.h"
#include "localdrive/store/NativeTypes.h"
#include "localdrive/store/PageToken.h"

#include <QJsonArray>

#include <algorithm>

namespace quenby::localdrive::apps {
namespace {

const QString pagesId = QStringLiteral("localdrive-pages");

QJsonObject pages(Work& work) {
    const QUrl& base = work.caller().base;
    return {{QStringLiteral("kind"), QStringLiteral("drive#app")},
            {QStringLiteral("id"), pagesId},
            {QStringLiteral("name"), QStringLiteral("Local Drive")},
            {QStringLiteral("objectType"), QStringLiteral("file")},
            {QStringLiteral("shortDescription"), QStringLiteral("The pages of the Drive on this computer")},
            {QStringLiteral("productUrl"), base.toString()},
            {QStringLiteral("primaryMimeTypes"), QJsonArray::fromStringList(documentTypes())},
            {QStringLiteral("supportsCreate"), true},
            {QStringLiteral("supportsImport"), false},
            {QStringLiteral("supportsMultiOpen"), false},
            {QStringLiteral("installed"), true},
            {QStringLiteral("authorized"), true},
            {QStringLiteral("useByDefault"), true},
            {QStringLiteral("icons"),
             QJsonArray{QJsonObject{{QStringLiteral("category"), QStringLiteral("application")},
                                    {QStringLiteral("size"), 16},
                                    {QStringLiteral("iconUrl"), links::icon(base, folderMimeType)}}}}};
}

} // namespace

Result<QJsonObject> list(Work& work, const Parameters& params) {
    const QStringList wanted = params.text("appFilterMimeTypes").split(QLatin1Char(','), Qt::SkipEmptyParts);
    const QStringList opened = documentTypes();
    const bool matches = wanted.isEmpty() || std::any_of(wanted.begin(), wanted.end(), [&opened](const QString& type) {
                             return opened.contains(type.trimmed());
                         });
    QJsonArray items;
    QJsonArray defaults;
    if (matches) {
        items.append(pages(work));
        defaults.append(pagesId);
    }
    QJsonObject list =
        unpagedList(QStringLiteral("drive#appList"), links::api(work.caller().base, {QStringLiteral("apps")}), items);
    list.insert(QStringLiteral("defaultAppIds"), defaults);
    return list;
}

Result<QJsonObject> get(Work& work, const Parameters& params) {
    if (params.text("appId") != pagesId)
        return apiError::notFound(QStringLiteral("App"), params.text("appId"));
    return pages(work);
}

} // namespace quenby::localdrive::apps
