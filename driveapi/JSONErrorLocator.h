// Where a text that was refused stops being JSON. The parser is fast because it does not keep track; this is its slow
// companion for the error message.
#pragma once

#include <QtGlobal>

#include <optional>
#include <string_view>

namespace quenby {

struct JSONFault {
    qsizetype position;   // of the first offending byte, from 0
    const char* expected; // what could have stood there, for people
};

// Nothing when the text is well-formed and not too deep, whatever the size of its numbers.
std::optional<JSONFault> locateJSONFault(std::string_view text);

} // namespace quenby
