// The popover in the program: made when it is first wanted, filled from the change feed and the account, and opened
// under the status item.
//
// Threads: the main thread. What it is given outlives it.
#pragma once

#include "core/Endpoints.h"
#include "core/PageOpenRecord.h"
#include "core/TimeSource.h"
#include "popover/window/PopoverWindow.h"

#include <QObject>

#include <memory>

namespace quenby {

class ChangeFeed;
class Defaults;
class GearMenu;
class RowPictures;
class ScrollView;
class StatusItemInputs;
class StatusMenus;

class ChangesPopover : public QObject {
    Q_OBJECT

public:
    struct Surroundings {
        const ChangeFeed& feed;
        RowPictures& pictures;
        const StatusItemInputs& inputs;
        StatusMenus& menus;
        Defaults& defaults;
        Endpoints endpoints;
        std::shared_ptr<TimeSource> timeSource;
    };

    explicit ChangesPopover(const Surroundings& surroundings);
    ~ChangesPopover() override;

    bool isVisible() const;
    // The anchor is where the status item is on the screen; empty where nobody knows.
    void open(const QRect& anchor);
    void close();
    // A second click on the item closes what the first one opened.
    void toggle(const QRect& anchor);

    // The feed's list, or the text that stands in for it.
    void reloadMenubarData();
    void setAccount(const AccountDisplay& account);

Q_SIGNALS:
    void visibleChanged(bool isVisible);
    void openRequested(const quenby::PageOpenRecord& page);
    void shareRequested(const QString& identifier, const QString& title);
    void filesDropped(const QList<QByteArray>& paths);

private:
    void make();

    const Surroundings surroundings_;
    AccountDisplay account_;
    std::unique_ptr<GearMenu> gearMenu_;
    ScrollView* tableViewChanges_ = nullptr; // the window's
    std::unique_ptr<PopoverWindow> popoverWindow_;
};

} // namespace quenby
