#include "core/Mailbox.h"

#include <QCoreApplication>
#include <QEvent>

namespace quenby {

std::shared_ptr<Mailbox> Mailbox::forContext(QObject* context, std::function<void()> onClosed) {
    // Always deleteLater: the last reference often falls while the box is running what was posted.
    const std::shared_ptr<Mailbox> box(new Mailbox, [](Mailbox* mailbox) { mailbox->deleteLater(); });
    box->onClosed_ = std::move(onClosed);
    box->moveToThread(context->thread());
    box->isPublished_.store(true, std::memory_order_release);
    connect(context, &QObject::destroyed, box.get(), &Mailbox::close, Qt::DirectConnection);
    return box;
}

void Mailbox::post(std::function<void()> function) {
    {
        const std::lock_guard lock(mutex_);
        if (isClosed_)
            return;
        posted_.push_back(std::move(function));
        if (posted_.size() > 1)
            return; // an event is on its way
        keptAlive_ = shared_from_this();
    }
    QCoreApplication::postEvent(this, new QEvent(QEvent::User));
}

void Mailbox::close() {
    (void)isPublished_.load(std::memory_order_acquire);
    std::vector<std::function<void()>> dropped; // destroyed after the lock: a capture's destructor may do anything
    std::function<void()> onClosed;
    std::shared_ptr<Mailbox> self;
    {
        const std::lock_guard lock(mutex_);
        isClosed_ = true;
        dropped.swap(posted_);
        onClosed.swap(onClosed_);
        self.swap(keptAlive_);
    }
    if (onClosed)
        onClosed();
}

bool Mailbox::event(QEvent* event) {
    (void)isPublished_.load(std::memory_order_acquire);
    if (event->type() != QEvent::User)
        return QObject::event(event);
    std::vector<std::function<void()>> running;
    std::shared_ptr<Mailbox> self;
    {
        const std::lock_guard lock(mutex_);
        running.swap(posted_);
        self.swap(keptAlive_);
    }
    for (const auto& function : running) {
        function();
        const std::lock_guard lock(mutex_);
        if (isClosed_)
            break; // the context died in a function of its own
    }
    return true;
}

} // namespace quenby
