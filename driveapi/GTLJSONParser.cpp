#include "driveapi/GTLJSONParser.h"

#include "driveapi/JSONDocument.h"
#include "driveapi/JSONWriter.h"

namespace quenby {

Result<JSONValue> GTLJSONParser::objectWithData(QByteArray utf8) { return JSONMaterialiser::parse(std::move(utf8)); }

Result<JSONValue> GTLJSONParser::objectWithString(const QString& text) { return objectWithData(text.toUtf8()); }

QByteArray GTLJSONParser::dataWithObject(const JSONValue& value, Format format) {
    return JSONWriter(format).write(value);
}

QString GTLJSONParser::stringWithObject(const JSONValue& value, Format format) {
    return QString::fromUtf8(dataWithObject(value, format));
}

} // namespace quenby
