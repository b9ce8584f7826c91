// JSON text to values and back.
//
// Reading: RFC 8259, UTF-8 only. The whole text is checked at once, so a value that came out is good to its last byte,
// but nodes are built only when they are touched. Refused with an error in errorDomain::json (its reason names the
// position): anything malformed, invalid UTF-8, lone surrogates, nesting above jsonMaximumDepth, and numbers beyond
// the range of a double. Integers beyond 64 bits are read as doubles.
//
// Writing: UTF-8; control characters, quotation marks and backslashes are escaped; a lone surrogate in a string is
// written as U+FFFD; a number that JSON cannot express (infinite, not a number) as null. Doubles read back the same.
//
// Threads: all functions may be called from any thread.
#pragma once

#include "core/Result.h"
#include "driveapi/JSONValue.h"

namespace quenby {

class GTLJSONParser {
public:
    enum class Format { compact, humanReadable };

    // Pass bytes with std::move when they are not needed afterwards: then large texts are never copied.
    static Result<JSONValue> objectWithData(QByteArray utf8);
    static Result<JSONValue> objectWithString(const QString& text);

    static QByteArray dataWithObject(const JSONValue& value, Format format = Format::compact);
    static QString stringWithObject(const JSONValue& value, Format format = Format::compact);
};

} // namespace quenby
