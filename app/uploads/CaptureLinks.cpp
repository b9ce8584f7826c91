#include "app/uploads/CaptureLinks.h"

#include "app/uploads/FailureAlerts.h"
#include "app/uploads/UploadRequest.h"
#include "core/DefaultsKeys.h"
#include "driveapi/GTLQueryDrive.h"
#include "driveapi/GTLServiceDrive.h"
#include "platform/Defaults.h"
#include "platform/Notifications.h"
#include "platform/Opener.h"
#include "platform/Pasteboard.h"

#include <utility>

namespace quenby {
namespace {

using namespace std::chrono_literals;

constexpr auto burstTime = 5s;
constexpr auto replacePause = 1s;
constexpr size_t mostTold = 50; // for services that never say that a notification is gone

const QString showKey = QStringLiteral("show");
const QString undoKey = QStringLiteral("undo");
const QString title = QStringLiteral("Quenby New Update!");

QString textOn(const Pasteboard& pasteboard) {
    return pasteboard.contents() == PasteboardContents::text ? pasteboard.text() : QString();
}

} // namespace

// Files of one batch on their way into the trash.
struct CaptureLinks::Trashing {
    qsizetype unanswered = 0;
    QStringList moved; // names
};

CaptureLinks::CaptureLinks(CaptureLinkServices services, QObject* parent)
    : QObject(parent)
    , services_(std::move(services)) {
    connect(&services_.notifications, &Notifications::actionInvoked, this, &CaptureLinks::invoke);
    connect(&services_.notifications, &Notifications::closed, this,
            [this](quint64 identifier) { told_.erase(identifier); });
}

bool CaptureLinks::captured(const UploadRequest& request, const UploadRun::Outcome& outcome) {
    if (!request.isCapture || outcome.alternateLink.isEmpty() ||
        !services_.defaults.boolForKey(defaultsKey::captureToLink, true))
        return false;
    const auto now = services_.timeSource->elapsed();
    if (now - latestAt_ >= burstTime)
        latest_ = {};
    latestAt_ = now;
    copyLink(outcome.alternateLink);
    latest_.files.append({outcome.identifier, nameForPeople(request.path)});
    tellSoon();
    return true;
}

void CaptureLinks::forget() {
    pause_.reset();
    latest_ = {};
    isTold_ = true;
    for (const auto& [identifier, batch] : std::exchange(told_, {}))
        services_.notifications.withdraw(identifier);
}

void CaptureLinks::copyLink(const QString& link) {
    Pasteboard& pasteboard = services_.pasteboard;
    const QString text = textOn(pasteboard);
    if (latest_.files.isEmpty()) {
        latest_ = {.tag = QStringLiteral("captures-%1").arg(++batches_), .files = {}, .link = {}, .textBefore = text};
        shown_ = 0;
    } else if (text != latest_.link) { // copied since then
        latest_.textBefore = text;
    }
    latest_.link = link;
    pasteboard.setText(link);
}

void CaptureLinks::tellSoon() {
    isTold_ = false;
    if (!pause_)
        tell();
}

void CaptureLinks::tell() {
    isTold_ = true;
    pause_ = services_.timeSource->startTimer(replacePause, [this] {
        pause_.reset();
        if (!isTold_ && !latest_.files.isEmpty())
            tell();
    });
    if (!services_.defaults.boolForKey(defaultsKey::notificationDisplay, true))
        return;
    const qsizetype count = latest_.files.size();
    const QString text = count == 1 ? tr("%1 added\nIts link is on the clipboard").arg(latest_.files.first().name)
                                    : tr("%1 captures added\nThe link of the last one is on the clipboard").arg(count);
    Notification notification;
    notification.tag = latest_.tag;
    notification.title = title;
    notification.text = QStringLiteral(" \n ") + text;
    notification.actions = {{showKey, tr("Show in Drive")}, {undoKey, tr("Undo")}};
    notification.clickKey = showKey;
    const quint64 identifier = services_.notifications.post(notification);
    if (identifier == 0)
        return;
    told_.erase(std::exchange(shown_, identifier));
    told_[identifier] = latest_;
    if (told_.size() > mostTold)
        told_.erase(told_.begin());
}

void CaptureLinks::invoke(quint64 identifier, const QString& key) {
    const auto found = told_.find(identifier);
    if (found == told_.end())
        return;
    const Batch batch = found->second;
    if (key == showKey) {
        show(batch.link);
    } else if (key == undoKey) {
        told_.erase(found); // once
        undo(batch);
    }
}

void CaptureLinks::show(const QString& link) {
    if (services_.opener.openURL(QUrl(link)))
        return;
    services_.pasteboard.setText(link);
    post(tr("The page could not be opened. Its address is on the clipboard."));
}

void CaptureLinks::undo(const Batch& undone) {
    if (textOn(services_.pasteboard) == undone.link)
        services_.pasteboard.setText(undone.textBefore);
    // What came so shortly before the click that it was not told yet stays.
    if (latest_.tag == undone.tag)
        latest_.files.remove(0, undone.files.size());
    moveToTrash(undone.files);
}

void CaptureLinks::moveToTrash(const QList<File>& files) {
    const auto service = services_.driveService();
    if (!service) {
        services_.failures.tell(tr("Error"), tr("A capture could not be moved to the trash"),
                                tr("No user is signed in."));
        return;
    }
    const auto trashing = std::make_shared<Trashing>();
    trashing->unanswered = files.size();
    for (const File& file : files)
        service->executeQuery(GTLQueryDrive::queryForFilesTrashWithFileId(file.identifier), this,
                              [this, trashing, file](const GTLServiceTicketPtr&, const GTLObjectPtr&,
                                                     const MaybeError& error) { trashed(*trashing, file, error); });
}

void CaptureLinks::trashed(Trashing& trashing, const File& file, const MaybeError& error) {
    if (error) {
        services_.failures.tell(tr("Error"), tr("A capture could not be moved to the trash"),
                                file.name + QStringLiteral(": ") + error->description());
    } else {
        trashing.moved.append(file.name);
        Q_EMIT movedToTrash(file.identifier);
    }
    if (--trashing.unanswered > 0 || trashing.moved.isEmpty())
        return;
    const qsizetype count = trashing.moved.size();
    post(count == 1 ? tr("%1 was moved to the trash").arg(trashing.moved.first())
                    : tr("%1 captures were moved to the trash").arg(count));
}

void CaptureLinks::post(const QString& text) {
    if (!services_.defaults.boolForKey(defaultsKey::notificationDisplay, true))
        return;
    Notification notification;
    notification.title = title;
    notification.text = QStringLiteral(" \n ") + text;
    services_.notifications.post(notification);
}

} // namespace quenby
