// The faults that were ordered and have not struck yet.
#pragma once

#include "localdrive/server/fault/FaultRule.h"

#include <QJsonArray>

#include <mutex>
#include <optional>
#include <vector>

namespace quenby::localdrive {

// Threads: any.
class FaultPlan {
public:
    // Adds the rules behind those that are there; all of them or, when one is wrong, none.
    Result<void> add(const QJsonArray& rules);
    void clear();
    // The rules that can still strike, with "struck" added to each.
    QJsonArray toJson() const;

    bool isEmpty() const;
    // What happens to this request: the first rule that covers it and has strikes left strikes. Every rule before it
    // that covers it counts the request as one of those that it lets pass.
    std::optional<FaultAction> strike(const RequestFacts& request);

private:
    struct Entry {
        FaultRule rule;
        qint64 seen = 0;
        qint64 struck = 0;

        bool isSpent() const { return rule.times >= 0 && struck >= rule.times; }
    };

    mutable std::mutex mutex_;
    std::vector<Entry> entries_;
};

} // namespace quenby::localdrive
