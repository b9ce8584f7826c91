#pragma once

#include "platform/SleepInhibitor.h"

#include <QStringList>

namespace quenby {

class FakeSleepInhibitor final : public SleepInhibitor {
public:
    std::unique_ptr<Hold> hold(const QString& reason) override {
        reasons_->append(reason);
        return std::make_unique<FakeHold>(reasons_, reason);
    }
    // Of those that hold at this moment.
    QStringList reasons() const { return *reasons_; }

private:
    class FakeHold final : public Hold {
    public:
        FakeHold(std::shared_ptr<QStringList> reasons, QString reason)
            : reasons_(std::move(reasons))
            , reason_(std::move(reason)) {}
        ~FakeHold() override { reasons_->removeOne(reason_); }

    private:
        std::shared_ptr<QStringList> reasons_;
        QString reason_;
    };

    std::shared_ptr<QStringList> reasons_ = std::make_shared<QStringList>();
};

} // namespace quenby
