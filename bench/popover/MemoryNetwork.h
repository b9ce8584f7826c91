// Answers that lie ready in memory in the place of a network: what is measured then is the program alone. They come
// through the event loop, in pieces as large as the real connection's.
//
// Threads: the main thread. It outlives the connections.
#pragma once

#include "bench/popover/Moment.h"
#include "http/URLConnection.h"

#include <QDateTime>

#include <deque>

namespace quenby::bench {

class MemoryNetwork {
public:
    // The answer to the next request that has none yet, and the moment at which the server says to have given it.
    void add(const QByteArray& body, const QDateTime& date) { answers_.push_back({body, date}); }

    // Requests for which no answer lies ready take the real network.
    URLConnectionFactory factory();

    // When the last piece of the latest answer was handed over.
    const Moment& lastPiece() const { return lastPiece_; }

private:
    class Connection;
    struct Answer {
        QByteArray body;
        QDateTime date;
    };

    std::deque<Answer> answers_;
    Moment lastPiece_;
};

} // namespace quenby::bench
