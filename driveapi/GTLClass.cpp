#include "driveapi/GTLClass.h"

#include <algorithm>

namespace quenby {

GTLClass::GTLClass(const char* name, const GTLClass* parent, Factory factory,
                   const std::vector<GTLProperty>& properties, const GTLClass* classForAdditionalProperties)
    : name_(name)
    , parent_(parent)
    , factory_(factory)
    , classForAdditionalProperties_(classForAdditionalProperties) {
    properties_ = properties;
    if (parent) {
        for (const GTLProperty& inherited : parent->properties_) {
            if (!propertyNamed(inherited.name))
                properties_.push_back(inherited);
        }
        if (!classForAdditionalProperties_)
            classForAdditionalProperties_ = parent->classForAdditionalProperties_;
    }
    for (std::size_t index = 0; index < properties_.size(); ++index)
        indexByKey_.emplace(properties_[index].jsonKey, index);
}

bool GTLClass::isSubclassOf(const GTLClass& ancestor) const {
    for (const GTLClass* candidate = this; candidate; candidate = candidate->parent_) {
        if (candidate == &ancestor)
            return true;
    }
    return false;
}

GTLObjectPtr GTLClass::object() const { return factory_ ? factory_() : nullptr; }

const GTLProperty* GTLClass::propertyNamed(std::string_view name) const {
    const auto found = std::find_if(properties_.begin(), properties_.end(),
                                    [name](const GTLProperty& property) { return property.name == name; });
    return found == properties_.end() ? nullptr : &*found;
}

const GTLProperty* GTLClass::propertyForJSONKey(std::string_view key) const {
    const auto found = indexByKey_.find(key);
    return found == indexByKey_.end() ? nullptr : &properties_[found->second];
}

QHash<QString, QString> GTLClass::propertyToJSONKeyMap() const {
    QHash<QString, QString> map;
    for (const GTLProperty& property : properties_) {
        if (std::string_view(property.name) != property.jsonKey)
            map.insert(QString::fromLatin1(property.name), QString::fromLatin1(property.jsonKey));
    }
    return map;
}

QHash<QString, const GTLClass*> GTLClass::arrayPropertyToClassMap() const {
    QHash<QString, const GTLClass*> map;
    for (const GTLProperty& property : properties_) {
        if (property.elementClass)
            map.insert(QString::fromLatin1(property.jsonKey), property.elementClass());
    }
    return map;
}

} // namespace quenby
