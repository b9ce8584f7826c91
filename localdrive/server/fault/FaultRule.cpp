#include "localdrive/server/fault/FaultRule.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <functional>
#include <map>

namespace quenby::localdrive {
namespace {

using Phase = FaultPoint::Phase;

QByteArray bytesOf(const QJsonValue& value) {
    if (value.isObject())
        return QJsonDocument(value.toObject()).toJson(QJsonDocument::Compact);
    return value.toString().toUtf8();
}

std::optional<FaultPoint> pointOf(const QJsonValue& value) {
    if (value.toString() == QLatin1String("before"))
        return FaultPoint{};
    const QJsonValue request = value[QLatin1String("afterRequestBytes")];
    const QJsonValue response = value[QLatin1String("afterResponseBytes")];
    if (request.isDouble())
        return FaultPoint{Phase::requestBytes, request.toInteger()};
    if (response.isDouble())
        return FaultPoint{Phase::responseBytes, response.toInteger()};
    return std::nullopt;
}

// Takes the members of a JSON object one by one through a table and finds those that are wrong or unknown.
template <typename T>
struct Member {
    using Taker = std::function<bool(T&, const QJsonValue&)>; // false when the value is none of the expected kind
    using Table = std::map<QString, Taker>;

    static Result<void> takeAll(const QJsonObject& object, const Table& table, T& target) {
        for (auto member = object.begin(); member != object.end(); ++member) {
            const auto taker = table.find(member.key());
            if (taker == table.end() || !taker->second(target, member.value())) {
                return Error(
                    errorDomain::json, 400,
                    {{errorKey::reason,
                      QStringLiteral("The fault rule's \"%1\" is unknown or has a wrong value.").arg(member.key())}});
            }
        }
        return {};
    }
};

const Member<FaultRule>::Table& matchTable() {
    static const Member<FaultRule>::Table table{
        {QStringLiteral("method"),
         [](FaultRule& r, const QJsonValue& v) { return r.match.method = bytesOf(v), v.isString(); }},
        {QStringLiteral("pathPrefix"),
         [](FaultRule& r, const QJsonValue& v) { return r.match.pathPrefix = bytesOf(v), v.isString(); }},
        {QStringLiteral("rpcMethod"),
         [](FaultRule& r, const QJsonValue& v) { return r.match.rpcMethod = v.toString(), v.isString(); }},
        {QStringLiteral("uploadPut"),
         [](FaultRule& r, const QJsonValue& v) { return r.match.uploadPut = v.toBool(), v.isBool(); }},
        {QStringLiteral("statusQuery"),
         [](FaultRule& r, const QJsonValue& v) { return r.match.statusQuery = v.toBool(), v.isBool(); }},
        {QStringLiteral("nth"), [](FaultRule& r, const QJsonValue& v) { return r.skip = v.toInteger(), v.isDouble(); }},
        {QStringLiteral("times"),
         [](FaultRule& r, const QJsonValue& v) { return r.times = v.toInteger(), v.isDouble(); }},
    };
    return table;
}

OrderedReply& replyOf(FaultAction& action) { return action.reply ? *action.reply : action.reply.emplace(); }

// The status under which the API gives most reasons of this kind. A "status" in the rule, which comes later, wins.
bool takeErrorReason(FaultAction& action, const QJsonValue& value) {
    OrderedReply& reply = replyOf(action);
    reply.errorReason = value.toString();
    reply.status = 403;
    return !reply.errorReason.isEmpty();
}

bool takeHeaders(FaultAction& action, const QJsonValue& value) {
    const QJsonObject object = value.toObject();
    for (auto header = object.begin(); header != object.end(); ++header)
        action.headers.emplace_back(header.key().toUtf8(), bytesOf(header.value()));
    return value.isObject();
}

bool takeRedirect(FaultAction& action, const QJsonValue& value) {
    replyOf(action).status = value[QLatin1String("status")].toInt(302);
    action.headers.emplace_back("Location", bytesOf(value[QLatin1String("url")]));
    return value[QLatin1String("url")].isString();
}

bool takeStall(FaultAction& action, const QJsonValue& value) {
    const auto point = pointOf(value[QLatin1String("where")]);
    const double seconds = value[QLatin1String("seconds")].toDouble(-1);
    if (!point || seconds < 0)
        return false;
    action.stall = Stall{*point, std::chrono::milliseconds(qRound64(seconds * 1000))};
    return true;
}

Member<FaultAction>::Taker flag(bool FaultAction::*member) {
    return [member](FaultAction& action, const QJsonValue& value) {
        return action.*member = value.toBool(), value.isBool();
    };
}

Member<FaultAction>::Taker point(std::optional<FaultPoint> FaultAction::*member) {
    return [member](FaultAction& action, const QJsonValue& value) {
        return action.*member = pointOf(value), (action.*member).has_value();
    };
}

Member<FaultAction>::Taker number(std::optional<qint64> FaultAction::*member) {
    return [member](FaultAction& action, const QJsonValue& value) {
        return action.*member = value.toInteger(), value.isDouble() && value.toInteger() >= 0;
    };
}

Member<FaultAction>::Taker text(std::optional<QByteArray> FaultAction::*member) {
    return [member](FaultAction& action, const QJsonValue& value) {
        return action.*member = bytesOf(value), value.isString() || value.isObject();
    };
}

const Member<FaultAction>::Table& actionTable() {
    static const Member<FaultAction>::Table table{
        {QStringLiteral("status"),
         [](FaultAction& a, const QJsonValue& v) { return replyOf(a).status = v.toInt(), v.isDouble(); }},
        {QStringLiteral("headers"), takeHeaders},
        {QStringLiteral("body"),
         [](FaultAction& a, const QJsonValue& v) {
             return replyOf(a).body = bytesOf(v), v.isString() || v.isObject();
         }},
        {QStringLiteral("bodyBytes"),
         [](FaultAction& a, const QJsonValue& v) {
             return replyOf(a).body = QByteArray(v.toInteger(), 'x'), v.isDouble();
         }},
        {QStringLiteral("errorReason"), takeErrorReason},
        {QStringLiteral("commitFirst"), flag(&FaultAction::commitFirst)},
        {QStringLiteral("reset"), point(&FaultAction::reset)},
        {QStringLiteral("drop"), point(&FaultAction::drop)},
        {QStringLiteral("stall"), takeStall},
        {QStringLiteral("truncateBody"), number(&FaultAction::truncateBody)},
        {QStringLiteral("malformedJson"), flag(&FaultAction::malformedJson)},
        {QStringLiteral("contentType"),
         [](FaultAction& a, const QJsonValue& v) {
             return a.headers.emplace_back("Content-Type", bytesOf(v)), v.isString();
         }},
        {QStringLiteral("dripBytesPerSecond"), number(&FaultAction::dripBytesPerSecond)},
        {QStringLiteral("range"), text(&FaultAction::range)},
        {QStringLiteral("loseSession"), flag(&FaultAction::loseSession)},
        {QStringLiteral("changeLocation"), flag(&FaultAction::changeLocation)},
        {QStringLiteral("firstReplyBody"), text(&FaultAction::firstReplyBody)},
        {QStringLiteral("redirect"), takeRedirect},
        {QStringLiteral("expireAccessToken"), flag(&FaultAction::expireAccessToken)},
        {QStringLiteral("revokeRefreshToken"), flag(&FaultAction::revokeRefreshToken)},
        {QStringLiteral("clockSkewSeconds"),
         [](FaultAction& a, const QJsonValue& v) {
             return a.clockSkew = std::chrono::seconds(v.toInteger()), v.isDouble();
         }},
    };
    return table;
}

} // namespace

bool FaultMatch::coversPath(const RequestFacts& request) const {
    const bool standsIn = !request.formerPath.isEmpty() && request.formerPath.startsWith(pathPrefix);
    return standsIn || request.path().startsWith(pathPrefix);
}

bool FaultMatch::covers(const RequestFacts& request) const {
    return (method.isEmpty() || method == request.method) && coversPath(request) &&
           (rpcMethod.isEmpty() || request.rpcMethods.contains(rpcMethod)) &&
           uploadPut.value_or(request.isUploadPut()) == request.isUploadPut() &&
           statusQuery.value_or(request.isStatusQuery) == request.isStatusQuery;
}

bool FaultAction::rewritesReply() const {
    return reply || !headers.empty() || truncateBody || malformedJson || range || firstReplyBody || changeLocation;
}

Result<FaultRule> FaultRule::parse(const QJsonObject& object) {
    FaultRule rule;
    rule.source = object;
    QJsonObject rest = object;
    const QJsonObject match = rest.take(QStringLiteral("match")).toObject();
    const QJsonObject action = rest.take(QStringLiteral("action")).toObject();
    for (const auto& taken : {Member<FaultRule>::takeAll(match, matchTable(), rule),
                              Member<FaultAction>::takeAll(action, actionTable(), rule.action),
                              Member<FaultRule>::takeAll(rest, {}, rule)}) {
        if (!taken)
            return taken.error();
    }
    return rule;
}

} // namespace quenby::localdrive
