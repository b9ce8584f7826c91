// Set-Cookie: whatever a server sends, what is kept is a cookie that may be kept for that server, and what goes back in
// a Cookie field cannot begin another field.

#include "http/GTMCookieStorage.h"
#include "http/SetCookieParser.h"
#include "tests/fuzz/FuzzSupport.h"

using namespace quenby;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QDateTime now(QDate(2026, 1, 1), QTime(12, 0), Qt::UTC);
    const QUrl url(QStringLiteral("https://www.drive.example/a/b"));
    HeaderFields headers;
    for (const QByteArray& line : fuzzBytes(data, size).split('\n'))
        headers.append("Set-Cookie", line);
    const auto cookies = parseSetCookieFields(headers, url, now);
    for (const auto& cookie : cookies) {
        require(!cookie.name().isEmpty() && !cookie.path().isEmpty(), "a cookie has a name and a path");
        const QString domain = cookie.domain().startsWith(QLatin1Char('.')) ? cookie.domain().mid(1) : cookie.domain();
        require(url.host() == domain || url.host().endsWith(QLatin1Char('.') + domain),
                "a server sets cookies for itself and its parents only");
        for (const char c : QByteArray(cookie.name() + cookie.value()))
            require(c != '\r' && c != '\n' && c != '\0', "a cookie stays on its line");
    }
    return 0;
}
