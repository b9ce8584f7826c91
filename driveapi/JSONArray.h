// A JSON array: shared by reference and mutable. Built lazily like JSONDictionary; elements are converted when they
// are first read. Threads: see JSONValue.h.
#pragma once

#include "driveapi/JSONValue.h"

#include <initializer_list>
#include <optional>
#include <vector>

namespace quenby {

class JSONDocument;

class JSONArray {
public:
    JSONArray() = default;
    JSONArray(const JSONArray&) = delete;
    JSONArray& operator=(const JSONArray&) = delete;

    static JSONArrayPtr make(std::initializer_list<JSONValue> elements = {});

    qsizetype count() const;
    bool isEmpty() const { return count() == 0; }

    // Undefined past the end.
    JSONValue at(qsizetype index) const;
    // The UTF-8 bytes of a string element, null when it is no string; see JSONDictionary::utf8Value.
    QByteArray utf8At(qsizetype index) const;

    // An undefined value is stored as null: an array has no gaps.
    void append(JSONValue value);
    void setValue(qsizetype index, JSONValue value); // index below count()
    void removeAt(qsizetype index);                  // index below count()

    JSONArrayPtr deepCopy() const;
    bool isEqual(const JSONArray& other) const;

private:
    friend struct JSONMaterialiser;

    void materialise() const;
    const JSONValue& resolved(qsizetype index) const;

    std::shared_ptr<const JSONDocument> document_;
    mutable std::optional<JSONValue::Pending> place_; // set until the elements are listed
    mutable std::vector<JSONValue> elements_;
};

} // namespace quenby
