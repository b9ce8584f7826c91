// Values to JSON text; the rules are told in GTLJSONParser.h.
#pragma once

#include "driveapi/GTLJSONParser.h"

#include <QByteArray>

#include <string_view>

namespace quenby {

class JSONWriter {
public:
    explicit JSONWriter(GTLJSONParser::Format format)
        : isReadable_(format == GTLJSONParser::Format::humanReadable) {}

    QByteArray write(const JSONValue& value);

private:
    void writeValue(const JSONValue& value);
    void writeArray(const JSONArray& array);
    void writeDictionary(const JSONDictionary& dictionary);
    void writeString(const QString& text);
    void writeEscaped(std::string_view utf8);
    template <typename Number>
    void writeNumber(Number number);
    void startLine(); // only in readable text

    bool isReadable_;
    int depth_ = 0;
    QByteArray text_;
};

} // namespace quenby
