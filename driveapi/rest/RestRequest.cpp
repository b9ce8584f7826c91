#include "driveapi/rest/RestRequest.h"

#include "driveapi/GTLErrorObject.h"
#include "driveapi/GTLJSONParser.h"
#include "driveapi/JSONArray.h"
#include "driveapi/rest/RestMethods.h"

#include <QSet>
#include <QStringList>

#include <algorithm>

namespace quenby {
namespace {

constexpr int badRequest = 400;
constexpr int methodNotFound = -32601; // JSON-RPC 2.0, section 5.1

// What the service answers to such a call on the first road.
Error refusal(int code, const QString& reason, const QString& message, const QString& parameter = {}) {
    const auto detail = GTLErrorObjectData::object();
    detail->setDomain(QStringLiteral("global"));
    detail->setReason(reason);
    detail->setMessage(message);
    if (!parameter.isEmpty()) {
        detail->setLocation(parameter);
        detail->setJSONValue(QStringLiteral("parameter"), "locationType");
    }
    const auto error = GTLErrorObject::object();
    error->setCode(code);
    error->setMessage(message);
    error->setData(GTLArray<GTLErrorObjectData>::make());
    error->data()->append(detail);
    return error->foundationError();
}

Error missing(const QString& parameter) {
    return refusal(badRequest, QStringLiteral("required"), QStringLiteral("Required parameter: %1").arg(parameter),
                   parameter);
}

Error invalid(const QString& parameter) {
    return refusal(badRequest, QStringLiteral("invalid"), QStringLiteral("Invalid value of %1").arg(parameter),
                   parameter);
}

// Numbers and booleans as the API spells them, which is as JSON does.
QString spelled(const JSONValue& value) {
    return value.isString() ? value.toString() : GTLJSONParser::stringWithObject(value);
}

// Dots would lead out of the place where the parameter stands, and half a surrogate pair cannot be encoded.
bool canStandInPath(const QString& text) {
    return text.isValidUtf16() && text != QLatin1String(".") && text != QLatin1String("..");
}

// A file that is called like a place of its own would be taken for it: deleting one named "trash" empties the trash.
bool isAnotherMethods(const RestMethod& method, const QString& path) {
    const auto methods = restMethods();
    return std::any_of(methods.begin(), methods.end(), [&](const RestMethod& other) {
        return &other != &method && qstrcmp(other.verb, method.verb) == 0 && path == QLatin1String(other.path);
    });
}

// The path with the query's parameters in it, and which those were.
Result<QString> filledPath(const RestMethod& method, const GTLQuery& query, QSet<QString>& used) {
    QStringList segments = QString::fromLatin1(method.path).split(QLatin1Char('/'));
    QString last;
    for (QString& segment : segments) {
        if (!segment.startsWith(QLatin1Char('{')))
            continue;
        last = segment.mid(1, segment.size() - 2);
        used.insert(last);
        const JSONValue value = query.JSONValueForKey(last);
        const bool isGiven = value.isString() || value.isNumber();
        const QString text = isGiven ? spelled(value) : QString();
        if (text.isEmpty())
            return missing(last);
        if (!canStandInPath(text))
            return invalid(last);
        segment = GTLUtilities::stringByURLEncodingForURI(text);
    }
    const QString path = segments.join(QLatin1Char('/'));
    if (!last.isEmpty() && isAnotherMethods(method, path))
        return invalid(last);
    return path;
}

void addItem(QStringList& items, const QString& name, const QString& value) {
    items.append(GTLUtilities::stringByURLEncodingForURI(name) + QLatin1Char('=') +
                 GTLUtilities::stringByURLEncodingForURI(value));
}

// An array gives one item for each of its elements.
void addParameter(QStringList& items, const QString& name, const JSONValue& value) {
    if (value.isNull())
        return;
    const JSONArrayPtr array = value.array();
    if (!array)
        return addItem(items, name, spelled(value));
    for (qsizetype i = 0; i < array->count(); ++i)
        addItem(items, name, spelled(array->at(i)));
}

QStringList queryItems(const GTLQuery& query, const QSet<QString>& inPath, const QString& APIKey) {
    QStringList items;
    const JSONDictionary& parameters = *query.JSON();
    for (qsizetype i = 0; i < parameters.count(); ++i) {
        const std::string_view key = parameters.keyAt(i);
        const QString name = QString::fromUtf8(key.data(), static_cast<qsizetype>(key.size()));
        if (name != QLatin1String("resource") && !inPath.contains(name))
            addParameter(items, name, parameters.valueAt(i));
    }
    if (!APIKey.isEmpty() && !parameters.contains("key"))
        addItem(items, QStringLiteral("key"), APIKey);
    return items;
}

QUrl assembled(const QUrl& base, const QString& path, QStringList items) {
    if (base.hasQuery())
        items.prepend(base.query(QUrl::FullyEncoded));
    QString text = base.toString(QUrl::FullyEncoded | QUrl::RemoveQuery | QUrl::RemoveFragment) + path;
    if (!items.isEmpty())
        text += QLatin1Char('?') + items.join(QLatin1Char('&'));
    return QUrl(text);
}

// A body that was given among the parameters counts where there is no object, as it does on the first road.
QByteArray bodyOf(const RestMethod& method, const GTLQuery& query) {
    if (method.body == RestMethod::Body::none)
        return {};
    const JSONDictionaryPtr given =
        query.bodyObject() ? query.bodyObject()->JSON() : query.JSONValueForKey("resource").dictionary();
    return GTLJSONParser::dataWithObject(given ? given : JSONDictionary::make());
}

} // namespace

Result<RestRequest> restRequestForQuery(const GTLQuery& query, const QUrl& base, const QString& APIKey,
                                        RestMedia media) {
    const RestMethod* method = restMethodNamed(query.methodName());
    if (!method)
        return refusal(methodNotFound, QStringLiteral("methodNotFound"),
                       QStringLiteral("Method not found: %1").arg(query.methodName()));
    const bool hasMedia = media == RestMedia::sent && query.uploadParameters();
    if (hasMedia && method->body != RestMethod::Body::media)
        return invalid(QStringLiteral("media"));
    QSet<QString> inPath;
    const Result<QString> path = filledPath(*method, query, inPath);
    if (!path)
        return path.error();
    RestRequest request;
    request.verb = method->verb;
    request.url = assembled(base, *path, queryItems(query, inPath, APIKey));
    if (!hasMedia || !query.uploadParameters()->shouldSendUploadOnly)
        request.body = bodyOf(*method, query);
    return request;
}

} // namespace quenby
