#include "driveapi/GTLArray.h"

#include "driveapi/GTLObject.h"

namespace quenby {

GTLArrayBase::GTLArrayBase(JSONArrayPtr json, const GTLClass* elementClass, GTLSurrogates surrogates)
    : json_(json ? std::move(json) : JSONArray::make())
    , elementClass_(elementClass)
    , surrogates_(std::move(surrogates)) {}

GTLArrayBase::~GTLArrayBase() = default;

GTLObjectPtr GTLArrayBase::objectAtIndex(qsizetype index) const {
    const JSONDictionaryPtr node = json_->at(index).dictionary();
    if (!node)
        return nullptr;
    GTLObjectPtr& object = builtAt(index).object;
    // The JSON may have been changed underneath: what was built counts only for the node that it was built from.
    if (!object || object->JSON() != node)
        object =
            GTLObject::objectForJSON(node, elementClass_ ? elementClass_ : &GTLObject::classDescriptor(), surrogates_);
    return object;
}

GTLArrayBasePtr GTLArrayBase::arrayAtIndex(qsizetype index) const {
    const JSONArrayPtr node = json_->at(index).array();
    if (!node)
        return nullptr;
    GTLArrayBasePtr& array = builtAt(index).array;
    if (!array || array->JSON() != node)
        array = std::make_shared<GTLArrayBase>(node, elementClass_, surrogates_);
    return array;
}

void GTLArrayBase::appendObject(const GTLObjectPtr& object) {
    if (!object)
        return;
    json_->append(object->JSON());
    builtAt(count() - 1).object = object;
}

GTLArrayBase::Built& GTLArrayBase::builtAt(qsizetype index) const {
    if (static_cast<std::size_t>(index) >= built_.size())
        built_.resize(static_cast<std::size_t>(count()));
    return built_[static_cast<std::size_t>(index)];
}

} // namespace quenby
