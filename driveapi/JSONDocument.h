// A parsed text, and how the lazy nodes read from it. Only JSON nodes and the parser include this.
#pragma once

#include "core/Result.h"
#include "driveapi/JSONArray.h"
#include "driveapi/JSONDictionary.h"
#include "driveapi/JSONValue.h"

#include <memory>

namespace quenby {

// The flat form of a checked text. It never changes; nodes made from it keep it alive.
class JSONDocument;

// Turns places in a document into values. Every Pending belongs to the document given with it.
struct JSONMaterialiser {
    using Pending = JSONValue::Pending;
    using DocumentPtr = std::shared_ptr<const JSONDocument>;

    // Checks the whole text; containers come out as nodes that know only their place.
    static Result<JSONValue> parse(QByteArray utf8);

    static JSONValue valueAt(const Pending& place, const DocumentPtr& document);
    // A view into the document when a string is there, otherwise null.
    static QByteArray utf8At(const Pending& place);
    // The number of elements of the array there; nothing when the document does not have it at hand.
    static std::optional<qsizetype> arrayCountAt(const Pending& place);

    static void listMembers(const JSONDictionary& dictionary, const Pending& place);
    static void listElements(std::vector<JSONValue>& elements, const Pending& place);
};

} // namespace quenby
