#include "localdrive/store/Parameters.h"

#include "localdrive/store/ApiError.h"
#include "localdrive/store/Text.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace quenby::localdrive {
namespace {

// All other parameters are strings.
constexpr std::array booleans{"acknowledgeAbuse",
                              "convert",
                              "includeDeleted",
                              "includeSubscribed",
                              "newRevision",
                              "ocr",
                              "pinned",
                              "sendNotificationEmails",
                              "setModifiedDate",
                              "updateViewedDate",
                              "transferOwnership",
                              "useContentAsIndexableText"};
constexpr std::array integers{"maxChangeIdCount", "maxResults", "revision", "startChangeId"};

template <std::size_t N>
bool contains(const std::array<const char*, N>& names, const QString& name) {
    return std::any_of(names.begin(), names.end(), [&name](const char* known) { return name == QLatin1String(known); });
}

std::optional<bool> asFlag(const QJsonValue& value) {
    if (value.isBool())
        return value.toBool();
    if (value == QLatin1String("true"))
        return true;
    if (value == QLatin1String("false"))
        return false;
    return std::nullopt;
}

std::optional<qint64> asNumber(const QJsonValue& value) {
    if (value.isDouble()) {
        const QVariant number = value.toVariant(); // integers stay 64 bits wide
        const double approximate = number.toDouble();
        const bool isWhole = std::floor(approximate) == approximate && std::abs(approximate) < 9.3e18;
        return isWhole ? std::optional(number.toLongLong()) : std::nullopt;
    }
    bool ok = false;
    const qint64 number = value.toString().toLongLong(&ok);
    return ok ? std::optional(number) : std::nullopt;
}

bool hasItsType(const QString& name, const QJsonValue& value) {
    if (name == QLatin1String("resource"))
        return value.isObject();
    if (contains(booleans, name))
        return asFlag(value).has_value();
    if (contains(integers, name))
        return asNumber(value).has_value();
    return value.isString() || value.isDouble();
}

} // namespace

MaybeError Parameters::check(const QStringList& required) const {
    for (const QString& name : required) {
        const QJsonValue value = params_.value(name);
        if (value.isUndefined() || value.isNull() || value == QLatin1String(""))
            return apiError::required(name);
    }
    for (auto item = params_.begin(); item != params_.end(); ++item)
        if (!hasItsType(item.key(), item.value()))
            return apiError::invalid(item.key(), QStringLiteral("Invalid value for parameter %1.").arg(item.key()));
    return std::nullopt;
}

QString Parameters::text(const char* name) const {
    const QJsonValue value = params_.value(QLatin1String(name));
    return value.isDouble() ? value.toVariant().toString() : cleaned(value.toString());
}

bool Parameters::flag(const char* name, bool fallback) const {
    return asFlag(params_.value(QLatin1String(name))).value_or(fallback);
}

std::optional<qint64> Parameters::number(const char* name) const {
    return asNumber(params_.value(QLatin1String(name)));
}

} // namespace quenby::localdrive
