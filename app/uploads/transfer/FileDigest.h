// The MD5 sum of an open file, computed on a thread of its own in constant memory. That thread makes way for all
// others: the window's first of all.
//
// Threads: made and destroyed on the thread that gets the result. Destroying it makes the thread stop soon, without
// waiting for that; the result then never comes. The file stays open until the thread has stopped. The file's position
// is neither used nor moved, so that the file can be sent at the same time.
#pragma once

#include "core/CompletionGate.h"
#include "core/Result.h"

#include <QByteArray>
#include <QFile>

#include <atomic>
#include <functional>
#include <memory>

namespace quenby {

class FileDigest {
public:
    // The sum in lower-case hexadecimal digits, as the Drive tells it.
    using Handler = std::function<void(const Result<QByteArray>& md5)>;

    FileDigest(std::shared_ptr<QFile> file, QObject* context, Handler handler);
    ~FileDigest();
    FileDigest(const FileDigest&) = delete;
    FileDigest& operator=(const FileDigest&) = delete;

private:
    CompletionGate<Result<QByteArray>> gate_;
    const std::shared_ptr<std::atomic_bool> isStopped_; // the thread's too
};

} // namespace quenby
