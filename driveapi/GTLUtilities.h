// Text and collection helpers of the API client. Pure functions, safe on any thread.
#pragma once

#include <QMap>
#include <QString>
#include <QUrl>

#include <compare>
#include <functional>

namespace quenby {

// Names and values, for example of a URL's query or of header fields.
using GTLStringMap = QMap<QString, QString>;

namespace GTLUtilities {

// The address with the parameters added to its query, sorted by name without regard to case. An empty text gives an
// empty URL; without parameters the text is taken as it is.
QUrl URLWithString(const QString& text, const GTLStringMap& queryParameters);

// Percent-escapes everything but unreserved characters (RFC 3986, section 2.3). A text that is no valid Unicode comes
// back as it is.
QString stringByURLEncodingForURI(const QString& text);

// The same for a name or a value of a form-encoded query: a space becomes "+".
QString stringByURLEncodingStringParameter(const QString& text);

// Percent-escapes what may not stand in a header field: every byte of the UTF-8 text outside 32 to 126, and "%".
QByteArray stringByPercentEncodingUTF8ForString(const QString& text);

// Percent-escapes only what may not stand anywhere in an address; delimiters are kept.
QString stringByURLEncodingString(const QString& text);

// Compares dotted version texts number by number; a missing or unreadable number counts as 0.
std::strong_ordering compareVersion(const QString& left, const QString& right);

// The elements whose value at the key path equals the given one, in order. A key path is anything that can be
// invoked with an element: a member function, a data member, a function object.
template <typename Array, typename Value, typename KeyPath>
Array objectsFromArray(const Array& array, const Value& value, const KeyPath& keyPath) {
    Array found;
    for (const auto& element : array) {
        if (std::invoke(keyPath, element) == value)
            found.push_back(element);
    }
    return found;
}

// The first such element, or a default-constructed one.
template <typename Array, typename Value, typename KeyPath>
typename Array::value_type firstObjectFromArray(const Array& array, const Value& value, const KeyPath& keyPath) {
    for (const auto& element : array) {
        if (std::invoke(keyPath, element) == value)
            return element;
    }
    return {};
}

} // namespace GTLUtilities
} // namespace quenby
