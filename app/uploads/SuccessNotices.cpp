#include "app/uploads/SuccessNotices.h"

#include "platform/Notifications.h"
#include "platform/Opener.h"
#include "platform/Pasteboard.h"

namespace quenby {
namespace {

using namespace std::chrono_literals;

constexpr size_t mostAlone = 8; // notices of their own
constexpr auto burstTime = 5s;  // within this time
constexpr auto replacePause = 1s;
constexpr size_t mostLinks = 200; // for services that never say that a notification is gone

const QString showKey = QStringLiteral("show");
const QString copyKey = QStringLiteral("copy");
const QString clickKey = QStringLiteral("default");

QList<NotificationAction> linkActions() {
    const QString show = QStringLiteral("Show in Drive");
    return {{clickKey, show}, {showKey, show}, {copyKey, QStringLiteral("Copy Link")}};
}

} // namespace

SuccessNotices::SuccessNotices(Notifications& notifications, Pasteboard& pasteboard, Opener& opener,
                               std::shared_ptr<TimeSource> timeSource)
    : notifications_(notifications)
    , pasteboard_(pasteboard)
    , opener_(opener)
    , timeSource_(std::move(timeSource)) {
    connect(&notifications_, &Notifications::actionInvoked, this, &SuccessNotices::invoke);
    connect(&notifications_, &Notifications::closed, this, [this](quint64 identifier) { links_.erase(identifier); });
}

SuccessNotices::~SuccessNotices() = default;

void SuccessNotices::tell(const QString& title, const QString& text, const QString& link) {
    if (!isBurst()) {
        endBurst();
        return post({title, text, link}, {});
    }
    latest_ = {title, text, link};
    ++sharing_;
    if (!pause_)
        postShared();
}

bool SuccessNotices::isBurst() {
    const auto now = timeSource_->elapsed();
    recent_.push_back(now);
    if (recent_.size() > mostAlone + 1)
        recent_.pop_front();
    return recent_.size() > mostAlone && now - recent_.front() < burstTime;
}

void SuccessNotices::postShared() {
    Notice notice = latest_;
    if (sharing_ > 1)
        notice.text += QStringLiteral("\nand %1 more").arg(sharing_ - 1);
    post(notice, QStringLiteral("uploads-%1").arg(burst_));
    shown_ = sharing_;
    pause_ = timeSource_->startTimer(replacePause, [this] {
        pause_.reset();
        if (shown_ != sharing_)
            postShared();
    });
}

void SuccessNotices::endBurst() {
    if (sharing_ == 0)
        return;
    if (shown_ != sharing_)
        postShared();
    pause_.reset();
    sharing_ = shown_ = 0;
    ++burst_;
}

void SuccessNotices::post(const Notice& notice, const QString& tag) {
    Notification notification;
    notification.tag = tag;
    notification.title = notice.title;
    notification.text = QStringLiteral(" \n ") + notice.text;
    if (!notice.link.isEmpty())
        notification.actions = linkActions();
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
    if ((key != showKey && key != clickKey) || opener_.openURL(QUrl(link)))
        return;
    pasteboard_.setText(link);
    post({QStringLiteral("The page could not be opened"), QStringLiteral("Its address was copied instead."), {}}, {});
}

} // namespace quenby
