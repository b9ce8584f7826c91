#include "driveapi/GTLObject.h"

#include "driveapi/GTLJSONParser.h"
#include "driveapi/GTLKindRegistry.h"

namespace quenby {

namespace {

constexpr QLatin1String userDataKey("_userData");

const GTLClass* classForKindOf(const JSONValue& json) {
    const JSONDictionaryPtr dictionary = json.dictionary();
    const QByteArray kind = dictionary ? dictionary->utf8Value("kind") : QByteArray();
    if (kind.isEmpty())
        return nullptr;
    return gtlKinds::classForKind({kind.constData(), static_cast<std::size_t>(kind.size())});
}

QStringList fieldsOf(const JSONDictionary& dictionary) {
    QStringList fields;
    for (const QString& key : dictionary.keys()) {
        const JSONDictionaryPtr nested = dictionary.value(key).dictionary();
        const QStringList children = nested ? fieldsOf(*nested) : QStringList();
        if (children.isEmpty())
            fields.append(key);
        else if (children.size() == 1)
            fields.append(QStringLiteral("%1/%2").arg(key, children.first()));
        else
            fields.append(QStringLiteral("%1(%2)").arg(key, children.join(QLatin1Char(','))));
    }
    return fields;
}

JSONDictionaryPtr patchFrom(const JSONDictionary& original, const JSONDictionary& changed) {
    auto patch = JSONDictionary::make();
    for (const QString& key : changed.keys()) {
        const JSONValue before = original.value(key);
        const JSONValue now = changed.value(key);
        if (before == now)
            continue;
        if (before.isDictionary() && now.isDictionary())
            patch->setValue(key, patchFrom(*before.dictionary(), *now.dictionary()));
        else
            patch->setValue(key, now.deepCopy());
    }
    for (const QString& key : original.keys()) {
        if (!changed.contains(key))
            patch->setValue(key, JSONValue::null());
    }
    return patch;
}

QString summaryOf(const JSONValue& value) {
    if (const auto dictionary = value.dictionary())
        return QStringLiteral("{%1}").arg(dictionary->keys().join(QLatin1Char(',')));
    if (const auto array = value.array())
        return QStringLiteral("[%1]").arg(array->count());
    if (value.isString())
        return QStringLiteral("\"%1\"").arg(value.toString());
    return GTLJSONParser::stringWithObject(value);
}

} // namespace

const GTLClass& GTLObject::classDescriptor() { return gtlDefineClass<GTLObject, void>("GTLObject"); }

GTLObjectPtr GTLObject::objectForJSON(const JSONValue& json, const GTLClass* defaultClass,
                                      const GTLSurrogates& surrogates, const GTLBatchClassMap& batchClassMap) {
    if (json.isUndefined() || (json.isEmptyOrNull() && !defaultClass))
        return nullptr;
    const GTLClass* objectClass = defaultClass;
    if (!json.isEmptyOrNull()) {
        if (const GTLClass* registered = classForKindOf(json))
            objectClass = registered;
        else if (!objectClass)
            objectClass = &classDescriptor();
        if (surrogates)
            objectClass = surrogates->value(objectClass, objectClass);
    }
    GTLObjectPtr object = objectClass->object();
    if (!object)
        return nullptr;
    object->setSurrogates(surrogates);
    object->adoptJSON(json);
    object->createItemsWithClassMap(batchClassMap);
    return object;
}

void GTLObject::adoptJSON(const JSONValue& json) { setJSON(json.dictionary()); }

void GTLObject::createItemsWithClassMap(const GTLBatchClassMap&) {}

void GTLObject::registerObjectClassForKind(const GTLClass& objectClass, const QString& kind) {
    gtlKinds::registerClassForKind(objectClass, kind.toStdString());
}

const GTLClass* GTLObject::registeredObjectClassForKind(const QString& kind) {
    return gtlKinds::classForKind(kind.toStdString());
}

QString GTLObject::JSONString() const {
    return GTLJSONParser::stringWithObject(JSON(), GTLJSONParser::Format::humanReadable);
}

void GTLObject::setProperty(const QVariant& value, const QString& key) {
    if (value.isValid())
        userProperties_.insert(key, value);
    else
        userProperties_.remove(key);
}

void GTLObject::setUserData(const QVariant& value) { setProperty(value, userDataKey); }

QVariant GTLObject::userData() const { return propertyForKey(userDataKey); }

QStringList GTLObject::additionalJSONKeys() const {
    QStringList keys;
    for (const QString& key : JSON()->keys()) {
        if (!objectClass().propertyForJSONKey(JSONKey(key)))
            keys.append(key);
    }
    return keys;
}

GTLAdditionalValue GTLObject::additionalPropertyForName(const QString& name) const {
    const JSONValue raw = JSONValueForKey(name);
    const GTLClass* const valueClass = objectClass().classForAdditionalProperties();
    if (valueClass && raw.isDictionary())
        return childForKey(JSONKey(name), *valueClass);
    if (valueClass && raw.isArray())
        return arrayForKey(JSONKey(name), *valueClass);
    return raw;
}

void GTLObject::setAdditionalProperty(const GTLAdditionalValue& value, const QString& name) {
    const JSONKey key(name);
    if (const auto* child = std::get_if<GTLObjectPtr>(&value))
        setChild(*child, key);
    else if (const auto* array = std::get_if<GTLArrayBasePtr>(&value))
        setArray(*array, key);
    else
        setJSONValue(std::get<JSONValue>(value), key);
}

std::map<QString, GTLAdditionalValue> GTLObject::additionalProperties() const {
    std::map<QString, GTLAdditionalValue> properties;
    for (const QString& key : additionalJSONKeys())
        properties.emplace(key, additionalPropertyForName(key));
    return properties;
}

QString GTLObject::fieldsDescription() const { return fieldsOf(*JSON()).join(QLatin1Char(',')); }

GTLObjectPtr GTLObject::patchObjectFromOriginal(const GTLObject& original) const {
    const GTLObjectPtr patch = objectClass().object();
    patch->setJSON(patchFrom(*original.JSON(), *JSON()));
    return patch;
}

bool GTLObject::isEqual(const GTLObject& other) const {
    return this == &other || (&objectClass() == &other.objectClass() && JSON()->isEqual(*other.JSON()));
}

std::size_t GTLObject::hash() { return reinterpret_cast<std::size_t>(&classDescriptor()); }

GTLObjectPtr GTLObject::copy() const {
    GTLObjectPtr made = objectClass().object();
    made->setSurrogates(surrogates());
    made->setJSON(JSON()->deepCopy());
    return made;
}

QString GTLObject::description() const {
    QStringList entries;
    for (const QString& key : JSON()->keys()) {
        const bool isDeclared = objectClass().propertyForJSONKey(JSONKey(key)) != nullptr;
        entries.append(QStringLiteral("%1%2:%3").arg(key, isDeclared ? QString() : QStringLiteral("?"),
                                                     summaryOf(JSON()->value(key))));
    }
    return QStringLiteral("%1 0x%2: {%3}")
        .arg(objectClass().nameString())
        .arg(reinterpret_cast<quintptr>(this), 0, 16)
        .arg(entries.join(QLatin1Char(' ')));
}

} // namespace quenby
