// Partial responses: the parameter "fields", such as "items(id,title),nextPageToken" or "items/labels/trashed".
#pragma once

#include "core/Result.h"

#include <QJsonObject>
#include <QString>

#include <map>

namespace quenby::localdrive {

class FieldMask {
public:
    // An empty text keeps everything. 400 "invalid" for a text that is no list of fields.
    static Result<FieldMask> parse(const QString& fields);

    // What the mask names of the object, and of each object in its arrays.
    QJsonObject apply(const QJsonObject& object) const;

private:
    friend class FieldMaskParser;

    QJsonValue applyTo(const QJsonValue& value) const;
    const FieldMask* find(const QString& key) const;

    // Empty: keeps everything. The name "*" stands for all names that are not given.
    std::map<QString, FieldMask> fields_;
};

} // namespace quenby::localdrive
