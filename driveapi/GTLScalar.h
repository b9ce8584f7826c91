// The plain types that a property can have, and how they are read from JSON.
#pragma once

#include "driveapi/JSONValue.h"

#include <concepts>

namespace quenby {

template <typename T>
concept GTLScalar = std::same_as<T, bool> || std::same_as<T, qint64> || std::same_as<T, quint64> ||
    std::same_as<T, double> || std::same_as<T, QString>;

template <GTLScalar T>
T gtlScalarFromJSON(const JSONValue& value) {
    if constexpr (std::same_as<T, bool>)
        return value.toBool();
    else if constexpr (std::same_as<T, qint64>)
        return value.toInt64();
    else if constexpr (std::same_as<T, quint64>)
        return value.toUInt64();
    else if constexpr (std::same_as<T, double>)
        return value.toDouble();
    else
        return value.toString();
}

} // namespace quenby
