// Hands functions over to an object's thread. They run there through the event loop, in the order in which they were
// posted, and not after the object died.
//
// The hand-over goes through a mutex of our own, not through captures that the event queue copies: so a thread
// sanitizer, to which the toolkit's own locks are invisible, sees every hand-over and can be believed elsewhere.
#pragma once

#include <QObject>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace quenby {

// Lives on the thread of the context that it was made for; shared by whoever posts. What was posted keeps the box
// alive until it has run or the box is closed. post() and close() may be called from any thread.
class Mailbox final : public QObject, public std::enable_shared_from_this<Mailbox> {
    Q_OBJECT

public:
    // The context must be alive during the call, and must not be moved to another thread afterwards. onClosed runs
    // once, on the thread of whoever closes the box: the context's death, or close().
    static std::shared_ptr<Mailbox> forContext(QObject* context, std::function<void()> onClosed = {});

    // Dropped when the box is closed.
    void post(std::function<void()> function);
    // Forgets what was posted and takes nothing more.
    void close();

protected:
    bool event(QEvent* event) override;

private:
    Mailbox() = default;

    std::mutex mutex_;
    bool isClosed_ = false;
    std::vector<std::function<void()>> posted_;
    std::shared_ptr<Mailbox> keptAlive_; // itself, while something is posted
    std::function<void()> onClosed_;
    std::atomic<bool> isPublished_ = false; // orders the constructor before the first event on the other thread
};

} // namespace quenby
