// A thread with an event loop and an object on it, on which callbacks may be delivered.
#pragma once

#include "core/Mailbox.h"

#include <QThread>

#include <future>

namespace quenby::testing {

class DelegateQueue {
public:
    DelegateQueue() {
        object_->moveToThread(&thread_);
        mailbox_ = Mailbox::forContext(object_);
        QObject::connect(&thread_, &QThread::finished, object_, &QObject::deleteLater);
        thread_.start();
    }
    ~DelegateQueue() {
        mailbox_.reset(); // while its thread can still delete it
        thread_.quit();
        thread_.wait();
    }
    QObject* object() const { return object_; }
    QThread* thread() { return &thread_; }
    void waitUntilIdle() {
        std::promise<void> reached;
        mailbox_->post([&reached] { reached.set_value(); });
        reached.get_future().wait();
    }

private:
    QThread thread_;
    QObject* object_ = new QObject;
    std::shared_ptr<Mailbox> mailbox_;
};

} // namespace quenby::testing
