#include "localdrive/store/Properties.h"

#include "localdrive/store/Access.h"
#include "localdrive/store/ApiError.h"
#include "localdrive/store/ChangeLog.h"
#include "localdrive/store/Identifiers.h"
#include "localdrive/store/Links.h"
#include "localdrive/store/PageToken.h"
#include "localdrive/store/Text.h"

namespace quenby::localdrive {
namespace {

const QString privately = QStringLiteral("PRIVATE");

QJsonObject resourceOf(Work& work, const QString& fileId, const QString& key, const QString& visibility,
                       const QString& value) {
    return {{QStringLiteral("kind"), QStringLiteral("drive#property")},
            {QStringLiteral("etag"), entityTag((fileId + key + visibility + value).toUtf8())},
            {QStringLiteral("selfLink"),
             links::api(work.caller().base, {QStringLiteral("files"), fileId, QStringLiteral("properties"), key})},
            {QStringLiteral("key"), key},
            {QStringLiteral("visibility"), visibility},
            {QStringLiteral("value"), value}};
}

Result<QString> visibilityOf(const QString& asked) {
    if (asked.isEmpty() || asked == privately)
        return privately;
    if (asked == QLatin1String("PUBLIC"))
        return asked;
    return apiError::invalid(QStringLiteral("visibility"), QStringLiteral("A visibility is PRIVATE or PUBLIC."));
}

// The file and the property that a call with "fileId", "propertyKey" and "visibility" is about.
struct Target {
    FileRecord file;
    QString key;
    QString visibility;
};

Result<Target> targetOf(Work& work, const Parameters& params, Role needed) {
    Result<FileRecord> file = findFile(work, params.text("fileId"), needed);
    if (!file)
        return file.error();
    const Result<QString> visibility = visibilityOf(params.text("visibility"));
    if (!visibility)
        return visibility.error();
    return Target{*std::move(file), params.text("propertyKey"), visibility.value()};
}

Result<QJsonObject> read(Work& work, const Target& target) {
    const QVariant value = work.session().value(
        QStringLiteral("SELECT value FROM properties WHERE file_id = ? AND key = ? AND visibility = ?"),
        {target.file.id, target.key, target.visibility});
    if (!value.isValid())
        return apiError::notFound(QStringLiteral("Property"), target.key);
    return resourceOf(work, target.file.id, target.key, target.visibility, value.toString());
}

} // namespace

QJsonArray propertyResources(Work& work, const QString& fileId) {
    QJsonArray items;
    const QList<Row> rows = work.session().rows(
        QStringLiteral("SELECT key, visibility, value FROM properties WHERE file_id = ?"), {fileId});
    for (const Row& row : rows)
        items.append(resourceOf(work, fileId, row[0].toString(), row[1].toString(), row[2].toString()));
    return items;
}

MaybeError storeProperty(Work& work, const QString& fileId, const QJsonObject& property) {
    const QString key = cleaned(property.value(QLatin1String("key")).toString());
    if (key.isEmpty())
        return apiError::required(QStringLiteral("key"));
    const Result<QString> visibility = visibilityOf(property.value(QLatin1String("visibility")).toString());
    if (!visibility)
        return visibility.error();
    work.session().run(QStringLiteral("INSERT OR REPLACE INTO properties VALUES(?, ?, ?, ?)"),
                       {fileId, key, visibility.value(), cleaned(property.value(QLatin1String("value")).toString())});
    return std::nullopt;
}

namespace properties {

Result<QJsonObject> list(Work& work, const Parameters& params) {
    const Result<FileRecord> file = findFile(work, params.text("fileId"));
    if (!file)
        return file.error();
    const QString selfLink =
        links::api(work.caller().base, {QStringLiteral("files"), file->id, QStringLiteral("properties")});
    return unpagedList(QStringLiteral("drive#propertyList"), selfLink, propertyResources(work, file->id));
}

Result<QJsonObject> get(Work& work, const Parameters& params) {
    const Result<Target> target = targetOf(work, params, Role::reader);
    if (!target)
        return target.error();
    return read(work, target.value());
}

Result<QJsonObject> insert(Work& work, const Parameters& params) {
    QJsonObject property = params.resource();
    const Result<FileRecord> file = findFile(work, params.text("fileId"), Role::writer);
    if (!file)
        return file.error();
    if (const MaybeError refused = storeProperty(work, file->id, property))
        return *refused;
    recordChange(work, file->id);
    const Result<QString> visibility = visibilityOf(property.value(QLatin1String("visibility")).toString());
    return read(work, {file.value(), cleaned(property.value(QLatin1String("key")).toString()), visibility.value()});
}

Result<QJsonObject> update(Work& work, const Parameters& params) {
    const Result<Target> target = targetOf(work, params, Role::writer);
    if (!target)
        return target.error();
    QJsonObject property = params.resource();
    property.insert(QStringLiteral("key"), target->key);
    property.insert(QStringLiteral("visibility"), target->visibility);
    if (const MaybeError refused = storeProperty(work, target->file.id, property))
        return *refused;
    recordChange(work, target->file.id);
    return read(work, target.value());
}

Result<QJsonObject> remove(Work& work, const Parameters& params) {
    const Result<Target> target = targetOf(work, params, Role::writer);
    if (!target)
        return target.error();
    const qint64 removed =
        work.session().run(QStringLiteral("DELETE FROM properties WHERE file_id = ? AND key = ? AND visibility = ?"),
                           {target->file.id, target->key, target->visibility});
    if (removed == 0)
        return apiError::notFound(QStringLiteral("Property"), target->key);
    recordChange(work, target->file.id);
    return QJsonObject();
}

} // namespace properties
} // namespace quenby::localdrive
