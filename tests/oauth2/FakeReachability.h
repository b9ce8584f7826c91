// A network that comes and goes when the test says so.
#pragma once

#include "oauth2/HostReachability.h"

#include <utility>

namespace quenby::testing {

class FakeReachability final : public HostReachability {
public:
    std::unique_ptr<Watch> watchHost(const QString& host, Changed changed) override {
        host_ = host;
        changed_ = std::move(changed);
        return std::make_unique<FakeWatch>(*this);
    }
    void change(bool isReachable) { changed_(isReachable); }
    bool isWatched() const { return changed_ != nullptr; }
    const QString& host() const { return host_; }

private:
    class FakeWatch final : public Watch {
    public:
        explicit FakeWatch(FakeReachability& owner)
            : owner_(owner) {}
        ~FakeWatch() override { owner_.changed_ = nullptr; }

    private:
        FakeReachability& owner_;
    };

    QString host_;
    Changed changed_;
};

} // namespace quenby::testing
