#include "driveapi/JSONArray.h"

#include "driveapi/JSONDocument.h"

namespace quenby {

JSONArrayPtr JSONArray::make(std::initializer_list<JSONValue> elements) {
    auto array = std::make_shared<JSONArray>();
    for (const JSONValue& element : elements)
        array->append(element);
    return array;
}

qsizetype JSONArray::count() const {
    if (place_) {
        if (const auto count = JSONMaterialiser::arrayCountAt(*place_))
            return *count;
    }
    materialise();
    return static_cast<qsizetype>(elements_.size());
}

JSONValue JSONArray::at(qsizetype index) const {
    materialise();
    if (index < 0 || index >= static_cast<qsizetype>(elements_.size()))
        return {};
    return resolved(index);
}

QByteArray JSONArray::utf8At(qsizetype index) const {
    materialise();
    if (index < 0 || index >= static_cast<qsizetype>(elements_.size()))
        return {};
    const JSONValue& element = elements_[static_cast<std::size_t>(index)];
    if (const auto* place = std::get_if<JSONValue::Pending>(&element.content_))
        return JSONMaterialiser::utf8At(*place);
    return element.toString().toUtf8();
}

void JSONArray::append(JSONValue value) {
    materialise();
    elements_.push_back(value.isUndefined() ? JSONValue::null() : std::move(value));
}

void JSONArray::setValue(qsizetype index, JSONValue value) {
    materialise();
    elements_.at(static_cast<std::size_t>(index)) = value.isUndefined() ? JSONValue::null() : std::move(value);
}

void JSONArray::removeAt(qsizetype index) {
    materialise();
    Q_ASSERT(index >= 0 && index < count());
    elements_.erase(elements_.begin() + index);
}

JSONArrayPtr JSONArray::deepCopy() const {
    // The document never changes, so what has not been touched is copied by its place.
    auto copy = std::make_shared<JSONArray>();
    copy->document_ = document_;
    copy->place_ = place_;
    copy->elements_.reserve(elements_.size());
    for (const JSONValue& element : elements_)
        copy->elements_.push_back(element.deepCopy());
    return copy;
}

bool JSONArray::isEqual(const JSONArray& other) const {
    if (this == &other)
        return true;
    if (count() != other.count())
        return false;
    for (qsizetype index = 0; index < count(); ++index) {
        if (!(at(index) == other.at(index)))
            return false;
    }
    return true;
}

void JSONArray::materialise() const {
    if (!place_)
        return;
    JSONMaterialiser::listElements(elements_, *place_);
    place_.reset();
}

const JSONValue& JSONArray::resolved(qsizetype index) const {
    JSONValue& element = elements_[static_cast<std::size_t>(index)];
    if (const auto* place = std::get_if<JSONValue::Pending>(&element.content_))
        element = JSONMaterialiser::valueAt(*place, document_);
    return element;
}

} // namespace quenby
