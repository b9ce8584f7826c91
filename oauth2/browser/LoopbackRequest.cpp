#include "oauth2/browser/LoopbackRequest.h"

#include <QList>
#include <QUrlQuery>

#include <algorithm>
#include <optional>

namespace quenby::loopback {
namespace {

// In a time that does not tell how much of it is right.
bool isSameSecret(const QByteArray& given, const QByteArray& secret) {
    if (given.size() != secret.size() || secret.isEmpty())
        return false;
    int difference = 0;
    for (qsizetype i = 0; i < secret.size(); ++i)
        difference |= given.at(i) ^ secret.at(i);
    return difference == 0;
}

bool isVisible(const QByteArray& text) {
    return std::all_of(text.begin(), text.end(), [](char character) { return character > 0x20 && character < 0x7f; });
}

// The one Host field; nothing when there are several, or something that is no field.
std::optional<QByteArray> hostOf(const QList<QByteArray>& fields) {
    std::optional<QByteArray> host;
    for (const QByteArray& field : fields) {
        const qsizetype colon = field.indexOf(':');
        if (colon <= 0 || !isVisible(field.first(colon)))
            return std::nullopt;
        if (field.first(colon).compare("host", Qt::CaseInsensitive) != 0)
            continue;
        if (host)
            return std::nullopt;
        host = field.sliced(colon + 1).trimmed();
    }
    return host;
}

// RFC 6749, section 3.1: no parameter is there twice. An empty one counts as missing.
std::optional<QString> single(const QUrlQuery& query, const char* name) {
    const QStringList values = query.allQueryItemValues(QLatin1String(name), QUrl::FullyDecoded);
    return values.size() == 1 && !values.first().isEmpty() ? std::optional(values.first()) : std::nullopt;
}

Verdict verdictOn(const QUrl& url, const Expected& expected) {
    const QUrlQuery query(url);
    const auto state = single(query, "state");
    if (!state || !isSameSecret(state->toUtf8(), expected.state))
        return Verdict::notOurs;
    const bool hasCode = query.hasQueryItem(QStringLiteral("code"));
    const bool hasError = query.hasQueryItem(QStringLiteral("error"));
    if (hasCode == hasError || !single(query, hasCode ? "code" : "error"))
        return Verdict::notOurs;
    return hasCode ? Verdict::granted : Verdict::declined;
}

} // namespace

Request judged(const QByteArray& head, const Expected& expected) {
    QList<QByteArray> lines = head.split('\n');
    for (QByteArray& line : lines) {
        if (line.endsWith('\r'))
            line.chop(1);
    }
    const QList<QByteArray> start = lines.takeFirst().split(' ');
    const bool isHTTP = start.size() == 3 && (start.at(2) == "HTTP/1.1" || start.at(2) == "HTTP/1.0") &&
                        isVisible(start.at(0)) && isVisible(start.at(1)) && start.at(1).startsWith('/');
    if (!isHTTP)
        return {Verdict::malformed, {}};
    if (hostOf(lines) != expected.host)
        return {Verdict::wrongHost, {}};
    if (start.at(0) != "GET")
        return {Verdict::wrongMethod, {}};
    const QUrl url = QUrl::fromEncoded("http://" + expected.host + start.at(1), QUrl::StrictMode);
    if (!url.isValid() || url.path(QUrl::FullyEncoded) != QLatin1String("/"))
        return {Verdict::wrongPath, {}};
    const Verdict verdict = verdictOn(url, expected);
    return {verdict, isAnswer(verdict) ? url : QUrl()};
}

} // namespace quenby::loopback
