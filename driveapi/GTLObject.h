// The base of everything that the service sends or receives: a JSON dictionary with typed accessors (GTLProperty.h).
//
// Objects live in std::shared_ptr and belong to one thread at a time: they are parsed on one thread and handed over
// whole. Equality compares class and JSON; hash() is one constant, since objects are mutable and no use as hash keys.
#pragma once

#include "driveapi/GTLProperty.h"

#include <QVariant>
#include <QVariantMap>

#include <map>
#include <memory>
#include <variant>

namespace quenby {

// A value under a key that no property declares: raw, or converted when the class says to which class.
using GTLAdditionalValue = std::variant<JSONValue, GTLObjectPtr, GTLArrayBasePtr>;

class GTLObject : public GTLRuntimeCommon, public std::enable_shared_from_this<GTLObject> {
    GTL_OBJECT(GTLObject);

public:
    GTLObject() = default;

    // The object that a reply's JSON stands for: of the class registered for its "kind", else of defaultClass, else a
    // GTLObject; surrogates may replace that class. JSON that is null or empty gives an empty object of defaultClass,
    // or null without one; undefined JSON gives null.
    static GTLObjectPtr objectForJSON(const JSONValue& json, const GTLClass* defaultClass,
                                      const GTLSurrogates& surrogates = {}, const GTLBatchClassMap& batchClassMap = {});

    // Process-wide and safe from any thread. Registering a kind again replaces the earlier class.
    static void registerObjectClassForKind(const GTLClass& objectClass, const QString& kind);
    static const GTLClass* registeredObjectClassForKind(const QString& kind); // null when unknown

    static JSONValue nullValue() { return JSONValue::null(); }

    // The JSON text, human-readable.
    QString JSONString() const;

    // Application values attached to the object; never sent and never copied. An invalid value removes the key.
    void setProperty(const QVariant& value, const QString& key);
    QVariant propertyForKey(const QString& key) const { return userProperties_.value(key); }
    const QVariantMap& userProperties() const { return userProperties_; }
    void setUserProperties(const QVariantMap& properties) { userProperties_ = properties; }
    void setUserData(const QVariant& value);
    QVariant userData() const;

    // The keys of the JSON that no property declares.
    QStringList additionalJSONKeys() const;
    GTLAdditionalValue additionalPropertyForName(const QString& name) const;
    void setAdditionalProperty(const GTLAdditionalValue& value, const QString& name);
    std::map<QString, GTLAdditionalValue> additionalProperties() const;

    // A partial-response "fields" expression that names every key present, such as "id,labels(hidden,starred)".
    QString fieldsDescription() const;

    // What changed since the original, as an object to send in a patch: changed and new keys with their values, removed
    // keys as null, dictionaries compared key by key.
    GTLObjectPtr patchObjectFromOriginal(const GTLObject& original) const;

    virtual bool isEqual(const GTLObject& other) const;
    static std::size_t hash();

    // Same class and surrogates, deep copy of the JSON; neither user properties nor children already built.
    virtual GTLObjectPtr copy() const;

    virtual QString description() const;

protected:
    // Gives a new object the JSON it was made for. Only classes made for bare arrays take anything but a dictionary.
    virtual void adoptJSON(const JSONValue& json);
    // The batch-result protocol: called by objectForJSON after adoptJSON; results of a batch build their members here.
    virtual void createItemsWithClassMap(const GTLBatchClassMap& batchClassMap);

private:
    QVariantMap userProperties_;
};

// A copy with its static type.
template <typename T>
std::shared_ptr<T> gtlCopy(const std::shared_ptr<T>& object) {
    return object ? std::static_pointer_cast<T>(object->copy()) : nullptr;
}

} // namespace quenby
