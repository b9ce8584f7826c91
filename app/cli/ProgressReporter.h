// Shows how far the running transfers are: one moving line on a terminal, plain lines elsewhere (the start, then at
// most one line for every ten percent). Threads: the main thread alone.
#pragma once

#include "app/cli/Console.h"
#include "app/cli/ProgressText.h"
#include "core/TimeSource.h"

#include <map>
#include <memory>

namespace quenby {

class ProgressReporter {
public:
    using Id = int;

    // The verb's present participle opens the plain lines: "Uploading".
    ProgressReporter(Console& console, std::shared_ptr<TimeSource> timeSource, QString activity);

    // What there is to do in all, when it is known beforehand; otherwise the transfers that began.
    void setExpected(int transfers, qint64 bytes);

    Id begin(const QString& name, qint64 totalBytes);
    void update(Id id, qint64 doneBytes);
    void end(Id id); // its bytes count as done; the line disappears with the last

private:
    struct Transfer {
        Progress progress;
        int reportedTenths = 0;
    };

    void reportPlainly(Transfer& transfer) const;
    void drawLine();

    Console& console_;
    std::shared_ptr<TimeSource> timeSource_;
    QString activity_;
    std::map<Id, Transfer> running_;
    RateMeter rate_;
    std::chrono::milliseconds lastDrawn_{};
    bool wasDrawn_ = false;
    Id lastId_ = 0;
    int ended_ = 0;
    qint64 endedBytes_ = 0;
    int expected_ = 0;
    qint64 expectedBytes_ = 0;
};

} // namespace quenby
