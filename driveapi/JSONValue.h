// One JSON value: nothing, null, a boolean, a number, a string, or a reference to a shared array or dictionary node.
//
// Copying a value that is an array or a dictionary shares the node: both copies see later changes. deepCopy() is
// apart. Integers are kept exactly over the whole range of int64 and uint64; every other number is a double.
//
// Threads: a node, and every value that refers to it, belongs to one thread at a time. Reading counts as touching,
// because nodes are built when they are first read. Handing a whole tree to another thread is fine.
#pragma once

#include <QByteArray>
#include <QString>

#include <concepts>
#include <cstdint>
#include <memory>
#include <string_view>
#include <variant>

namespace quenby {

class JSONArray;
class JSONDictionary;
using JSONArrayPtr = std::shared_ptr<JSONArray>;
using JSONDictionaryPtr = std::shared_ptr<JSONDictionary>;

// The deepest nesting that is read. A text that goes deeper is refused by the parser.
inline constexpr int jsonMaximumDepth = 1024;

class JSONValue {
public:
    // In the order of the variant's alternatives.
    enum class Type { undefined, pending, null, boolean, integer, unsignedInteger, real, string, array, dictionary };

    JSONValue() = default; // undefined: "there is no such value"
    template <std::same_as<bool> Boolean>
    JSONValue(Boolean value)
        : content_(std::in_place_type<bool>, value) {}
    template <std::integral Integer>
    requires(!std::same_as<Integer, bool>) JSONValue(Integer value)
        : content_(std::in_place_type<qint64>, static_cast<qint64>(value)) {
        if constexpr (std::unsigned_integral<Integer>) {
            if (value > static_cast<quint64>(INT64_MAX))
                content_.emplace<quint64>(value);
        }
    }
    template <std::floating_point Real>
    JSONValue(Real value)
        : content_(std::in_place_type<double>, static_cast<double>(value)) {}
    JSONValue(QString value)
        : content_(std::in_place_type<QString>, std::move(value)) {}
    JSONValue(JSONArrayPtr node);      // no node: undefined
    JSONValue(JSONDictionaryPtr node); // no node: undefined

    // The null marker, which is sent as JSON null.
    static JSONValue null();

    Type type() const { return static_cast<Type>(content_.index()); }
    bool isUndefined() const { return type() == Type::undefined; }
    bool isNull() const { return type() == Type::null; }
    bool isBool() const { return type() == Type::boolean; }
    bool isNumber() const { return type() >= Type::integer && type() <= Type::real; }
    bool isString() const { return type() == Type::string; }
    bool isArray() const { return type() == Type::array; }
    bool isDictionary() const { return type() == Type::dictionary; }

    // Numbers, booleans as 0 and 1, and texts that are a decimal number: the service writes 64-bit numbers as texts.
    // Anything else reads as 0. Out of range is the nearest value in range; fractions are cut off.
    qint64 toInt64() const;
    quint64 toUInt64() const;
    double toDouble() const;
    bool toBool() const; // true, a number other than 0, or the texts "true" and "1"

    QString toString() const;             // of a string only; anything else is a null string
    JSONArrayPtr array() const;           // null when it is no array
    JSONDictionaryPtr dictionary() const; // null when it is no dictionary

    // Null, an empty array or an empty dictionary.
    bool isEmptyOrNull() const;

    JSONValue deepCopy() const;

    // Numbers are equal when they mean the same number, dictionaries regardless of their order.
    friend bool operator==(const JSONValue& left, const JSONValue& right);

private:
    friend class JSONArray;
    friend class JSONDictionary;
    friend struct JSONMaterialiser;

    // A place in a parsed document that nobody has read yet. It never leaves the node that holds it.
    struct Pending {
        std::uintptr_t words[2];
    };
    struct Null {};

    std::variant<std::monostate, Pending, Null, bool, qint64, quint64, double, QString, JSONArrayPtr, JSONDictionaryPtr>
        content_;
};

} // namespace quenby
