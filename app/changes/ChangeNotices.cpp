#include "app/changes/ChangeNotices.h"

#include "app/cli/DisplayText.h"
#include "app/uploads/UploadRequest.h"
#include "platform/Notifications.h"

namespace quenby {
namespace {

constexpr size_t mostAlone = 4;      // of one poll, that is: they come together
constexpr size_t mostOnScreen = 200; // for services that never say that a notification is gone
constexpr int mostColumns = 160;     // of the text: the title is cut in its middle, and what happened stays

const QString openKey = QStringLiteral("open");
const QString shareKey = QStringLiteral("share");

// Of a file, or of the summary of deletions, which is one thing as well.
QString tagOf(const ChangeRecord& record) {
    const QString subject = record.isDeletionSummary() ? QStringLiteral("deletions") : record.identifier;
    return subject.isEmpty() ? QString() : QStringLiteral("change-") + subject;
}

} // namespace

ChangeNotices::ChangeNotices(Notifications& notifications, std::shared_ptr<TimeSource> timeSource)
    : notifications_(notifications)
    , burst_(QStringLiteral("changes"), mostAlone, std::move(timeSource)) {
    connect(&notifications_, &Notifications::actionInvoked, this, &ChangeNotices::invoke);
    connect(&notifications_, &Notifications::closed, this, [this](quint64 identifier) { records_.erase(identifier); });
}

void ChangeNotices::tell(const ChangeNotice& notice) {
    burst_.tell([this, notice](const QString& tag, const QString& more) { post(notice, tag, more); });
}

void ChangeNotices::clear() {
    burst_.clear();
    for (const auto& [identifier, record] : std::exchange(records_, {}))
        notifications_.withdraw(identifier);
}

void ChangeNotices::post(const ChangeNotice& notice, const QString& burstTag, const QString& more) {
    Notification notification;
    notification.tag = burstTag.isEmpty() ? tagOf(notice.record) : burstTag;
    notification.title = QStringLiteral("Quenby New Update!");
    notification.text = QStringLiteral(" \n ") + elidedInTheMiddle(textForPeople(notice.text), mostColumns) + more;
    if (!notice.record.share.isEmpty()) {
        notification.actions = {{openKey, QStringLiteral("Open")}, {shareKey, QStringLiteral("Share")}};
        notification.clickKey = openKey;
    }
    const quint64 identifier = notifications_.post(notification);
    if (identifier == 0)
        return;
    records_[identifier] = notice.record;
    if (records_.size() > mostOnScreen)
        records_.erase(records_.begin());
}

void ChangeNotices::invoke(quint64 identifier, const QString& key) {
    const auto found = records_.find(identifier);
    if (found == records_.end() || found->second.share.isEmpty())
        return;
    const ChangeRecord record = found->second; // who hears of it may sign out
    if (key == openKey)
        Q_EMIT openRequested(record);
    else if (key == shareKey)
        Q_EMIT shareRequested(record.identifier, record.title);
}

} // namespace quenby
