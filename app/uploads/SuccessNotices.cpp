#include "app/uploads/SuccessNotices.h"

#include "platform/Notifications.h"
#include "platform/Opener.h"
#include "platform/Pasteboard.h"

namespace quenby {
namespace {

constexpr size_t mostAlone = 8;   // notices of their own
constexpr size_t mostLinks = 200; // for services that never say that a notification is gone

const QString showKey = QStringLiteral("show");
const QString copyKey = QStringLiteral("copy");

QList<NotificationAction> linkActions() {
    return {{showKey, QStringLiteral("Show in Drive")}, {copyKey, QStringLiteral("Copy Link")}};
}

} // namespace

SuccessNotices::SuccessNotices(Notifications& notifications, Pasteboard& pasteboard, Opener& opener,
                               std::shared_ptr<TimeSource> timeSource)
    : notifications_(notifications)
    , pasteboard_(pasteboard)
    , opener_(opener)
    , burst_(QStringLiteral("uploads"), mostAlone, std::move(timeSource)) {
    connect(&notifications_, &Notifications::actionInvoked, this, &SuccessNotices::invoke);
    connect(&notifications_, &Notifications::closed, this, [this](quint64 identifier) { links_.erase(identifier); });
}

void SuccessNotices::tell(const QString& title, const QString& text, const QString& link) {
    burst_.tell([this, notice = Notice{title, text, link}](const QString& tag, const QString& more) {
        post({notice.title, notice.text + more, notice.link}, tag);
    });
}

void SuccessNotices::post(const Notice& notice, const QString& tag) {
    Notification notification;
    notification.tag = tag;
    notification.title = notice.title;
    notification.text = QStringLiteral(" \n ") + notice.text;
    if (!notice.link.isEmpty()) {
        notification.actions = linkActions();
        notification.clickKey = showKey;
    }
    const quint64 identifier = notifications_.post(notification);
    if (identifier == 0 || notice.link.isEmpty())
        return;
    links_[identifier] = notice.link;
    if (links_.size() > mostLinks)
        links_.erase(links_.begin());
}

void SuccessNotices::invoke(quint64 identifier, const QString& key) {
    const auto found = links_.find(identifier);
    if (found == links_.end())
        return;
    const QString link = found->second;
    if (key == copyKey)
        return pasteboard_.setText(link);
    if (key != showKey || opener_.openURL(QUrl(link)))
        return;
    pasteboard_.setText(link);
    post({QStringLiteral("The page could not be opened"), QStringLiteral("Its address was copied instead."), {}}, {});
}

} // namespace quenby
