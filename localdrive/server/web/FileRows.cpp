#include "localdrive/server/web/FileRows.h"

#include "localdrive/server/web/FileTexts.h"
#include "localdrive/store/Links.h"
#include "localdrive/store/NativeTypes.h"
#include "localdrive/store/Text.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace quenby::localdrive {
namespace {

QString kindOf(const FileRecord& file) {
    if (file.isFolder())
        return QStringLiteral("folder");
    return isNativeType(file.mimeType) ? QStringLiteral("document") : QStringLiteral("file");
}

QString exportsOf(const FileRecord& file) {
    QJsonArray choices;
    for (const ExportChoice& choice : exportChoices(file))
        choices.append(QJsonArray{choice.name, choice.link});
    return choices.isEmpty() ? QString() : QString::fromUtf8(QJsonDocument(choices).toJson(QJsonDocument::Compact));
}

} // namespace

QString dataAttributes(const ListedFile& file, const PageTemplates& pages) {
    QStringList may;
    if (file.role >= Role::writer)
        may.append(QStringLiteral("edit"));
    if (file.role == Role::owner)
        may.append(QStringLiteral("own"));
    return pages.fill(QStringLiteral("filedata"), {{QStringLiteral("id"), file.record.id},
                                                   {QStringLiteral("kind"), kindOf(file.record)},
                                                   {QStringLiteral("may"), may.join(QLatin1Char(' '))},
                                                   {QStringLiteral("exports"), exportsOf(file.record)}});
}

QString rowsOf(const QList<ListedFile>& files, const PageTemplates& pages, const QDateTime& now) {
    const QString owner = QStringLiteral("me");
    QString rows;
    for (const ListedFile& file : files) {
        const FileRecord& record = file.record;
        const QString thumbnail = links::thumbnail(QUrl(), record);
        const QString icon = pages.assetLink(QStringLiteral("icons/%1.svg").arg(typeIcon(record.mimeType)));
        const QString picture = pages.fill(thumbnail.isEmpty() ? QStringLiteral("rowicon") : QStringLiteral("rowthumb"),
                                           {{QStringLiteral("icon"), icon}, {QStringLiteral("thumbnail"), thumbnail}});
        const bool isDocument = kindOf(record) == QLatin1String("document");
        rows += pages.fill(
            QStringLiteral("row"),
            {{QStringLiteral("data"), dataAttributes(file, pages)},
             {QStringLiteral("title"), record.title},
             {QStringLiteral("link"), links::page(QUrl(), record)},
             {QStringLiteral("target"), isDocument ? QStringLiteral("target=\"_blank\"") : QString()},
             {QStringLiteral("icon"), icon},
             {QStringLiteral("type"), typeText(record.mimeType)},
             {QStringLiteral("picture"), picture},
             {QStringLiteral("badge"), file.isShared ? pages.fill(QStringLiteral("rowshared"), {}) : QString()},
             {QStringLiteral("owner"), file.owner.isEmpty() ? owner : file.owner},
             {QStringLiteral("modified"), shortDateText(record.modified, now)},
             {QStringLiteral("modifiedlong"), longDateText(record.modified)},
             {QStringLiteral("modifiediso"), dateText(QVariant(record.modified))},
             {QStringLiteral("size"), sizeText(record)}});
    }
    return rows;
}

} // namespace quenby::localdrive
