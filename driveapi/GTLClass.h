// What a class of JSON-backed objects knows about itself: its name, its parent, how to make one, and which JSON keys
// its properties have. One descriptor exists per class; it is made when it is first asked for and never changes, so it
// may be read from any thread and compared by address.
#pragma once

#include "driveapi/JSONValue.h"

#include <QHash>
#include <QString>

#include <memory>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace quenby {

class GTLArrayBase;
class GTLClass;
class GTLObject;
using GTLObjectPtr = std::shared_ptr<GTLObject>;
using GTLArrayBasePtr = std::shared_ptr<GTLArrayBase>;

// The class to make in another one's place when JSON is turned into objects. Handed down to every child; null: none.
using GTLSurrogateMap = QHash<const GTLClass*, const GTLClass*>;
using GTLSurrogates = std::shared_ptr<const GTLSurrogateMap>;
// Request ID to the class expected of its reply.
using GTLBatchClassMap = QHash<QString, const GTLClass*>;

using GTLArrayFactory = GTLArrayBasePtr (*)(JSONArrayPtr, GTLSurrogates);

struct GTLProperty {
    const char* name = nullptr;
    const char* jsonKey = nullptr;
    GTLArrayFactory makeArray = nullptr;         // only of array properties
    const GTLClass* (*elementClass)() = nullptr; // only of array properties; answers null for plain values
};

class GTLClass {
public:
    using Factory = GTLObjectPtr (*)();

    // The parent's properties count as this class's own, unless one here has the same name.
    GTLClass(const char* name, const GTLClass* parent, Factory factory, const std::vector<GTLProperty>& properties,
             const GTLClass* classForAdditionalProperties = nullptr);
    GTLClass(const GTLClass&) = delete;
    GTLClass& operator=(const GTLClass&) = delete;

    const char* name() const { return name_; }
    QString nameString() const { return QString::fromLatin1(name_); }
    const GTLClass* parent() const { return parent_; }
    bool isSubclassOf(const GTLClass& ancestor) const; // a class counts as its own subclass

    // A new empty object; null for classes that are no GTLObject.
    GTLObjectPtr object() const;

    // All with the ancestors' merged in.
    const std::vector<GTLProperty>& properties() const { return properties_; }
    const GTLProperty* propertyNamed(std::string_view name) const;
    const GTLProperty* propertyForJSONKey(std::string_view key) const;
    QHash<QString, QString> propertyToJSONKeyMap() const;            // only names that differ from the key
    QHash<QString, const GTLClass*> arrayPropertyToClassMap() const; // JSON key to the elements' class
    const GTLClass* classForAdditionalProperties() const { return classForAdditionalProperties_; }

private:
    const char* name_;
    const GTLClass* parent_;
    Factory factory_;
    const GTLClass* classForAdditionalProperties_;
    std::vector<GTLProperty> properties_;
    std::unordered_map<std::string_view, std::size_t> indexByKey_;
};

} // namespace quenby
