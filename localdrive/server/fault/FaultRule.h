// One ordered fault: which requests it is for and what happens to them. docs/LOCAL-DRIVE.md lists the JSON form.
#pragma once

#include "core/Result.h"
#include "localdrive/server/fault/RequestFacts.h"

#include <QJsonObject>

#include <chrono>
#include <optional>
#include <utility>
#include <vector>

namespace quenby::localdrive {

struct FaultMatch {
    QByteArray method;     // empty: any
    QByteArray pathPrefix; // empty: any
    QString rpcMethod;     // empty: any; a batch matches when one of its calls does
    std::optional<bool> uploadPut;
    std::optional<bool> statusQuery;

    bool covers(const RequestFacts& request) const;

private:
    bool coversPath(const RequestFacts& request) const;
};

// A moment in an exchange, exact to the byte.
struct FaultPoint {
    enum class Phase {
        before,        // nothing of the request is read beyond what tells the rules apart
        requestBytes,  // so many bytes of the body have been handled
        responseBytes, // so many bytes of the reply, its head included, have been sent
    };
    Phase phase = Phase::before;
    qint64 bytes = 0;
};

struct Stall {
    FaultPoint point;
    std::chrono::milliseconds duration{0};
};

// A reply in place of the real one.
struct OrderedReply {
    int status = 200;
    QByteArray body;
    QString errorReason = {}; // not empty: the body is an error of the API with this reason, in the road's form
};

using HeaderList = std::vector<std::pair<QByteArray, QByteArray>>;

struct FaultAction {
    std::optional<OrderedReply> reply;
    bool commitFirst = false; // with a reply: the real work is done before
    HeaderList headers;       // replace those of the reply; an empty value removes
    std::optional<FaultPoint> reset;
    std::optional<FaultPoint> drop;
    std::optional<Stall> stall;
    std::optional<qint64> dripBytesPerSecond;
    std::optional<qint64> truncateBody; // bytes of the announced body that are sent before the connection drops
    bool malformedJson = false;
    std::optional<QByteArray> range; // "missing", "malformed", "backward", "tooFar", else the value itself
    std::optional<QByteArray> firstReplyBody;
    bool changeLocation = false;
    bool loseSession = false;
    bool expireAccessToken = false;
    bool revokeRefreshToken = false;
    std::optional<std::chrono::seconds> clockSkew;

    // The request is answered without being handled.
    bool replacesWork() const { return reply && !commitFirst; }
    // The reply must be there as a whole before its first byte is sent.
    bool rewritesReply() const;
};

struct FaultRule {
    FaultMatch match;
    FaultAction action;
    qint64 skip = 0;  // matching requests that pass first
    qint64 times = 1; // how often it strikes; -1: always
    QJsonObject source;

    // The error names what it does not understand: a rule that silently does nothing would make a test pass.
    static Result<FaultRule> parse(const QJsonObject& rule);
};

} // namespace quenby::localdrive
