#include "http/HeaderFields.h"

#include <algorithm>

namespace quenby {
namespace {

bool sameName(QByteArrayView a, QByteArrayView b) { return a.compare(b, Qt::CaseInsensitive) == 0; }

QByteArray safeValue(QByteArray value) {
    const auto unsafe = [](char c) { return c == '\r' || c == '\n' || c == '\0'; };
    if (std::any_of(value.cbegin(), value.cend(), unsafe))
        value.removeIf(unsafe);
    return value;
}

} // namespace

QByteArray HeaderFields::value(QByteArrayView name) const { return values(name).join(", "); }

QList<QByteArray> HeaderFields::values(QByteArrayView name) const {
    QList<QByteArray> found;
    for (const auto& [fieldName, fieldValue] : fields_) {
        if (sameName(fieldName, name))
            found.append(fieldValue);
    }
    return found;
}

bool HeaderFields::contains(QByteArrayView name) const {
    return std::any_of(fields_.begin(), fields_.end(),
                       [name](const Field& field) { return sameName(field.first, name); });
}

void HeaderFields::set(const QByteArray& name, const QByteArray& value) {
    const auto first = std::find_if(fields_.begin(), fields_.end(),
                                    [&name](const Field& field) { return sameName(field.first, name); });
    if (first == fields_.end()) {
        append(name, value);
        return;
    }
    *first = {name, safeValue(value)};
    fields_.erase(
        std::remove_if(first + 1, fields_.end(), [&name](const Field& field) { return sameName(field.first, name); }),
        fields_.end());
}

void HeaderFields::append(const QByteArray& name, const QByteArray& value) {
    fields_.emplace_back(name, safeValue(value));
}

void HeaderFields::remove(QByteArrayView name) {
    std::erase_if(fields_, [name](const Field& field) { return sameName(field.first, name); });
}

} // namespace quenby
