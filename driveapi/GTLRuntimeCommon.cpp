#include "driveapi/GTLRuntimeCommon.h"

#include "driveapi/GTLObject.h"

#include <algorithm>

namespace quenby {

namespace {

std::string_view view(const QByteArray& bytes) { return {bytes.constData(), static_cast<std::size_t>(bytes.size())}; }

} // namespace

GTLRuntimeCommon::~GTLRuntimeCommon() = default;

const JSONDictionaryPtr& GTLRuntimeCommon::JSON() const {
    if (!json_)
        json_ = JSONDictionary::make();
    return json_;
}

void GTLRuntimeCommon::setJSON(JSONDictionaryPtr json) {
    json_ = std::move(json);
    childCache_.clear();
}

void GTLRuntimeCommon::setJSONValue(const JSONValue& value, const JSONKey& key) {
    forget(key);
    if (json_ || !value.isUndefined())
        JSON()->setValue(key, value);
}

JSONValue GTLRuntimeCommon::JSONValueForKey(const JSONKey& key) const {
    return json_ ? json_->value(key) : JSONValue();
}

GTLDateTime GTLRuntimeCommon::dateTimeForKey(std::string_view key) const {
    if (const auto* known = cached<GTLDateTime>(key))
        return *known;
    const QByteArray text = json_ ? json_->utf8Value(key) : QByteArray();
    if (text.isNull())
        return {};
    const auto dateTime = GTLDateTime::dateTimeWithRFC3339String(view(text));
    cache(key, dateTime);
    return dateTime;
}

GTLObjectPtr GTLRuntimeCommon::childForKey(std::string_view key, const GTLClass& declaredClass) const {
    if (const auto* known = cached<GTLObjectPtr>(key))
        return *known;
    const JSONDictionaryPtr node = JSONValueForKey(key).dictionary();
    if (!node)
        return nullptr;
    const auto child = GTLObject::objectForJSON(node, &declaredClass, surrogates_);
    cache(key, child);
    return child;
}

GTLArrayBasePtr GTLRuntimeCommon::arrayForKey(std::string_view key, GTLArrayFactory makeArray) const {
    const GTLArrayBasePtr known = cachedArray(key);
    return known ? known : buildArray(key, makeArray);
}

GTLArrayBasePtr GTLRuntimeCommon::arrayForKey(std::string_view key, const GTLClass& elementClass) const {
    const GTLArrayBasePtr known = cachedArray(key);
    if (known && known->elementClass() == &elementClass)
        return known;
    return buildArray(key, [&elementClass](const JSONArrayPtr& node, const GTLSurrogates& surrogates) {
        return std::make_shared<GTLArrayBase>(node, &elementClass, surrogates);
    });
}

GTLArrayBasePtr GTLRuntimeCommon::cachedArray(std::string_view key) const {
    const auto* known = cached<GTLArrayBasePtr>(key);
    return known ? *known : nullptr;
}

void GTLRuntimeCommon::setDateTime(const GTLDateTime& value, std::string_view key) {
    setJSONValue(value.isNull() ? JSONValue() : JSONValue(value.stringValue()), key);
    if (!value.isNull())
        cache(key, value);
}

void GTLRuntimeCommon::setChild(const GTLObjectPtr& child, std::string_view key) {
    setJSONValue(child ? JSONValue(child->JSON()) : JSONValue(), key);
    if (child)
        cache(key, child);
}

void GTLRuntimeCommon::setArray(const GTLArrayBasePtr& array, std::string_view key) {
    setJSONValue(array ? JSONValue(array->JSON()) : JSONValue(), key);
    if (array)
        cache(key, array);
}

template <typename T>
const T* GTLRuntimeCommon::cached(std::string_view key) const {
    for (const CacheEntry& entry : childCache_) {
        if (view(entry.key) == key)
            return std::get_if<T>(&entry.converted);
    }
    return nullptr;
}

void GTLRuntimeCommon::cache(std::string_view key, Converted converted) const {
    forget(key);
    childCache_.push_back({QByteArray(key.data(), static_cast<qsizetype>(key.size())), std::move(converted)});
}

void GTLRuntimeCommon::forget(std::string_view key) const {
    std::erase_if(childCache_, [key](const CacheEntry& entry) { return view(entry.key) == key; });
}

} // namespace quenby
