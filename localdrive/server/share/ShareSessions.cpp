#include "localdrive/server/share/ShareSessions.h"

#include "localdrive/server/http/HttpMessages.h"

#include <algorithm>

namespace quenby::localdrive {
namespace {

constexpr qsizetype mostDialogs = 256;

} // namespace

QByteArray ShareSessions::open(ShareSession session) {
    const QByteArray key = randomSecret();
    const std::lock_guard lock(mutex_);
    if (entries_.size() == mostDialogs)
        entries_.removeFirst();
    entries_.append({key, std::move(session)});
    return key;
}

std::optional<ShareSession> ShareSessions::find(const QByteArray& key) const {
    const std::lock_guard lock(mutex_);
    const auto found = std::find_if(entries_.begin(), entries_.end(),
                                    [&key](const Entry& entry) { return equalSecrets(entry.key, key); });
    return found == entries_.end() ? std::nullopt : std::optional(found->session);
}

} // namespace quenby::localdrive
