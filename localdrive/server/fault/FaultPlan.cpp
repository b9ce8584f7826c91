#include "localdrive/server/fault/FaultPlan.h"

#include <algorithm>

namespace quenby::localdrive {

Result<void> FaultPlan::add(const QJsonArray& rules) {
    std::vector<Entry> added;
    for (const QJsonValue& value : rules) {
        auto rule = FaultRule::parse(value.toObject());
        if (!rule)
            return rule.error();
        added.push_back({std::move(*rule)});
    }
    const std::lock_guard lock(mutex_);
    std::move(added.begin(), added.end(), std::back_inserter(entries_));
    return {};
}

void FaultPlan::clear() {
    const std::lock_guard lock(mutex_);
    entries_.clear();
}

QJsonArray FaultPlan::toJson() const {
    const std::lock_guard lock(mutex_);
    QJsonArray rules;
    for (const Entry& entry : entries_) {
        QJsonObject rule = entry.rule.source;
        rule.insert(QStringLiteral("struck"), entry.struck);
        rules.append(rule);
    }
    return rules;
}

bool FaultPlan::isEmpty() const {
    const std::lock_guard lock(mutex_);
    return entries_.empty();
}

std::optional<FaultAction> FaultPlan::strike(const RequestFacts& request) {
    const std::lock_guard lock(mutex_);
    for (auto entry = entries_.begin(); entry != entries_.end(); ++entry) {
        if (!entry->rule.match.covers(request) || entry->seen++ < entry->rule.skip)
            continue;
        ++entry->struck;
        FaultAction action = entry->rule.action;
        if (entry->isSpent())
            entries_.erase(entry);
        return action;
    }
    return std::nullopt;
}

} // namespace quenby::localdrive
