// A row of the media framework's elements with what happens in it brought to one thread.
//
// Threads: made, used and destroyed on one thread, which has an event loop; elements work on threads of their own.
#pragma once

#include "core/Mailbox.h"
#include "core/Result.h"
#include "platform/linux/media/engine/GstHandles.h"

#include <QByteArray>

#include <atomic>
#include <functional>
#include <memory>

namespace quenby {

struct PipelineReport {
    enum class Kind { failed, ended };

    Kind kind = Kind::failed;
    QByteArray part; // where it happened
    QString text;    // of the framework, for logs and details
    bool isDiskFull = false;
};

class Pipeline {
public:
    // On the thread that made the pipeline, and never after it was destroyed.
    using Told = std::function<void(const PipelineReport& report)>;

    explicit Pipeline(Told told);
    // Stops it.
    ~Pipeline();
    Pipeline(const Pipeline&) = delete;
    Pipeline& operator=(const Pipeline&) = delete;

    // Appends a part, one element or several in a row, and links it to the one before. Fails with a sentence.
    Result<void> append(const char* part, const QByteArray& description);
    // The element that bears this name in its description; it stays the pipeline's.
    GstElement* element(const char* name) const;
    // Of the part: where it takes in what the one before it gives out, and where it gives out.
    GstHandle<GstPad> input(const char* part) const;
    GstHandle<GstPad> output(const char* part) const;

    // False when it refused at once; a report may tell more.
    bool start();
    void stop();
    // Lets what has no input end. The report comes when the end has gone through all.
    void sendEnd();

    // Errors that the X server reports to the threads of this pipeline set it; they end nothing else.
    const std::atomic<bool>& hasXError() const { return *xError_; }
    // As if an element had failed; from any thread.
    void postFailure(const char* part, const QString& text);

private:
    static GstBusSyncReply messageCame(GstBus* bus, GstMessage* message, gpointer self);
    QByteArray partOf(GstObject* element) const;
    void report(GstMessage* message);

    GstHandle<GstElement> pipeline_;
    GstElement* last_ = nullptr;
    const std::shared_ptr<std::atomic<bool>> xError_ = std::make_shared<std::atomic<bool>>(false);
    QObject context_; // its end is the end of the reports
    const std::shared_ptr<Mailbox> box_;
    const Told told_;
};

} // namespace quenby
