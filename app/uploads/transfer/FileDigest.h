// The MD5 sum of an open file, computed on a thread of its own in constant memory.
//
// Threads: made and destroyed on the thread that gets the result. Destroying it makes the thread stop soon and waits
// for that; the result then never comes. The file's position is neither used nor moved, so that the file can be sent
// at the same time.
#pragma once

#include "core/CompletionGate.h"
#include "core/Result.h"

#include <QByteArray>
#include <QFile>

#include <atomic>
#include <functional>
#include <memory>
#include <thread>

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
    std::atomic_bool isStopped_{false};
    std::thread thread_;
};

} // namespace quenby
