#include "driveapi/GTLCollectionObject.h"

namespace quenby {

namespace {

constexpr char itemsKey[] = "items";
constexpr char resultArrayKey[] = "result_array_items";

GTLArrayFactory itemsFactoryOf(const GTLClass& listClass) {
    const GTLProperty* const declared = listClass.propertyForJSONKey(itemsKey);
    return declared && declared->makeArray ? declared->makeArray : &GTLArray<GTLObject>::makeUntyped;
}

// Null when the item has none. Most are texts; a change's is a number.
QString identifierOf(const GTLObject& item) {
    const GTLProperty* const declared = item.objectClass().propertyNamed("identifier");
    const JSONValue value = item.JSONValueForKey(declared ? declared->jsonKey : "identifier");
    if (value.isNumber())
        return QString::number(value.toInt64());
    return value.toString();
}

} // namespace

const GTLClass& GTLCollectionObject::classDescriptor() {
    return gtlDefineClass<GTLCollectionObject, GTLObject>("GTLCollectionObject");
}

GTLArrayBasePtr GTLCollectionObject::itemsArray() const { return arrayForKey(itemsKey, itemsFactoryOf(objectClass())); }

void GTLCollectionObject::setItemsArray(const GTLArrayBasePtr& items) { setArray(items, itemsKey); }

qsizetype GTLCollectionObject::count() const {
    const GTLArrayBasePtr items = itemsArray();
    return items ? items->count() : 0;
}

GTLObjectPtr GTLCollectionObject::itemAtIndex(qsizetype index) const {
    const GTLArrayBasePtr items = itemsArray();
    return items ? items->objectAtIndex(index) : nullptr;
}

GTLObjectPtr GTLCollectionObject::itemForIdentifier(const QString& identifier) const {
    if (!identifierMap_) {
        identifierMap_.emplace();
        const qsizetype itemCount = count();
        for (qsizetype index = 0; index < itemCount; ++index) {
            const GTLObjectPtr item = itemAtIndex(index);
            const QString key = item ? identifierOf(*item) : QString();
            if (!key.isNull())
                identifierMap_->insert(key, item);
        }
    }
    return identifierMap_->value(identifier);
}

const GTLClass& GTLResultArray::classDescriptor() {
    return gtlDefineClass<GTLResultArray, GTLCollectionObject>("GTLResultArray");
}

GTLArrayBasePtr GTLResultArray::itemsArray() const { return itemsWithItemClass(GTLObject::classDescriptor()); }

GTLArrayBasePtr GTLResultArray::itemsWithItemClass(const GTLClass& itemClass) const {
    return arrayForKey(resultArrayKey, itemClass);
}

void GTLResultArray::adoptJSON(const JSONValue& json) {
    if (json.isArray())
        setJSON(JSONDictionary::make({{resultArrayKey, json}}));
    else
        GTLObject::adoptJSON(json);
}

} // namespace quenby
