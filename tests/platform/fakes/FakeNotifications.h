// Notifications that nobody sees: a test reads what was posted, and clicks and closes in the user's place.
#pragma once

#include "platform/Notifications.h"

namespace quenby::testing {

class FakeNotifications final : public Notifications {
public:
    struct Posted {
        quint64 identifier;
        Notification notification;
    };

    QString unavailableBecause() const override { return unavailableBecause_; }

    quint64 post(const Notification& notification) override {
        if (!unavailableBecause_.isEmpty())
            return 0;
        if (!notification.tag.isEmpty())
            closeIf([&notification](const Posted& one) { return one.notification.tag == notification.tag; });
        posted_.append({++lastIdentifier_, notification});
        onScreen_.append(posted_.last());
        return lastIdentifier_;
    }
    void withdraw(quint64 identifier) override {
        closeIf([identifier](const Posted& one) { return one.identifier == identifier; });
    }
    bool hasButtons() const override { return hasButtons_; }

    // Everything that was ever posted, and what of it still stands there.
    const QList<Posted>& posted() const { return posted_; }
    const QList<Posted>& onScreen() const { return onScreen_; }
    quint64 lastIdentifier() const { return lastIdentifier_; }
    void forgetPosted() { posted_.clear(); }

    // The service goes (with a reason), or comes (empty).
    void setUnavailableBecause(const QString& reason) { unavailableBecause_ = reason; }
    void setHasButtons(bool hasButtons) { hasButtons_ = hasButtons; }

    // What the user does. A notification closes by itself after its action; one that is not on screen does nothing.
    void invoke(quint64 identifier, const QString& key) {
        if (!findOnScreen(identifier))
            return;
        Q_EMIT actionInvoked(identifier, key);
        userCloses(identifier);
    }
    // A click on the notification itself.
    void click(quint64 identifier) {
        const Posted* const one = findOnScreen(identifier);
        if (one && !one->notification.clickKey.isEmpty())
            invoke(identifier, QString(one->notification.clickKey));
        else
            userCloses(identifier);
    }
    void userCloses(quint64 identifier) { withdraw(identifier); }

private:
    const Posted* findOnScreen(quint64 identifier) const {
        for (const Posted& one : onScreen_) {
            if (one.identifier == identifier)
                return &one;
        }
        return nullptr;
    }

    template <typename Condition>
    void closeIf(const Condition& condition) {
        for (qsizetype i = onScreen_.size() - 1; i >= 0; --i) {
            if (!condition(onScreen_.at(i)))
                continue;
            const quint64 identifier = onScreen_.takeAt(i).identifier;
            QMetaObject::invokeMethod(
                this, [this, identifier] { Q_EMIT closed(identifier); }, Qt::QueuedConnection);
        }
    }

    QString unavailableBecause_;
    bool hasButtons_ = true;
    quint64 lastIdentifier_ = 0;
    QList<Posted> posted_;
    QList<Posted> onScreen_;
};

} // namespace quenby::testing
