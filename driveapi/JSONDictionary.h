// A JSON object: shared by reference, mutable, in the order in which its members were written.
//
// A dictionary that came from a parsed text knows only its place in the document until it is first touched, and each
// member is converted when it is first read. The document stays alive as long as any node made from it. Of members
// with the same name the last one counts.
//
// Keys are looked up as UTF-8, so that literals need no conversion. Threads: see JSONValue.h.
#pragma once

#include "driveapi/JSONKey.h"
#include "driveapi/JSONValue.h"

#include <QStringList>

#include <initializer_list>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace quenby {

class JSONDocument;

class JSONDictionary {
public:
    JSONDictionary() = default;
    JSONDictionary(const JSONDictionary&) = delete;
    JSONDictionary& operator=(const JSONDictionary&) = delete;

    static JSONDictionaryPtr make(std::initializer_list<std::pair<const char*, JSONValue>> members = {});

    qsizetype count() const;
    bool isEmpty() const { return count() == 0; }
    bool contains(const JSONKey& key) const;

    // Undefined when there is no such key.
    JSONValue value(const JSONKey& key) const;
    // The UTF-8 bytes of a string member, null when it is no string. Saves a conversion; valid as long as the
    // dictionary lives and the member is not set.
    QByteArray utf8Value(const JSONKey& key) const;

    // An undefined value removes the key. A new key goes to the end, a known one keeps its place.
    void setValue(const JSONKey& key, JSONValue value);
    bool remove(const JSONKey& key);

    QStringList keys() const;
    // By position, 0 to count() - 1. The key's bytes are valid until it is removed.
    std::string_view keyAt(qsizetype index) const;
    JSONValue valueAt(qsizetype index) const;

    JSONDictionaryPtr deepCopy() const;
    bool isEqual(const JSONDictionary& other) const;

private:
    friend struct JSONMaterialiser;

    struct Member {
        QByteArray key; // either its own bytes or a view into the document
        JSONValue value;
    };
    using Index = std::unordered_map<std::string_view, std::size_t>;

    void materialise() const;
    void put(QByteArray key, JSONValue value) const;
    Member* find(std::string_view key) const;
    const JSONValue& resolved(Member& member) const;

    std::shared_ptr<const JSONDocument> document_;
    mutable std::optional<JSONValue::Pending> place_; // set until the members are listed
    mutable std::vector<Member> members_;
    mutable std::unique_ptr<Index> index_; // only for many members
};

} // namespace quenby
