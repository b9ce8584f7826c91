// Several calls in one request: a body of the type multipart/mixed whose parts are HTTP requests themselves.
#pragma once

#include <QByteArray>
#include <QList>

#include <optional>

namespace quenby::localdrive {

bool isBatchPath(const QByteArray& path);

struct BatchCall {
    QByteArray contentId; // with its angle brackets; empty when the part has none
    QByteArray verb;      // empty: the part is no request
    QByteArray target;
    QByteArray authorization; // of this call alone; empty: that of the whole request
    QByteArray body;
};

// Nothing when the body is not of that type or not complete.
std::optional<QList<BatchCall>> batchCalls(const QByteArray& contentType, const QByteArray& body);

struct BatchAnswer {
    QByteArray contentId; // of the call
    int status = 200;
    QByteArray body; // JSON; empty: none
};

// The parts of a reply between such boundaries.
QByteArray batchReply(const QList<BatchAnswer>& answers, const QByteArray& boundary);

} // namespace quenby::localdrive
