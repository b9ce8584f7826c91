// What happens to the connections in a storm: rules for the local Drive, one after another by the generator's choice.
#pragma once

#include <QByteArray>
#include <QRandomGenerator>

namespace quenby::testing {

// The file is there, but nobody says so: the answer to a piece is lost, mostly to the only one, and then the session.
// The first trouble of its kind, so that even a short storm has it.
inline const QByteArray lostCompletion =
    R"([{"match": {"uploadPut": true, "statusQuery": false}, "action": {"drop": {"afterResponseBytes": 0}}},
        {"match": {"statusQuery": true}, "action": {"loseSession": true}}])";

// Rules as docs/LOCAL-DRIVE.md has them.
inline QByteArray nextStormRule(QRandomGenerator& random) {
    const QByteArray some = QByteArray::number(random.bounded(1, 4));
    const QByteArray bytes = QByteArray::number(random.bounded(300000));
    const QByteArray piece = R"("uploadPut": true, "nth": )" + QByteArray::number(random.bounded(3));
    const auto rule = [](const QByteArray& match, const QByteArray& action) -> QByteArray {
        return R"([{"match": {)" + match + R"(}, "action": {)" + action + "}}]";
    };
    switch (random.bounded(12)) {
    case 0: // in the middle of a piece
        return rule(piece, R"("reset": {"afterRequestBytes": )" + bytes + "}");
    case 1:
        return rule(piece, R"("drop": {"afterRequestBytes": )" + bytes + "}");
    case 2: // the answer to a piece, maybe to the last one
        return rule(piece, R"("drop": {"afterResponseBytes": 0})");
    case 3: // the answer to an announcement
        return rule(R"("method": "POST", "pathPrefix": "/upload")", R"("reset": {"afterResponseBytes": 0})");
    case 4:
        return rule(R"("times": )" + some, R"("reset": "before")");
    case 5:
        return rule(R"("times": )" + some, R"("drop": "before")");
    case 6:
        return rule(piece, R"("stall": {"where": "before", "seconds": 20})");
    case 7:
        return lostCompletion;
    case 8:
        return rule(piece, R"("loseSession": true)");
    case 9:
        return rule(R"("times": )" + some, R"("status": 503, "headers": {"Retry-After": "1"})");
    case 10:
        return rule(R"("times": )" + some, R"("status": 429)");
    default:
        return rule(R"("times": )" + some, R"("status": 403, "errorReason": "userRateLimitExceeded")");
    }
}

} // namespace quenby::testing
