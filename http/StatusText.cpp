#include "http/StatusText.h"

#include <QLatin1String>

#include <algorithm>
#include <array>
#include <utility>

namespace quenby {
namespace {

constexpr std::array phrases{
    std::pair{300, "Multiple Choices"},
    std::pair{301, "Moved Permanently"},
    std::pair{302, "Found"},
    std::pair{303, "See Other"},
    std::pair{304, "Not Modified"},
    std::pair{307, "Temporary Redirect"},
    std::pair{308, "Permanent Redirect"},
    std::pair{400, "Bad Request"},
    std::pair{401, "Unauthorized"},
    std::pair{403, "Forbidden"},
    std::pair{404, "Not Found"},
    std::pair{405, "Method Not Allowed"},
    std::pair{406, "Not Acceptable"},
    std::pair{407, "Proxy Authentication Required"},
    std::pair{408, "Request Timeout"},
    std::pair{409, "Conflict"},
    std::pair{410, "Gone"},
    std::pair{411, "Length Required"},
    std::pair{412, "Precondition Failed"},
    std::pair{413, "Content Too Large"},
    std::pair{414, "URI Too Long"},
    std::pair{415, "Unsupported Media Type"},
    std::pair{416, "Range Not Satisfiable"},
    std::pair{422, "Unprocessable Content"},
    std::pair{423, "Locked"},
    std::pair{428, "Precondition Required"},
    std::pair{429, "Too Many Requests"},
    std::pair{431, "Request Header Fields Too Large"},
    std::pair{451, "Unavailable For Legal Reasons"},
    std::pair{500, "Internal Server Error"},
    std::pair{501, "Not Implemented"},
    std::pair{502, "Bad Gateway"},
    std::pair{503, "Service Unavailable"},
    std::pair{504, "Gateway Timeout"},
    std::pair{505, "HTTP Version Not Supported"},
    std::pair{507, "Insufficient Storage"},
};

} // namespace

QString statusText(int statusCode) {
    const QString code = QString::number(statusCode);
    const auto* found = std::find_if(phrases.begin(), phrases.end(),
                                     [statusCode](const auto& phrase) { return phrase.first == statusCode; });
    return found == phrases.end() ? code : QString(code + QLatin1Char(' ') + QLatin1String(found->second));
}

} // namespace quenby
