#include "driveapi/JSONWriter.h"

#include "driveapi/JSONArray.h"
#include "driveapi/JSONDictionary.h"

#include <charconv>
#include <cmath>

namespace quenby {

namespace {

// Qt writes a lone surrogate as a question mark, which cannot be told from a real one.
QString withoutLoneSurrogates(QString text) {
    for (qsizetype index = 0; index < text.size(); ++index) {
        if (!text.at(index).isSurrogate())
            continue;
        const bool isPair =
            text.at(index).isHighSurrogate() && index + 1 < text.size() && text.at(index + 1).isLowSurrogate();
        if (isPair)
            ++index;
        else
            text[index] = QChar(QChar::ReplacementCharacter);
    }
    return text;
}

} // namespace

QByteArray JSONWriter::write(const JSONValue& value) {
    text_.clear();
    writeValue(value);
    return text_;
}

void JSONWriter::writeValue(const JSONValue& value) {
    switch (value.type()) {
    case JSONValue::Type::boolean:
        text_ += value.toBool() ? "true" : "false";
        return;
    case JSONValue::Type::integer:
        return writeNumber(value.toInt64());
    case JSONValue::Type::unsignedInteger:
        return writeNumber(value.toUInt64());
    case JSONValue::Type::real:
        if (std::isfinite(value.toDouble()))
            return writeNumber(value.toDouble());
        break;
    case JSONValue::Type::string:
        return writeString(value.toString());
    case JSONValue::Type::array:
        return writeArray(*value.array());
    case JSONValue::Type::dictionary:
        return writeDictionary(*value.dictionary());
    case JSONValue::Type::undefined:
    case JSONValue::Type::null:
    case JSONValue::Type::pending: // never outside its node
        break;
    }
    text_ += "null";
}

void JSONWriter::writeArray(const JSONArray& array) {
    text_ += '[';
    ++depth_;
    for (qsizetype index = 0; index < array.count(); ++index) {
        if (index > 0)
            text_ += ',';
        startLine();
        writeValue(array.at(index));
    }
    --depth_;
    if (!array.isEmpty())
        startLine();
    text_ += ']';
}

void JSONWriter::writeDictionary(const JSONDictionary& dictionary) {
    text_ += '{';
    ++depth_;
    for (qsizetype index = 0; index < dictionary.count(); ++index) {
        if (index > 0)
            text_ += ',';
        startLine();
        writeEscaped(dictionary.keyAt(index));
        text_ += isReadable_ ? ": " : ":";
        writeValue(dictionary.valueAt(index));
    }
    --depth_;
    if (!dictionary.isEmpty())
        startLine();
    text_ += '}';
}

void JSONWriter::writeString(const QString& text) {
    const QByteArray utf8 = text.isValidUtf16() ? text.toUtf8() : withoutLoneSurrogates(text).toUtf8();
    writeEscaped({utf8.constData(), static_cast<std::size_t>(utf8.size())});
}

void JSONWriter::writeEscaped(std::string_view utf8) {
    static constexpr char hexadecimal[] = "0123456789abcdef";
    text_ += '"';
    for (const char c : utf8) {
        switch (c) {
        case '"':
        case '\\':
            text_ += '\\';
            text_ += c;
            break;
        case '\b':
            text_ += "\\b";
            break;
        case '\f':
            text_ += "\\f";
            break;
        case '\n':
            text_ += "\\n";
            break;
        case '\r':
            text_ += "\\r";
            break;
        case '\t':
            text_ += "\\t";
            break;
        default:
            if (static_cast<unsigned char>(c) < 0x20) {
                text_ += "\\u00";
                text_ += hexadecimal[c >> 4];
                text_ += hexadecimal[c & 0xF];
            } else {
                text_ += c;
            }
        }
    }
    text_ += '"';
}

template <typename Number>
void JSONWriter::writeNumber(Number number) {
    char digits[32]; // the shortest form of a double has at most 24 characters
    const auto result = std::to_chars(digits, digits + sizeof(digits), number);
    text_.append(digits, result.ptr - digits);
}

void JSONWriter::startLine() {
    if (!isReadable_)
        return;
    text_ += '\n';
    text_.append(2 * depth_, ' ');
}

} // namespace quenby
