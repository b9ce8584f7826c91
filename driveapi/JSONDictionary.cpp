#include "driveapi/JSONDictionary.h"

#include "driveapi/JSONDocument.h"

namespace quenby {

namespace {

// Up to here looking at every key is faster than keeping an index.
constexpr std::size_t linearSearchLimit = 24;

std::string_view view(const QByteArray& bytes) { return {bytes.constData(), static_cast<std::size_t>(bytes.size())}; }

} // namespace

JSONDictionaryPtr JSONDictionary::make(std::initializer_list<std::pair<const char*, JSONValue>> members) {
    auto dictionary = std::make_shared<JSONDictionary>();
    for (const auto& [key, value] : members)
        dictionary->setValue(key, value);
    return dictionary;
}

qsizetype JSONDictionary::count() const {
    materialise();
    return static_cast<qsizetype>(members_.size());
}

bool JSONDictionary::contains(const JSONKey& key) const {
    materialise();
    return find(key) != nullptr;
}

JSONValue JSONDictionary::value(const JSONKey& key) const {
    materialise();
    Member* const member = find(key);
    return member ? resolved(*member) : JSONValue();
}

QByteArray JSONDictionary::utf8Value(const JSONKey& key) const {
    materialise();
    const Member* const member = find(key);
    if (!member)
        return {};
    if (const auto* place = std::get_if<JSONValue::Pending>(&member->value.content_))
        return JSONMaterialiser::utf8At(*place);
    return member->value.toString().toUtf8();
}

void JSONDictionary::setValue(const JSONKey& key, JSONValue value) {
    materialise();
    const std::string_view name = key;
    if (value.isUndefined())
        remove(key);
    else
        put(QByteArray(name.data(), static_cast<qsizetype>(name.size())), std::move(value));
}

bool JSONDictionary::remove(const JSONKey& key) {
    materialise();
    const Member* const member = find(key);
    if (!member)
        return false;
    members_.erase(members_.begin() + (member - members_.data()));
    index_.reset(); // positions have moved
    return true;
}

QStringList JSONDictionary::keys() const {
    materialise();
    QStringList keys;
    keys.reserve(count());
    for (const Member& member : members_)
        keys.append(QString::fromUtf8(member.key));
    return keys;
}

std::string_view JSONDictionary::keyAt(qsizetype index) const {
    materialise();
    return view(members_.at(static_cast<std::size_t>(index)).key);
}

JSONValue JSONDictionary::valueAt(qsizetype index) const {
    materialise();
    return resolved(members_.at(static_cast<std::size_t>(index)));
}

JSONDictionaryPtr JSONDictionary::deepCopy() const {
    // The document never changes, so what has not been touched is copied by its place.
    auto copy = std::make_shared<JSONDictionary>();
    copy->document_ = document_;
    copy->place_ = place_;
    copy->members_.reserve(members_.size());
    for (const Member& member : members_)
        copy->members_.push_back({member.key, member.value.deepCopy()});
    return copy;
}

bool JSONDictionary::isEqual(const JSONDictionary& other) const {
    if (this == &other)
        return true;
    if (count() != other.count())
        return false;
    for (Member& member : members_) {
        const Member* const counterpart = other.find(view(member.key));
        if (!counterpart || !(resolved(member) == other.value(view(member.key))))
            return false;
    }
    return true;
}

void JSONDictionary::materialise() const {
    if (!place_)
        return;
    const JSONValue::Pending place = *place_;
    place_.reset();
    JSONMaterialiser::listMembers(*this, place);
}

void JSONDictionary::put(QByteArray key, JSONValue value) const {
    if (Member* const member = find(view(key))) {
        member->value = std::move(value);
        return;
    }
    members_.push_back({std::move(key), std::move(value)});
    if (index_)
        index_->emplace(view(members_.back().key), members_.size() - 1);
}

JSONDictionary::Member* JSONDictionary::find(std::string_view key) const {
    if (members_.size() <= linearSearchLimit) {
        for (Member& member : members_) {
            if (view(member.key) == key)
                return &member;
        }
        return nullptr;
    }
    if (!index_) {
        index_ = std::make_unique<Index>();
        for (std::size_t position = 0; position < members_.size(); ++position)
            index_->emplace(view(members_[position].key), position);
    }
    const auto found = index_->find(key);
    return found == index_->end() ? nullptr : &members_[found->second];
}

const JSONValue& JSONDictionary::resolved(Member& member) const {
    if (const auto* place = std::get_if<JSONValue::Pending>(&member.value.content_))
        member.value = JSONMaterialiser::valueAt(*place, document_);
    return member.value;
}

} // namespace quenby
