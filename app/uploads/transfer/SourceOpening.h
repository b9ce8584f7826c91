// Opens a local file on a thread of its own, so that a disk that sleeps or a network folder that does not answer keeps
// nobody waiting.
//
// Threads: made and destroyed on the thread that gets the result. Destroying it cancels and never waits: a thread that
// the kernel holds back ends by itself later, and closes what it opened.
// Errors: those of SourceFile::open(), and one of its own when the time is up.
#pragma once

#include "app/uploads/transfer/SourceFile.h"
#include "core/CompletionGate.h"
#include "core/TimeSource.h"

#include <functional>
#include <memory>

namespace quenby {

class SourceOpening {
public:
    using Handler = std::function<void(const Result<SourceFile>& source)>;

    SourceOpening(TimeSource& timeSource, const QByteArray& path, QObject* context, Handler handler);
    ~SourceOpening();
    SourceOpening(const SourceOpening&) = delete;
    SourceOpening& operator=(const SourceOpening&) = delete;

private:
    CompletionGate<Result<SourceFile>> gate_;
    std::unique_ptr<Timer> timeout_;
};

} // namespace quenby
