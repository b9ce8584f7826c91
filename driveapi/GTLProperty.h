// How a class declares its properties, one line each:
//
//     class GTLDriveUser : public GTLObject {
//         GTL_OBJECT(GTLDriveUser);
//
//     public:
//         GTL_PROPERTY(QString, displayName, setDisplayName, "displayName");
//     };
//
// and, in one source file:
//
//     const GTLClass& GTLDriveUser::classDescriptor() { return gtlDefineClass<GTLDriveUser, GTLObject>("GTLDriveUser");
//     }
//
// Types: bool, qint64, quint64, double, QString, GTLDateTime, a GTLObject class, or GTLArray of any of these but dates.
//
// A property line makes a getter, a setter and an entry for the class's table. The entries are functions told apart by
// the number of the line they stand on, so the table is gathered by asking every line from GTL_OBJECT on.
#pragma once

#include "driveapi/GTLRuntimeCommon.h"

#include <utility>

namespace quenby {

// The most lines between a class's GTL_OBJECT and its last property.
inline constexpr int gtlMaximumClassLines = 120;

template <typename Class, int Line>
struct GTLLine {};

template <typename T>
GTLProperty gtlDescribe(const char* name, const char* key) {
    if constexpr (gtlIsArray<T>)
        return {name, key, &T::makeUntyped, &T::declaredElementClass};
    else
        return {name, key, nullptr, nullptr};
}

// For classes that are no GTLObject, such as queries.
#define GTL_CLASS(Class)                                                                                               \
public:                                                                                                                \
    static const GTLClass& classDescriptor();                                                                          \
    const GTLClass& objectClass() const override { return classDescriptor(); }                                         \
    using GTLSelf = Class;                                                                                             \
    static constexpr int gtlFirstLine = __LINE__

#define GTL_OBJECT(Class)                                                                                              \
    GTL_CLASS(Class);                                                                                                  \
    static std::shared_ptr<Class> object() { return std::make_shared<Class>(); }                                       \
    static std::shared_ptr<Class> objectWithJSON(JSONDictionaryPtr json) {                                             \
        auto made = object();                                                                                          \
        made->setJSON(std::move(json));                                                                                \
        return made;                                                                                                   \
    }                                                                                                                  \
    static_assert(true)

#define GTL_PROPERTY(Type, name, setName, key)                                                                         \
    static_assert(__LINE__ - gtlFirstLine < gtlMaximumClassLines, "raise gtlMaximumClassLines");                       \
    GTLValueOf<Type> name() const { return get<Type>(key); }                                                           \
    void setName(const GTLValueOf<Type>& value) { set<Type>(key, value); }                                             \
    static GTLProperty gtlPropertyAt(GTLLine<GTLSelf, __LINE__>) { return gtlDescribe<Type>(#name, key); }             \
    static_assert(true)

template <typename Class, int Line>
void gtlAppendPropertyAt(std::vector<GTLProperty>& properties) {
    if constexpr (requires { Class::gtlPropertyAt(GTLLine<Class, Line>{}); })
        properties.push_back(Class::gtlPropertyAt(GTLLine<Class, Line>{}));
}

template <typename Class, int... Offsets>
std::vector<GTLProperty> gtlDeclaredProperties(std::integer_sequence<int, Offsets...>) {
    std::vector<GTLProperty> properties;
    (gtlAppendPropertyAt<Class, Class::gtlFirstLine + Offsets>(properties), ...);
    return properties;
}

// The one descriptor of Class. Parent is void at the root.
template <typename Class, typename Parent>
const GTLClass& gtlDefineClass(const char* name, const GTLClass* classForAdditionalProperties = nullptr) {
    const auto parent = []() -> const GTLClass* {
        if constexpr (std::is_void_v<Parent>)
            return nullptr;
        else
            return &Parent::classDescriptor();
    };
    const auto factory = []() -> GTLClass::Factory {
        if constexpr (std::is_base_of_v<GTLObject, Class>)
            return [] { return GTLObjectPtr(std::make_shared<Class>()); };
        else
            return nullptr;
    };
    static const GTLClass descriptor(
        name, parent(), factory(),
        gtlDeclaredProperties<Class>(std::make_integer_sequence<int, gtlMaximumClassLines>()),
        classForAdditionalProperties);
    return descriptor;
}

} // namespace quenby
