// The status item's life: it appears with the first complete account summary, follows the summary and the upload by a
// cycle of its own, and moves along when a tray comes or goes.
//
// Threads: the main thread. Whatever is handed to the constructor outlives this, except for the place where the item is
// shown: the hosts still look at the item's face, so they are destroyed before this is. The places are told to paint
// only when something looks different from before.
#pragma once

#include "app/statusitem/StatusItemLook.h"
#include "app/statusitem/StatusItemView.h"
#include "platform/StatusItemHost.h"

#include <QIcon>
#include <QObject>
#include <QPointer>
#include <QStringView>

#include <memory>
#include <optional>

class QMenu;

namespace quenby {

class Defaults;
class StatusItemInputs;
class TimeSource;
class Timer;

class StatusItem : public QObject {
    Q_OBJECT

public:
    StatusItem(StatusItemHosts& hosts, const Defaults& defaults, const StatusItemInputs& inputs,
               std::shared_ptr<TimeSource> timeSource, QMenu& statusMenu, QIcon applicationIcon);
    ~StatusItem() override;

    // Sizes and redraws the item, and makes it when it is time. "y": once. "n": again and again from now on, every half
    // second while an upload is in progress and every four seconds otherwise.
    void createAndSetIconOfStatusBarIsInstant(QStringView isInstant);
    // The popover opened or closed, or a setting changed: the item's size stays.
    void redisplay();
    // Opens the status menu there.
    void statusItemRightClicked(const QPoint& position);

    // Null until the first complete summary.
    const StatusItemView* view() const { return view_.get(); }
    // Where the item is on the screen; empty where that is not known.
    QRect geometry() const;

Q_SIGNALS:
    // The place was told to show the item, or to paint it again.
    void displayed(bool isFirst);
    void statusItemClicked();
    void statusItemMiddleClicked();
    // Files are being dragged over the item: time to bring the workspace window to the front.
    void dragEntered();
    // To be uploaded: all that was dropped, folders included.
    void filesDropped(const QList<QByteArray>& paths);

private:
    void followHost();
    void settingChanged(const QString& key);
    void setDrag(bool drag);
    void dropped(const QList<QByteArray>& paths);
    void fillIn();
    unsigned gaugeValue(const QString& getBytesUsed);
    QString toolTip() const;
    void show();
    StatusItemLook seen() const;
    void refreshSoon();
    void scheduleNextRound();

    StatusItemHosts& hosts_;
    const Defaults& defaults_;
    const StatusItemInputs& inputs_;
    const std::shared_ptr<TimeSource> timeSource_;
    QMenu& statusMenu_;
    const QIcon applicationIcon_;
    std::unique_ptr<StatusItemView> view_;
    QPointer<StatusItemHost> host_;
    bool drag_ = false;
    std::optional<StatusItemLook> shown_; // nothing before the host was told to show
    std::unique_ptr<Timer> round_;
    std::unique_ptr<Timer> soon_;
};

} // namespace quenby
