// One instance among others that a test plays.
#pragma once

#include "platform/SingleInstance.h"

namespace quenby::testing {

class FakeSingleInstance final : public SingleInstance {
public:
    void setHandover(std::function<Handover()> handover) override { handover_ = std::move(handover); }

    void acquire(QObject* context, Acquired acquired) override {
        gate_ = CompletionGate<Handover>(context, std::move(acquired));
        ++acquisitions_;
        if (!isHeld_)
            gate_.deliver(inheritance_);
    }

    // What an older instance leaves to this one.
    void setInheritance(const Handover& inheritance) { inheritance_ = inheritance; }
    // The older instance takes its time, until release().
    void hold() { isHeld_ = true; }
    void release() {
        isHeld_ = false;
        gate_.deliver(inheritance_);
    }
    int acquisitions() const { return acquisitions_; }

    // A newer instance asks this one to end; answers what it would get.
    Handover playNewerInstance() {
        const Handover left = handover_ ? std::exchange(handover_, nullptr)() : Handover();
        Q_EMIT endRequested();
        return left;
    }

private:
    std::function<Handover()> handover_;
    CompletionGate<Handover> gate_;
    Handover inheritance_;
    bool isHeld_ = false;
    int acquisitions_ = 0;
};

} // namespace quenby::testing
