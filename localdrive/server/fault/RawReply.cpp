#include "localdrive/server/fault/RawReply.h"

#include <algorithm>
#include <array>

namespace quenby::localdrive {
namespace {

QByteArray reasonPhrase(int status) {
    static constexpr std::array known{
        std::pair(200, "OK"),
        std::pair(201, "Created"),
        std::pair(204, "No Content"),
        std::pair(301, "Moved"),
        std::pair(302, "Found"),
        std::pair(304, "Not Modified"),
        std::pair(307, "Temporary"),
        std::pair(308, "Resume Incomplete"),
        std::pair(400, "Bad Request"),
        std::pair(401, "Unauthorized"),
        std::pair(403, "Forbidden"),
        std::pair(404, "Not Found"),
        std::pair(410, "Gone"),
        std::pair(412, "Precondition Failed"),
        std::pair(429, "Too Many Requests"),
        std::pair(500, "Server Error"),
        std::pair(503, "Unavailable"),
    };
    const auto found = std::find_if(known.begin(), known.end(), [status](const auto& p) { return p.first == status; });
    return found == known.end() ? "Fault" : found->second;
}

// The Range value that stands for one of the words, or the value itself. `held` is the true one, "bytes=0-N" or empty.
QByteArray falseRange(const QByteArray& wanted, const QByteArray& held) {
    const qint64 last = held.isEmpty() ? -1 : held.mid(held.indexOf('-') + 1).toLongLong();
    const auto upTo = [](qint64 end) { return end < 0 ? QByteArray() : "bytes=0-" + QByteArray::number(end); };
    if (wanted == "missing")
        return {};
    if (wanted == "malformed")
        return "bytes=zero-all";
    if (wanted == "backward")
        return upTo((last + 1) / 2 - 1);
    if (wanted == "tooFar")
        return upTo(last + 1000);
    return wanted;
}

} // namespace

RawReply RawReply::parse(const QByteArray& bytes) {
    const qsizetype end = bytes.indexOf("\r\n\r\n");
    QList<QByteArray> lines = bytes.left(end).split('\n');
    RawReply reply;
    reply.status = lines.takeFirst().split(' ').value(1).toInt();
    for (const QByteArray& line : lines) {
        const qsizetype colon = line.indexOf(':');
        reply.headers.emplace_back(line.left(colon), line.mid(colon + 1).trimmed());
    }
    reply.body = end < 0 ? QByteArray() : bytes.mid(end + 4);
    return reply;
}

QByteArray RawReply::header(QByteArrayView name) const {
    for (const auto& [key, value] : headers) {
        if (key.compare(name, Qt::CaseInsensitive) == 0)
            return value;
    }
    return {};
}

void RawReply::setHeader(const QByteArray& name, const QByteArray& value) {
    std::erase_if(headers, [&](const auto& h) { return h.first.compare(name, Qt::CaseInsensitive) == 0; });
    if (!value.isEmpty())
        headers.emplace_back(name, value);
}

void RawReply::falsify(const FaultAction& action) {
    if (action.reply) {
        status = action.reply->status;
        body = action.reply->body;
        setHeader("Content-Encoding", {});
        setHeader("Content-Type", body.isEmpty() ? QByteArray() : QByteArray("text/plain"));
        setHeader("Location", {});
    }
    if (action.firstReplyBody)
        body = *action.firstReplyBody;
    if (action.malformedJson)
        body.chop((body.size() + 1) / 2);
    if (action.range)
        setHeader("Range", falseRange(*action.range, header("Range")));
    for (const auto& [name, value] : action.headers)
        setHeader(name, value);
}

QByteArray RawReply::head() const {
    QByteArray bytes = "HTTP/1.1 " + QByteArray::number(status) + ' ' + reasonPhrase(status) + "\r\n";
    for (const auto& [name, value] : headers) {
        if (name.compare("Content-Length", Qt::CaseInsensitive) != 0)
            bytes += name + ": " + value + "\r\n";
    }
    if (status != 204 && status != 304)
        bytes += "Content-Length: " + QByteArray::number(body.size()) + "\r\n";
    return bytes + "\r\n";
}

} // namespace quenby::localdrive
