#include "app/uploads/FailureAlerts.h"

#include <algorithm>

namespace quenby {
namespace {

constexpr qsizetype mostDetails = 200;

} // namespace

FailureAlerts::FailureAlerts(Alerts& alerts, WindowProvider window)
    : alerts_(alerts)
    , window_(std::move(window)) {}

void FailureAlerts::tell(const QString& title, const QString& info, const QString& detail) {
    auto same = std::find_if(pending_.begin(), pending_.end(),
                             [&title](const Pending& pending) { return pending.title == title; });
    if (same == pending_.end())
        same = pending_.insert(pending_.end(), Pending{title, {}, {}});
    if (!same->infos.contains(info))
        same->infos.append(info);
    if (!detail.isEmpty() && same->details.size() < mostDetails)
        same->details.append(detail);
    else if (!detail.isEmpty())
        ++same->omitted;
    if (!isOpen_)
        showNext();
}

void FailureAlerts::showNext() {
    if (pending_.empty())
        return;
    Pending pending = std::move(pending_.front());
    pending_.pop_front();
    if (pending.omitted > 0)
        pending.details.append(QStringLiteral("and %1 more").arg(pending.omitted));
    Alert alert;
    alert.messageText = pending.title;
    alert.informativeText = pending.infos.join(QLatin1Char('\n'));
    alert.details = pending.details.join(QLatin1Char('\n'));
    isOpen_ = true;
    alerts_.show(window_(), alert, this, [this](int) {
        isOpen_ = false;
        showNext();
    });
}

} // namespace quenby
