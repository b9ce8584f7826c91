#include "workspace/tabs/NewDocuments.h"

#include <QUrlQuery>

#include <array>

namespace quenby {

std::optional<PageOpenRecord> newDocumentPage(int tag, const QString& folderId, const Endpoints& endpoints) {
    static constexpr std::array kinds{"document", "presentation", "spreadsheets", "forms", "drawings"};
    if (tag < 1 || tag > int(kinds.size()))
        return std::nullopt;
    const QString kind = QString::fromLatin1(kinds[std::size_t(tag) - 1]);
    PageOpenRecord page{QStringLiteral("Untitled %1").arg(kind),
                        endpoints.webPlaces.docs.below(QStringLiteral("/%1/create").arg(kind))};
    QUrlQuery query;
    query.addQueryItem(QStringLiteral("usp"), QStringLiteral("drive_web"));
    query.addQueryItem(QStringLiteral("folder"), QString::fromLatin1(QUrl::toPercentEncoding(folderId)));
    page.url.setQuery(query);
    return page;
}

} // namespace quenby
