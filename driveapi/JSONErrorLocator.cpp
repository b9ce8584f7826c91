#include "driveapi/JSONErrorLocator.h"

#include "driveapi/JSONValue.h"

#include <algorithm>
#include <string>

namespace quenby {

namespace {

// Walks over a text with an explicit stack of open brackets. A step that fails has set fault_ and answers false.
class Walker {
public:
    explicit Walker(std::string_view text)
        : text_(text) {}

    std::optional<JSONFault> walk() {
        skipSpace();
        while (!fault_ && !isDone_)
            static_cast<void>(value() && afterValue());
        return fault_;
    }

private:
    char current() const { return position_ < text_.size() ? text_[position_] : '\0'; }
    bool fail(const char* expected) {
        fault_ = JSONFault{static_cast<qsizetype>(position_), expected};
        return false;
    }
    void skipSpace() { position_ = std::min(text_.find_first_not_of(" \t\r\n", position_), text_.size()); }
    bool isDigit() const { return current() >= '0' && current() <= '9'; }

    // One value; of a container only its head, up to where a value must stand or the container is closed.
    bool value() {
        switch (current()) {
        case '{':
            return open('}') && (closedAtOnce('}') || (key() && value()));
        case '[':
            return open(']') && (closedAtOnce(']') || value());
        case '"':
            return string();
        case 't':
            return word("true");
        case 'f':
            return word("false");
        case 'n':
            return word("null");
        default:
            return number();
        }
    }

    // Commas and closing brackets up to where the next value must stand, or the end.
    bool afterValue() {
        for (;;) {
            skipSpace();
            if (open_.empty()) {
                isDone_ = true;
                return position_ == text_.size() || fail("the end of the text");
            }
            const char closing = open_.back();
            if (current() == ',') {
                ++position_;
                skipSpace();
                return closing == ']' || key();
            }
            if (current() != closing)
                return fail(closing == '}' ? "\",\" or \"}\"" : "\",\" or \"]\"");
            ++position_;
            open_.pop_back();
        }
    }

    bool open(char closing) {
        if (open_.size() >= static_cast<std::size_t>(jsonMaximumDepth) - 1)
            return fail("no deeper nesting than 1024 levels");
        open_.push_back(closing);
        ++position_;
        skipSpace();
        return true;
    }

    bool closedAtOnce(char closing) {
        if (current() != closing)
            return false;
        ++position_;
        open_.pop_back();
        return true;
    }

    // A member's name and the colon.
    bool key() {
        if (current() != '"')
            return fail("a quoted name");
        if (!string())
            return false;
        skipSpace();
        if (current() != ':')
            return fail("\":\"");
        ++position_;
        skipSpace();
        return true;
    }

    bool word(std::string_view expected) {
        if (text_.substr(position_, expected.size()) != expected)
            return fail("a value");
        position_ += expected.size();
        return true;
    }

    bool digits() {
        if (!isDigit())
            return fail("a digit");
        while (isDigit())
            ++position_;
        return true;
    }

    bool number() {
        if (current() == '-')
            ++position_;
        else if (!isDigit())
            return fail("a value");
        if (current() == '0')
            ++position_;
        else if (!digits())
            return false;
        if (current() == '.') {
            ++position_;
            if (!digits())
                return false;
        }
        if (current() == 'e' || current() == 'E') {
            ++position_;
            if (current() == '+' || current() == '-')
                ++position_;
            return digits();
        }
        return true;
    }

    bool string() {
        for (++position_; position_ < text_.size();) {
            const auto byte = static_cast<unsigned char>(current());
            if (byte == '"') {
                ++position_;
                return true;
            }
            if (byte < 0x20)
                return fail("an escape in place of a control character");
            if (byte < 0x80 && byte != '\\')
                ++position_;
            else if (!(byte == '\\' ? escape() : multibyteCharacter()))
                return false;
        }
        return fail("a closing quotation mark");
    }

    bool escape() {
        const std::size_t start = position_++;
        if (current() == 'u') {
            const auto unit = codeUnit();
            if (!unit)
                return false;
            if (*unit < 0xD800 || *unit > 0xDFFF)
                return true;
            if (*unit < 0xDC00 && text_.substr(position_, 2) == "\\u") {
                ++position_;
                const auto low = codeUnit();
                if (!low)
                    return false;
                if (*low >= 0xDC00 && *low <= 0xDFFF)
                    return true;
            }
            position_ = start;
            return fail("a whole surrogate pair");
        }
        if (position_ == text_.size() || std::string_view("\"\\/bfnrt").find(current()) == std::string_view::npos)
            return fail("one of the escapes \\\" \\\\ \\/ \\b \\f \\n \\r \\t \\u");
        ++position_;
        return true;
    }

    // The four hexadecimal digits after the "u" at the current position.
    std::optional<unsigned> codeUnit() {
        ++position_;
        unsigned unit = 0;
        for (int digit = 0; digit < 4; ++digit, ++position_) {
            const char c = current();
            const auto isBetween = [c](char low, char high) { return c >= low && c <= high; };
            if (!isBetween('0', '9') && !isBetween('a', 'f') && !isBetween('A', 'F')) {
                fail("a hexadecimal digit");
                return std::nullopt;
            }
            unit = unit * 16 + static_cast<unsigned>(c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10);
        }
        return unit;
    }

    // UTF-8, RFC 3629 section 4.
    bool multibyteCharacter() {
        const auto byteAt = [this](std::size_t offset) -> unsigned {
            return position_ + offset < text_.size() ? static_cast<unsigned char>(text_[position_ + offset]) : 0;
        };
        const unsigned lead = byteAt(0);
        const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
        const unsigned lowest = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;  // no longer than needed
        const unsigned highest = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF; // no surrogates, nothing too large
        bool isValid = lead >= 0xC2 && lead <= 0xF4 && byteAt(1) >= lowest && byteAt(1) <= highest;
        for (std::size_t offset = 2; offset < length; ++offset)
            isValid = isValid && (byteAt(offset) & 0xC0) == 0x80;
        if (!isValid)
            return fail("valid UTF-8");
        position_ += length;
        return true;
    }

    std::string_view text_;
    std::size_t position_ = 0;
    std::string open_; // the closing brackets that are due, innermost last
    bool isDone_ = false;
    std::optional<JSONFault> fault_;
};

} // namespace

std::optional<JSONFault> locateJSONFault(std::string_view text) { return Walker(text).walk(); }

} // namespace quenby
