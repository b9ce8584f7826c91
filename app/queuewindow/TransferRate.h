// How fast something gets on, of late. Threads: any one.
#pragma once

#include <QtGlobal>

#include <chrono>
#include <deque>

namespace quenby {

class TransferRate {
public:
    // So many bytes altogether at this time of TimeSource::elapsed(). Going back begins anew.
    void note(std::chrono::milliseconds now, qint64 bytes) {
        if (!marks_.empty() && bytes < marks_.back().bytes)
            marks_.clear();
        marks_.push_back({now, bytes});
        while (marks_.size() > 2 && now - marks_[1].time >= window)
            marks_.pop_front();
    }
    void forget() { marks_.clear(); }

    // Over the last seconds; 0 as long as nothing can be said.
    qint64 bytesPerSecond() const {
        if (marks_.size() < 2)
            return 0;
        const auto time = marks_.back().time - marks_.front().time;
        return time >= shortest ? (marks_.back().bytes - marks_.front().bytes) * 1000 / time.count() : 0;
    }

private:
    struct Mark {
        std::chrono::milliseconds time;
        qint64 bytes;
    };
    static constexpr std::chrono::milliseconds window{8000};
    static constexpr std::chrono::milliseconds shortest{1000}; // what is buffered on the way is no rate

    std::deque<Mark> marks_;
};

} // namespace quenby
