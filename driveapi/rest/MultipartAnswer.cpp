#include "driveapi/rest/MultipartAnswer.h"

#include "driveapi/GTLServiceReply.h"

#include <algorithm>
#include <optional>

namespace quenby {
namespace {

constexpr qsizetype longestBoundary = 70; // RFC 2046, section 5.1.1

Error unusable(const char* what) {
    return serviceError(GTLServiceErrorCode::replyUnusable,
                        QStringLiteral("The service's answer to a batch cannot be read: %1. Try again.")
                            .arg(QString::fromLatin1(what)));
}

// --- The boundary in the Content-Type
// ---------------------------------------------------------------------------------

// Up to the quotation mark that ends it; the one at the front is gone. Nothing when there is none.
std::optional<QByteArray> takeQuoted(QByteArrayView& rest) {
    QByteArray value;
    for (qsizetype i = 0; i < rest.size(); ++i) {
        if (rest[i] == '"') {
            rest = rest.sliced(i + 1);
            return value;
        }
        if (rest[i] == '\\' && ++i == rest.size())
            break;
        value += rest[i];
    }
    return std::nullopt;
}

QByteArrayView takeUntil(QByteArrayView& rest, QByteArrayView ends) {
    const auto end =
        std::find_if(rest.begin(), rest.end(), [ends](char character) { return ends.contains(character); });
    const QByteArrayView taken = rest.first(end - rest.begin());
    rest = rest.sliced(taken.size());
    return taken;
}

// Empty when there is none that may be one.
QByteArray boundaryIn(const QByteArray& contentType) {
    QByteArrayView rest(contentType);
    constexpr QByteArrayView multipart("multipart/");
    const QByteArrayView type = takeUntil(rest, ";").trimmed();
    if (type.size() <= multipart.size() || type.first(multipart.size()).compare(multipart, Qt::CaseInsensitive) != 0)
        return {};
    while (!rest.isEmpty()) {
        rest = rest.sliced(1).trimmed(); // the semicolon
        const QByteArrayView name = takeUntil(rest, "=;").trimmed();
        if (!rest.startsWith("="))
            continue;
        rest = rest.sliced(1).trimmed();
        QByteArray value;
        if (rest.startsWith("\"")) {
            rest = rest.sliced(1);
            value = takeQuoted(rest).value_or(QByteArray());
            takeUntil(rest, ";");
        } else {
            value = takeUntil(rest, ";").trimmed().toByteArray();
        }
        if (name.compare("boundary", Qt::CaseInsensitive) == 0)
            return value.size() <= longestBoundary ? value : QByteArray();
    }
    return {};
}

// --- The lines between the parts
// --------------------------------------------------------------------------------------

// The line break before the line belongs to it.
struct Delimiter {
    qsizetype begin = 0;
    qsizetype end = 0;
    bool closes = false;
};

// Past the rest of a line in which nothing but white space stands; nothing when something does.
std::optional<qsizetype> endOfBlankLine(QByteArrayView body, qsizetype at) {
    while (at < body.size() && (body[at] == ' ' || body[at] == '\t' || body[at] == '\r'))
        ++at;
    if (at == body.size())
        return at;
    return body[at] == '\n' ? std::optional(at + 1) : std::nullopt;
}

// The next one that does not begin before the given place, which is the start of a line.
std::optional<Delimiter> nextDelimiter(QByteArrayView body, const QByteArray& boundary, qsizetype from) {
    const QByteArray dashed = "--" + boundary;
    for (qsizetype at = body.indexOf(dashed, from); at >= 0; at = body.indexOf(dashed, at + 1)) {
        if (at > from && body[at - 1] != '\n')
            continue;
        Delimiter found;
        qsizetype after = at + dashed.size();
        found.closes = body.sliced(after).startsWith("--");
        const auto end = endOfBlankLine(body, found.closes ? after + 2 : after);
        if (!end)
            continue;
        found.end = *end;
        found.begin = at;
        if (found.begin > from)
            --found.begin;
        if (found.begin > from && body[found.begin - 1] == '\r')
            --found.begin;
        return found;
    }
    return std::nullopt;
}

// --- Header blocks
// ----------------------------------------------------------------------------------------------------

// Without its end; all that is left when no line ends.
QByteArrayView takeLine(QByteArrayView& rest) {
    const qsizetype end = rest.indexOf('\n');
    QByteArrayView line = end < 0 ? rest : rest.first(end);
    rest = end < 0 ? QByteArrayView() : rest.sliced(end + 1);
    return line.endsWith('\r') ? line.chopped(1) : line;
}

// The fields up to the empty line, which is taken too, or up to the end. Nothing when a line is no field.
std::optional<HeaderFields> takeFields(QByteArrayView& rest) {
    HeaderFields fields;
    HeaderFields::Field field;
    const auto finishField = [&] {
        if (!field.first.isEmpty())
            fields.append(field.first, field.second);
        field = {};
    };
    while (!rest.isEmpty()) {
        const QByteArrayView line = takeLine(rest);
        if (line.isEmpty())
            break;
        if ((line.front() == ' ' || line.front() == '\t') && !field.first.isEmpty()) {
            field.second += ' ' + line.trimmed().toByteArray(); // folded
            continue;
        }
        finishField();
        const qsizetype colon = line.indexOf(':');
        const QByteArrayView name = line.first(std::max<qsizetype>(colon, 0)).trimmed();
        if (name.isEmpty())
            return std::nullopt;
        field = {name.toByteArray(), line.sliced(colon + 1).trimmed().toByteArray()};
    }
    finishField();
    return fields;
}

// "HTTP/1.1 404 Not Found"; 0 for anything else.
int statusIn(QByteArrayView line) {
    const qsizetype space = line.indexOf(' ');
    if (!line.startsWith("HTTP/") || space < 0)
        return 0;
    const QByteArrayView code = line.sliced(space + 1).trimmed();
    if (code.size() < 3 || (code.size() > 3 && code[3] != ' '))
        return 0;
    int status = 0;
    for (const char digit : code.first(3)) {
        if (digit < '0' || digit > '9')
            return 0;
        status = status * 10 + (digit - '0');
    }
    return status >= 100 && status <= 599 ? status : 0;
}

bool hasNoBody(int statusCode) { return statusCode < 200 || statusCode == 204 || statusCode == 304; }

} // namespace

Result<std::vector<MultipartPart>> partsOfMultipart(const QByteArray& contentType, const QByteArray& body) {
    const QByteArray boundary = boundaryIn(contentType);
    if (boundary.isEmpty())
        return unusable("it is no multipart answer, or one without a boundary");
    const QByteArrayView bytes(body);
    auto delimiter = nextDelimiter(bytes, boundary, 0);
    if (!delimiter)
        return unusable("its boundary does not occur in it");
    std::vector<MultipartPart> parts;
    while (!delimiter->closes) {
        const auto next = nextDelimiter(bytes, boundary, delimiter->end);
        if (!next)
            return unusable("it was cut short");
        QByteArrayView rest = bytes.sliced(delimiter->end, next->begin - delimiter->end);
        const auto fields = takeFields(rest);
        if (!fields)
            return unusable("a part has a malformed header");
        parts.push_back({*fields, rest.toByteArray()});
        delimiter = next;
    }
    return parts;
}

Result<EmbeddedResponse> responseInPart(const QByteArray& part) {
    QByteArrayView rest(part);
    while (rest.startsWith('\r') || rest.startsWith('\n'))
        rest = rest.sliced(1);
    EmbeddedResponse response;
    response.statusCode = statusIn(takeLine(rest));
    if (response.statusCode == 0)
        return unusable("a part is no HTTP response");
    auto fields = takeFields(rest);
    if (!fields)
        return unusable("a response in it has a malformed header");
    response.headers = std::move(*fields);
    if (hasNoBody(response.statusCode))
        return response;
    if (const QByteArray length = response.headers.value("Content-Length"); !length.isNull()) {
        bool isNumber = false;
        const qulonglong told = length.trimmed().toULongLong(&isNumber);
        if (!isNumber || told > static_cast<qulonglong>(rest.size()))
            return unusable("a response in it was cut short");
        rest = rest.first(static_cast<qsizetype>(told));
    }
    response.body = rest.toByteArray();
    return response;
}

} // namespace quenby
