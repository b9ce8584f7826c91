#include "localdrive/store/FileMetadata.h"

#include "localdrive/store/ApiError.h"
#include "localdrive/store/Properties.h"
#include "localdrive/store/Text.h"

#include <QJsonArray>

namespace quenby::localdrive {
namespace {

// Reads fields of an object one after the other; the first wrong one is kept.
class FieldReader {
public:
    explicit FieldReader(const QJsonObject& object)
        : object_(object) {}

    void text(const QString& key, QString& target) {
        read(key, [&target](const QJsonValue& value) {
            target = cleaned(value.toString());
            return value.isString() || value.isNull();
        });
    }
    void flag(const QString& key, bool& target) {
        read(key, [&target](const QJsonValue& value) {
            target = value.toBool();
            return value.isBool() || value.isNull();
        });
    }
    // A date that may be absent: null makes it NULL.
    void date(const QString& key, QVariant& target) {
        read(key, [&target](const QJsonValue& value) {
            const std::optional<QDateTime> date = parsedDate(value.toString());
            target = date ? QVariant(date->toMSecsSinceEpoch()) : QVariant();
            return date.has_value() || value.isNull();
        });
    }
    // A date that every file has: null leaves it.
    void date(const QString& key, qint64& target) {
        QVariant given = target;
        date(key, given);
        target = given.isNull() ? target : given.toLongLong();
    }

    const MaybeError& failure() const { return failure_; }

private:
    template <typename Take>
    void read(const QString& key, Take take) {
        const auto found = object_.constFind(key);
        if (found != object_.constEnd() && !take(QJsonValue(*found)) && !failure_)
            failure_ = apiError::invalid(key, QStringLiteral("Invalid value for %1.").arg(key));
    }

    const QJsonObject& object_;
    MaybeError failure_;
};

MaybeError applyLabels(const QJsonObject& labels, qint64 now, FileRecord& file) {
    FieldReader reader(labels);
    bool viewed = !file.viewed.isNull();
    reader.flag(QStringLiteral("starred"), file.starred);
    reader.flag(QStringLiteral("hidden"), file.hidden);
    reader.flag(QStringLiteral("restricted"), file.restricted);
    reader.flag(QStringLiteral("trashed"), file.explicitlyTrashed);
    reader.flag(QStringLiteral("viewed"), viewed);
    if (viewed == file.viewed.isNull())
        file.viewed = viewed ? QVariant(now) : QVariant();
    return reader.failure();
}

} // namespace

MaybeError applyMetadata(const QJsonObject& resource, SettableDates dates, qint64 now, FileRecord& file) {
    // A client that sends back what it read says "trashed" for what only lies in a trashed folder; that is no order.
    const bool trashedByFolder = file.trashed && !file.explicitlyTrashed;
    if (const MaybeError failure = applyLabels(resource.value(QLatin1String("labels")).toObject(), now, file))
        return failure;
    if (trashedByFolder)
        file.explicitlyTrashed = false;

    FieldReader reader(resource);
    reader.text(QStringLiteral("title"), file.title);
    reader.text(QStringLiteral("mimeType"), file.mimeType);
    reader.text(QStringLiteral("description"), file.description);
    reader.text(QStringLiteral("originalFilename"), file.originalFilename);
    reader.text(QStringLiteral("folderColorRgb"), file.folderColor);
    reader.flag(QStringLiteral("writersCanShare"), file.writersCanShare);
    reader.date(QStringLiteral("lastViewedByMeDate"), file.viewed);
    if (dates != SettableDates::none)
        reader.date(QStringLiteral("modifiedDate"), file.modified);
    if (dates == SettableDates::all)
        reader.date(QStringLiteral("createdDate"), file.created);
    return reader.failure();
}

std::optional<QStringList> requestedParents(const QJsonObject& resource) {
    const QJsonValue parents = resource.value(QLatin1String("parents"));
    if (!parents.isArray())
        return std::nullopt;
    QStringList ids;
    for (const QJsonValue parent : parents.toArray())
        ids.append(cleaned(parent[QLatin1String("id")].toString()));
    return ids;
}

MaybeError storeProperties(Work& work, const QString& fileId, const QJsonObject& resource) {
    for (const QJsonValue property : resource.value(QLatin1String("properties")).toArray())
        if (const MaybeError failure = storeProperty(work, fileId, property.toObject()))
            return failure;
    return std::nullopt;
}

} // namespace quenby::localdrive
