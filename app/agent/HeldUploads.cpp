#include "app/agent/HeldUploads.h"

namespace quenby {

void HeldUploads::hold(const QString& account, const QList<QByteArray>& lines) {
    if (!lines.isEmpty())
        lines_[account] += lines;
}

QList<QByteArray> HeldUploads::take(const QString& account) {
    const auto found = lines_.extract(account);
    return found.empty() ? QList<QByteArray>() : found.mapped();
}

QStringList HeldUploads::accounts() const {
    QStringList accounts;
    for (const auto& [account, lines] : lines_)
        accounts.append(account);
    return accounts;
}

QList<QByteArray> HeldUploads::of(const QString& account) const {
    const auto found = lines_.find(account);
    return found == lines_.end() ? QList<QByteArray>() : found->second;
}

QList<QByteArray> HeldUploads::all() const {
    QList<QByteArray> all;
    for (const auto& [account, lines] : lines_)
        all += lines;
    return all;
}

qsizetype HeldUploads::count() const {
    qsizetype count = 0;
    for (const auto& [account, lines] : lines_)
        count += lines.size();
    return count;
}

} // namespace quenby
