// Where a resumable upload stands and what it sends next. Pure bookkeeping: knows nothing of requests.
//
// The server alone decides where the next chunk begins; the plan only refuses what can never end well. An answer that
// does not lie beyond the answer before it brought nothing. So many of those in a row, without the server ever holding
// more than it held before, end the upload; and because each of them makes the next retry wait twice as long, a server
// that is out of order for a minute is still sat out.
#pragma once

#include "core/Result.h"

#include <QByteArray>
#include <QtGlobal>

namespace quenby {

class UploadPlan {
public:
    static constexpr int maximumFruitlessAnswers = 8;

    // Both in bytes. A chunk has at least one byte.
    UploadPlan(quint64 fullLength, quint64 chunkSize);

    // The body of one request: so many bytes from an offset, none when the server is only asked.
    struct Piece {
        quint64 offset = 0;
        quint64 length = 0;
        QByteArray contentRange;
    };

    quint64 fullLength() const { return fullLength_; }
    Piece statusQuery() const;
    // With everything sent (the server holds all and has not said so) and with an empty body, a status query.
    Piece pieceAt(quint64 offset) const;

    // Where the next chunk begins after an incomplete answer (308) with this Range header; without one, or with one
    // that cannot be read, at 0. FetcherErrorCode::chunkUploadFailed when the server claims more than there is, or has
    // not moved for too long.
    Result<quint64> offsetAfter(const QByteArray& rangeHeader);

    // Answers in a row that brought nothing, since the server last held more than ever.
    int fruitlessAnswers() const { return fruitlessAnswers_; }
    // Somebody decided to go on: the count begins anew.
    void forgetFruitlessAnswers() { fruitlessAnswers_ = 0; }

private:
    quint64 fullLength_;
    quint64 chunkSize_;
    quint64 lastAnswer_ = 0;
    quint64 furthestAnswer_ = 0;
    int fruitlessAnswers_ = 0;
};

} // namespace quenby
