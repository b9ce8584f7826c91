#include "driveapi/JSONDocument.h"

#include "driveapi/JSONErrorLocator.h"

#include <simdjson.h>

#include <bit>
#include <charconv>
#include <type_traits>

#include <sys/mman.h>

namespace quenby {

namespace dom = simdjson::dom;

class JSONDocument {
public:
    dom::document content;
};

namespace {

// An element is a document's address and a position in it, so it can be kept without its header.
using Pending = JSONMaterialiser::Pending;
static_assert(std::is_trivially_copyable_v<dom::element> && sizeof(dom::element) == sizeof(Pending));

dom::element elementAt(const Pending& place) { return std::bit_cast<dom::element>(place); }
Pending placeOf(dom::element element) { return std::bit_cast<Pending>(element); }

// The parser reads some bytes past the text, whatever they hold. Whether they belong to the text's buffer.
bool isPadded(const QByteArray& text) {
    return text.capacity() - text.size() >= static_cast<qsizetype>(simdjson::SIMDJSON_PADDING);
}

// A text that nobody else holds grows in place. One that is shared, perhaps with the thread that fetched it, is left as
// it is: the parser makes a padded copy of its own.
void addPaddingInPlace(QByteArray& text) {
    if (text.isDetached() && !isPadded(text))
        text.reserve(text.size() + static_cast<qsizetype>(simdjson::SIMDJSON_PADDING));
}

// The parser's buffers are reserved for the worst case and used up to where the text leads. For a large text most of
// the time would go into the page faults of their first use, hence huge pages. Advice only: failing does no harm.
void preferHugePages(void* buffer, std::size_t size) {
    constexpr std::uintptr_t pageSize = 2 << 20;
    const auto start = reinterpret_cast<std::uintptr_t>(buffer);
    const std::uintptr_t first = (start + pageSize - 1) / pageSize * pageSize;
    const std::uintptr_t end = (start + size) / pageSize * pageSize;
    if (end > first)
        ::madvise(reinterpret_cast<void*>(first), end - first, MADV_HUGEPAGE);
}

simdjson::error_code allocate(dom::parser& parser, dom::document& document, std::size_t textSize) {
    // Small texts must not each take pages of megabytes.
    constexpr std::size_t worthwhile = 4 << 20;
    if (textSize < worthwhile)
        return simdjson::SUCCESS; // the parser sees to it
    if (const auto error = parser.allocate(textSize, jsonMaximumDepth))
        return error;
    if (const auto error = document.allocate(textSize))
        return error;
    preferHugePages(document.tape.get(), textSize * sizeof(std::uint64_t));
    preferHugePages(document.string_buf.get(), textSize);
    preferHugePages(parser.implementation->structural_indexes.get(), textSize * sizeof(std::uint32_t));
    return simdjson::SUCCESS;
}

simdjson::error_code parseInto(dom::document& document, QByteArray& text, dom::element& root) {
    addPaddingInPlace(text);
    dom::parser parser;
    const auto size = static_cast<std::size_t>(text.size());
    if (const auto error = allocate(parser, document, size))
        return error;
    return parser.parse_into_document(document, text.constData(), size, !isPadded(text)).get(root);
}

bool isBeyond64Bits(const char* first, const char* last) {
    const char* digits = *first == '-' ? first + 1 : first;
    quint64 magnitude = 0;
    if (std::from_chars(digits, last, magnitude).ec == std::errc::result_out_of_range)
        return true;
    return digits != first && magnitude > quint64(1) << 63;
}

// Gives integers that no 64-bit number can hold an exponent, so that they are read as doubles.
QByteArray withHugeIntegersAsReals(const QByteArray& text) {
    const auto isNumberCharacter = [](char c) {
        return (c >= '0' && c <= '9') || c == '-' || c == '+' || c == '.' || c == 'e' || c == 'E';
    };
    QByteArray widened;
    widened.reserve(text.size() + 64);
    const char* const end = text.constEnd();
    bool insideString = false;
    for (const char* at = text.constBegin(); at != end;) {
        const char* const start = at++;
        if (insideString) {
            if (*start == '\\' && at != end)
                ++at;
            insideString = *start != '"';
        } else if (*start == '"') {
            insideString = true;
        } else if (isNumberCharacter(*start)) {
            at = std::find_if_not(at, end, isNumberCharacter);
            const bool isInteger =
                std::none_of(start, at, [](char c) { return c == '.' || c == 'e' || c == 'E' || c == '+'; });
            widened.append(start, at - start);
            if (isInteger && isBeyond64Bits(start, at))
                widened.append("e0");
            continue;
        }
        widened.append(start, at - start);
    }
    return widened;
}

Error malformed(const QByteArray& text, simdjson::error_code code) {
    const std::string_view view(text.constData(), static_cast<std::size_t>(text.size()));
    QString what;
    if (const auto fault = locateJSONFault(view))
        what = QStringLiteral("at byte %1, expected %2").arg(fault->position).arg(QLatin1String(fault->expected));
    else
        what = QString::fromLatin1(simdjson::error_message(code));
    return Error(errorDomain::json, static_cast<qint64>(JSONErrorCode::malformed),
                 {{errorKey::reason,
                   QStringLiteral("The text is no valid JSON (%1). Try again; if it stays, the server is at fault.")
                       .arg(what)}});
}

} // namespace

Result<JSONValue> JSONMaterialiser::parse(QByteArray utf8) {
    auto document = std::make_shared<JSONDocument>();
    dom::element root;
    simdjson::error_code code = parseInto(document->content, utf8, root);
    if (code == simdjson::NUMBER_ERROR) {
        QByteArray widened = withHugeIntegersAsReals(utf8);
        code = parseInto(document->content, widened, root);
    }
    if (code != simdjson::SUCCESS)
        return malformed(utf8, code);
    return valueAt(placeOf(root), document);
}

JSONValue JSONMaterialiser::valueAt(const Pending& place, const DocumentPtr& document) {
    const dom::element element = elementAt(place);
    switch (element.type()) {
    case dom::element_type::OBJECT: {
        auto node = std::make_shared<JSONDictionary>();
        node->document_ = document;
        node->place_ = place;
        return node;
    }
    case dom::element_type::ARRAY: {
        auto node = std::make_shared<JSONArray>();
        node->document_ = document;
        node->place_ = place;
        return node;
    }
    case dom::element_type::STRING: {
        const std::string_view text = element.get_string().value_unsafe();
        return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
    }
    case dom::element_type::INT64:
        return static_cast<qint64>(element.get_int64().value_unsafe());
    case dom::element_type::UINT64:
        return static_cast<quint64>(element.get_uint64().value_unsafe());
    case dom::element_type::DOUBLE:
        return element.get_double().value_unsafe();
    case dom::element_type::BOOL:
        return element.get_bool().value_unsafe();
    case dom::element_type::NULL_VALUE:
        return JSONValue::null();
    }
    Q_UNREACHABLE();
}

QByteArray JSONMaterialiser::utf8At(const Pending& place) {
    std::string_view text;
    if (elementAt(place).get_string().get(text) != simdjson::SUCCESS)
        return {};
    return QByteArray::fromRawData(text.data(), static_cast<qsizetype>(text.size()));
}

std::optional<qsizetype> JSONMaterialiser::arrayCountAt(const Pending& place) {
    constexpr std::size_t saturated = 0xFFFFFF; // the document keeps 24 bits of it
    const std::size_t count = elementAt(place).get_array().value_unsafe().size();
    if (count >= saturated)
        return std::nullopt;
    return static_cast<qsizetype>(count);
}

void JSONMaterialiser::listMembers(const JSONDictionary& dictionary, const Pending& place) {
    const dom::object object = elementAt(place).get_object().value_unsafe();
    dictionary.members_.reserve(object.size());
    for (const dom::key_value_pair member : object) {
        JSONValue value;
        value.content_ = placeOf(member.value);
        dictionary.put(QByteArray::fromRawData(member.key.data(), static_cast<qsizetype>(member.key.size())),
                       std::move(value));
    }
}

void JSONMaterialiser::listElements(std::vector<JSONValue>& elements, const Pending& place) {
    const dom::array array = elementAt(place).get_array().value_unsafe();
    elements.reserve(array.size());
    for (const dom::element element : array)
        elements.emplace_back().content_ = placeOf(element);
}

} // namespace quenby
