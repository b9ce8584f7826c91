// What GTLObject and GTLQuery share: a JSON dictionary with typed accessors laid over it.
//
// The dictionary is the only truth. Children, arrays and dates that were converted are kept per JSON key, so that
// reading twice gives the same instance; a child shares its dictionary with this object's JSON, so that what is changed
// in the child shows here. Threads: one at a time; see JSONValue.h.
#pragma once

#include "driveapi/GTLArray.h"
#include "driveapi/GTLClass.h"
#include "driveapi/GTLDateTime.h"
#include "driveapi/GTLScalar.h"
#include "driveapi/JSONDictionary.h"

#include <QByteArray>

#include <string_view>
#include <type_traits>
#include <variant>
#include <vector>

namespace quenby {

// How a property of declared type T is passed: plain values and dates by value, children and arrays by reference.
template <typename T>
using GTLValueOf = std::conditional_t<GTLScalar<T> || std::is_same_v<T, GTLDateTime>, T, std::shared_ptr<T>>;

class GTLRuntimeCommon {
public:
    virtual ~GTLRuntimeCommon();
    GTLRuntimeCommon(const GTLRuntimeCommon&) = delete;
    GTLRuntimeCommon& operator=(const GTLRuntimeCommon&) = delete;

    virtual const GTLClass& objectClass() const = 0;

    // Never null: made when it is first asked for.
    const JSONDictionaryPtr& JSON() const;
    void setJSON(JSONDictionaryPtr json);
    bool hasJSON() const { return json_ && !json_->isEmpty(); }

    // Raw access. An undefined value removes the key; whatever was converted from the key before is forgotten.
    void setJSONValue(const JSONValue& value, const JSONKey& key);
    JSONValue JSONValueForKey(const JSONKey& key) const;

    const GTLSurrogates& surrogates() const { return surrogates_; }
    void setSurrogates(GTLSurrogates surrogates) { surrogates_ = std::move(surrogates); }

protected:
    GTLRuntimeCommon() = default;

    // A value of the wrong kind reads like a missing one: null, empty, 0 or false. JSONValueForKey gives it raw.
    template <typename T>
    GTLValueOf<T> get(std::string_view key) const {
        if constexpr (GTLScalar<T>)
            return gtlScalarFromJSON<T>(JSONValueForKey(key));
        else if constexpr (std::is_same_v<T, GTLDateTime>)
            return dateTimeForKey(key);
        else if constexpr (gtlIsArray<T>)
            return typedArrayForKey<T>(key);
        else
            return std::dynamic_pointer_cast<T>(childForKey(key, T::classDescriptor()));
    }

    // A null text, date, child or array removes the key.
    template <typename T>
    void set(std::string_view key, const GTLValueOf<T>& value) {
        if constexpr (std::is_same_v<T, QString>)
            setJSONValue(value.isNull() ? JSONValue() : JSONValue(value), key);
        else if constexpr (GTLScalar<T>)
            setJSONValue(value, key);
        else if constexpr (std::is_same_v<T, GTLDateTime>)
            setDateTime(value, key);
        else if constexpr (gtlIsArray<T>)
            setArray(value, key);
        else
            setChild(value, key);
    }

    GTLDateTime dateTimeForKey(std::string_view key) const;
    GTLObjectPtr childForKey(std::string_view key, const GTLClass& declaredClass) const;
    // An array that was built before is given again, whatever its type.
    GTLArrayBasePtr arrayForKey(std::string_view key, GTLArrayFactory makeArray) const;
    // An array that was built before is given again if it has that element class.
    GTLArrayBasePtr arrayForKey(std::string_view key, const GTLClass& elementClass) const;
    void setDateTime(const GTLDateTime& value, std::string_view key);
    void setChild(const GTLObjectPtr& child, std::string_view key);
    void setArray(const GTLArrayBasePtr& array, std::string_view key);

private:
    using Converted = std::variant<GTLDateTime, GTLObjectPtr, GTLArrayBasePtr>;
    struct CacheEntry {
        QByteArray key;
        Converted converted;
    };

    template <typename T>
    std::shared_ptr<T> typedArrayForKey(std::string_view key) const {
        if (auto known = std::dynamic_pointer_cast<T>(cachedArray(key)))
            return known;
        return std::static_pointer_cast<T>(buildArray(key, &T::makeUntyped));
    }
    GTLArrayBasePtr cachedArray(std::string_view key) const;
    template <typename Make>
    GTLArrayBasePtr buildArray(std::string_view key, Make make) const {
        const JSONArrayPtr node = JSONValueForKey(key).array();
        if (!node)
            return nullptr;
        GTLArrayBasePtr array = make(node, surrogates_);
        cache(key, array);
        return array;
    }

    template <typename T>
    const T* cached(std::string_view key) const;
    void cache(std::string_view key, Converted converted) const;
    void forget(std::string_view key) const;

    mutable JSONDictionaryPtr json_;
    GTLSurrogates surrogates_;
    mutable std::vector<CacheEntry> childCache_;
};

} // namespace quenby
