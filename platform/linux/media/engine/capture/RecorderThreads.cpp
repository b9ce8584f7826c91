#include "platform/linux/media/engine/capture/RecorderThreads.h"

#include "platform/linux/media/engine/capture/CaptureLog.h"

namespace quenby {
namespace {

constexpr std::chrono::seconds longestWait(10);

}

RecorderThreads::~RecorderThreads() {
    for (auto& thread : threads_) {
        if (thread->wait(QDeadlineTimer(longestWait)))
            continue;
        // A disk that hangs. What is written stays under its hidden name.
        qCWarning(captureLog, "a recording does not come to its end; it is not waited for");
        static_cast<void>(thread.release());
    }
}

Recorder* RecorderThreads::add(const CaptureOptions& options) {
    auto* const recorder = new Recorder(options);
    auto* const thread = threads_.emplace_back(std::make_unique<QThread>()).get();
    thread->setObjectName(QStringLiteral("recorder"));
    recorder->moveToThread(thread);
    QObject::connect(recorder, &Recorder::idle, thread, &QThread::quit, Qt::DirectConnection);
    QObject::connect(thread, &QThread::finished, recorder, &QObject::deleteLater);
    QObject::connect(thread, &QThread::finished, &context_, [this, thread] { remove(thread); });
    thread->start();
    return recorder;
}

void RecorderThreads::remove(QThread* thread) {
    thread->wait();
    std::erase_if(threads_, [thread](const auto& each) { return each.get() == thread; });
}

} // namespace quenby
