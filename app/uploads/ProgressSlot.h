// Whose progress the status item shows: one upload's at a time. The first that starts, or that reports while the slot
// is free, takes it; the first that ends, whichever it is, frees it.
#pragma once

#include <QByteArray>

namespace quenby {

class ProgressSlot {
public:
    enum class Change { none, changed, taken };

    const QByteArray& path() const { return path_; } // null when the slot is free
    int percent() const { return percent_; }

    Change start(const QByteArray& path) {
        if (!path_.isNull())
            return Change::none;
        path_ = path;
        percent_ = 0;
        return Change::changed;
    }

    // "taken" when it was a report, not a start, that took the slot.
    Change report(const QByteArray& path, qint64 sent, qint64 total) {
        if (total <= 0 || (!path_.isNull() && path_ != path))
            return Change::none;
        const int percent = static_cast<int>(sent * 100 / total);
        const Change change = path_.isNull() ? Change::taken : (percent == percent_ ? Change::none : Change::changed);
        path_ = path;
        percent_ = percent;
        return change;
    }

    // 100 after an end, 0 when everything was cancelled.
    void release(int percent) {
        path_ = QByteArray();
        percent_ = percent;
    }

private:
    QByteArray path_;
    int percent_ = 0;
};

} // namespace quenby
