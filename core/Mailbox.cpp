#include "core/Mailbox.h"

#include <QCoreApplication>
#include <QEvent>
#include <QThread>
#include <QVariant>

namespace quenby {
namespace {

// Where a context keeps the box that is shared. Only the context's own thread may look.
constexpr char sharedBoxProperty[] = "quenbyMailbox";

} // namespace

Mailbox::Resident::~Resident() {
    const std::lock_guard lock(box_->mutex_);
    if (place_ == nowhere)
        return;
    box_->residents_[place_] = nullptr;
    box_->freePlaces_.push_back(place_);
}

void Mailbox::Resident::moveIn() {
    const std::lock_guard lock(box_->mutex_);
    if (box_->freePlaces_.empty()) {
        place_ = box_->residents_.size();
        box_->residents_.push_back(this);
    } else {
        place_ = box_->freePlaces_.back();
        box_->freePlaces_.pop_back();
        box_->residents_[place_] = this;
    }
}

std::shared_ptr<Mailbox> Mailbox::forContext(QObject* context) {
    if (context->thread() != QThread::currentThread())
        return forContext(context, nullptr);
    const auto known = context->property(sharedBoxProperty).value<std::weak_ptr<Mailbox>>().lock();
    if (known && known->thread() == context->thread())
        return known;
    auto box = forContext(context, nullptr);
    context->setProperty(sharedBoxProperty, QVariant::fromValue(std::weak_ptr(box)));
    return box;
}

std::shared_ptr<Mailbox> Mailbox::forContext(QObject* context, std::function<void()> onClosed) {
    // Always deleteLater: the last reference often falls while the box is running what was posted.
    const std::shared_ptr<Mailbox> box(new Mailbox, [](Mailbox* mailbox) {
        mailbox->isHandedOver_.store(true, std::memory_order_release);
        mailbox->deleteLater();
    });
    box->onClosed_ = std::move(onClosed);
    box->moveToThread(context->thread());
    box->isHandedOver_.store(true, std::memory_order_release);
    connect(context, &QObject::destroyed, box.get(), &Mailbox::close, Qt::DirectConnection);
    return box;
}

void Mailbox::post(std::function<void()> function) {
    {
        const std::lock_guard lock(mutex_);
        if (isClosed_)
            return;
        if (posted_.isEmpty())
            keptAlive_ = shared_from_this();
        posted_.append(std::move(function));
    }
    QCoreApplication::postEvent(this, new QEvent(QEvent::User));
}

void Mailbox::close() {
    (void)isHandedOver_.load(std::memory_order_acquire);
    // Let go after the lock: a capture's destructor may do anything.
    QList<std::function<void()>> dropped;
    std::vector<std::shared_ptr<Resident>> residents;
    std::function<void()> onClosed;
    std::shared_ptr<Mailbox> self;
    {
        const std::lock_guard lock(mutex_);
        isClosed_ = true;
        dropped.swap(posted_);
        onClosed.swap(onClosed_);
        self.swap(keptAlive_);
        for (Resident* resident : residents_) {
            if (auto living = resident ? resident->weak_from_this().lock() : nullptr)
                residents.push_back(std::move(living));
        }
    }
    for (const auto& resident : residents)
        resident->boxDidClose();
    if (onClosed)
        onClosed();
}

// One function for each event, so that a function which runs an event loop of its own holds up none behind it.
bool Mailbox::event(QEvent* event) {
    (void)isHandedOver_.load(std::memory_order_acquire);
    if (event->type() != QEvent::User)
        return QObject::event(event);
    std::function<void()> function;
    std::shared_ptr<Mailbox> self;
    {
        const std::lock_guard lock(mutex_);
        if (posted_.isEmpty())
            return true; // closed meanwhile
        function = posted_.takeFirst();
        if (posted_.isEmpty())
            self.swap(keptAlive_);
    }
    function();
    return true;
}

} // namespace quenby
