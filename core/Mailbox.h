// Hands functions over to an object's thread. They run there through the event loop, in the order in which they were
// posted, and not after the object died.
//
// The hand-over goes through a mutex of our own, not through captures that the event queue copies: so a thread
// sanitizer, to which the toolkit's own locks are invisible, sees every hand-over and can be believed elsewhere.
#pragma once

#include <QList>
#include <QObject>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace quenby {

// Lives on the thread of the context that it was made for; shared by whoever posts. What was posted keeps the box
// alive until it has run or the context died. post() may be called from any thread.
class Mailbox final : public QObject, public std::enable_shared_from_this<Mailbox> {
    Q_OBJECT

public:
    // Ends with the context of its box. It knows its box, and the box knows it as long as it lives.
    class Resident : public std::enable_shared_from_this<Resident> {
    public:
        explicit Resident(std::shared_ptr<Mailbox> box)
            : box_(std::move(box)) {}
        virtual ~Resident();
        Resident(const Resident&) = delete;
        Resident& operator=(const Resident&) = delete;

        // Once, while the context is known to be alive, when there is a shared owner.
        void moveIn();

    protected:
        Mailbox& box() const { return *box_; }

    private:
        friend class Mailbox;
        static constexpr size_t nowhere = ~size_t(0);

        // The context dies; on its thread.
        virtual void boxDidClose() = 0;

        const std::shared_ptr<Mailbox> box_;
        size_t place_ = nowhere; // in the box's list; guarded by the box
    };

    // The context must be alive during the call, and must not be moved to another thread afterwards. Whoever asks on
    // the context's own thread shares one box with everybody else who does: ten thousand completions that wait for one
    // object need no ten thousand boxes.
    static std::shared_ptr<Mailbox> forContext(QObject* context);
    // A box of one's own. onClosed runs once, when the context dies, on its thread.
    static std::shared_ptr<Mailbox> forContext(QObject* context, std::function<void()> onClosed);

    // Dropped when the context has died.
    void post(std::function<void()> function);

protected:
    bool event(QEvent* event) override;

private:
    Mailbox() = default;
    void close();

    std::mutex mutex_; // guards all below but the last
    bool isClosed_ = false;
    QList<std::function<void()>> posted_;
    std::shared_ptr<Mailbox> keptAlive_; // itself, while something is posted
    std::vector<Resident*> residents_;   // with null where a place is free
    std::vector<size_t> freePlaces_;
    std::function<void()> onClosed_;
    // Orders the constructor before the first event on the other thread, and the last owner before the last event.
    std::atomic<bool> isHandedOver_ = false;
};

} // namespace quenby
