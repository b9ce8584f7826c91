#include "driveapi/JSONValue.h"

#include "driveapi/JSONArray.h"
#include "driveapi/JSONDictionary.h"

#include <cmath>
#include <limits>

namespace quenby {

namespace {

// The nearest Integer to a double that may lie far outside its range or be no number at all.
template <typename Integer>
Integer clamped(double value) {
    using Limits = std::numeric_limits<Integer>;
    if (std::isnan(value))
        return 0;
    // As doubles the limits may round up by one, so the comparisons include them.
    if (value <= static_cast<double>(Limits::min()))
        return Limits::min();
    if (value >= static_cast<double>(Limits::max()))
        return Limits::max();
    return static_cast<Integer>(value);
}

bool isSameNumber(qint64 integer, double real) {
    return std::trunc(real) == real && std::abs(real) < 0x1p63 && static_cast<qint64>(real) == integer;
}

bool isSameNumber(quint64 integer, double real) {
    return std::trunc(real) == real && real >= 0 && real < 0x1p64 && static_cast<quint64>(real) == integer;
}

} // namespace

JSONValue::JSONValue(JSONArrayPtr node) {
    if (node)
        content_ = std::move(node);
}

JSONValue::JSONValue(JSONDictionaryPtr node) {
    if (node)
        content_ = std::move(node);
}

JSONValue JSONValue::null() {
    JSONValue value;
    value.content_ = Null();
    return value;
}

qint64 JSONValue::toInt64() const {
    switch (type()) {
    case Type::boolean:
        return std::get<bool>(content_) ? 1 : 0;
    case Type::integer:
        return std::get<qint64>(content_);
    case Type::unsignedInteger:
        return std::numeric_limits<qint64>::max();
    case Type::real:
        return clamped<qint64>(std::get<double>(content_));
    case Type::string: {
        bool ok = false;
        const qint64 parsed = std::get<QString>(content_).toLongLong(&ok);
        return ok ? parsed : clamped<qint64>(toDouble());
    }
    default:
        return 0;
    }
}

quint64 JSONValue::toUInt64() const {
    switch (type()) {
    case Type::unsignedInteger:
        return std::get<quint64>(content_);
    case Type::real:
        return clamped<quint64>(std::get<double>(content_));
    case Type::string: {
        bool ok = false;
        const quint64 parsed = std::get<QString>(content_).toULongLong(&ok);
        return ok ? parsed : clamped<quint64>(toDouble());
    }
    default:
        return static_cast<quint64>(std::max<qint64>(0, toInt64()));
    }
}

double JSONValue::toDouble() const {
    switch (type()) {
    case Type::real:
        return std::get<double>(content_);
    case Type::unsignedInteger:
        return static_cast<double>(std::get<quint64>(content_));
    case Type::string: {
        const double parsed = std::get<QString>(content_).toDouble();
        return std::isfinite(parsed) ? parsed : 0;
    }
    default:
        return static_cast<double>(toInt64());
    }
}

bool JSONValue::toBool() const {
    if (isString()) {
        const QString& text = std::get<QString>(content_);
        return text == QLatin1String("true") || text == QLatin1String("1");
    }
    return toDouble() != 0;
}

QString JSONValue::toString() const {
    const auto* text = std::get_if<QString>(&content_);
    return text ? *text : QString();
}

JSONArrayPtr JSONValue::array() const {
    const auto* node = std::get_if<JSONArrayPtr>(&content_);
    return node ? *node : nullptr;
}

JSONDictionaryPtr JSONValue::dictionary() const {
    const auto* node = std::get_if<JSONDictionaryPtr>(&content_);
    return node ? *node : nullptr;
}

bool JSONValue::isEmptyOrNull() const {
    if (isArray())
        return std::get<JSONArrayPtr>(content_)->isEmpty();
    if (isDictionary())
        return std::get<JSONDictionaryPtr>(content_)->isEmpty();
    return isNull();
}

JSONValue JSONValue::deepCopy() const {
    if (isArray())
        return std::get<JSONArrayPtr>(content_)->deepCopy();
    if (isDictionary())
        return std::get<JSONDictionaryPtr>(content_)->deepCopy();
    return *this;
}

bool operator==(const JSONValue& left, const JSONValue& right) {
    using Type = JSONValue::Type;
    if (left.type() != right.type()) {
        const bool rightIsReal = right.type() == Type::real;
        if (left.type() == Type::real && !rightIsReal)
            return right == left;
        if (rightIsReal && left.type() == Type::integer)
            return isSameNumber(left.toInt64(), right.toDouble());
        if (rightIsReal && left.type() == Type::unsignedInteger)
            return isSameNumber(left.toUInt64(), right.toDouble());
        return false;
    }
    switch (left.type()) {
    case Type::boolean:
        return left.toBool() == right.toBool();
    case Type::integer:
        return left.toInt64() == right.toInt64();
    case Type::unsignedInteger:
        return left.toUInt64() == right.toUInt64();
    case Type::real:
        return left.toDouble() == right.toDouble();
    case Type::string:
        return std::get<QString>(left.content_) == std::get<QString>(right.content_);
    case Type::array:
        return left.array()->isEqual(*right.array());
    case Type::dictionary:
        return left.dictionary()->isEqual(*right.dictionary());
    case Type::undefined:
    case Type::null:
    case Type::pending: // never outside its node
        return true;
    }
    Q_UNREACHABLE();
}

} // namespace quenby
