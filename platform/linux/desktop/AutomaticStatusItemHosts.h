// Chooses the place of the status item: a tray where there is one, else the strip; and again when a tray comes or goes,
// or the user chooses another place.
#pragma once

#include "core/TimeSource.h"
#include "platform/StatusItemHost.h"
#include "platform/linux/desktop/TrayWatch.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace quenby {

struct StatusItemHostsOptions {
    // Absent: whatever there is. The tray: there is no host before the first tray comes.
    std::optional<StatusItemPlace> place;
    // While the session starts, or a panel starts anew, a tray is given this long to come before the strip is used.
    std::chrono::milliseconds patience{1500};
    // The same for who chose the tray at run time, and rather waits than sees a strip that comes and goes.
    std::chrono::milliseconds patienceWithChosenTray{5000};
    // Where the program's other item is, which a strip keeps clear of.
    std::function<QRect()> neighbour{};
};

class AutomaticStatusItemHosts final : public StatusItemHosts {
    Q_OBJECT

public:
    using TrayWatches = std::vector<std::unique_ptr<TrayWatch>>;
    // The kinds in the order in which the toolkit prefers them.
    using MakeTrayWatches = std::function<TrayWatches()>;
    // In a tray of that kind, or, without one, on the strip.
    using MakeHost = std::function<std::unique_ptr<StatusItemHost>(std::optional<TrayKind> tray)>;

    AutomaticStatusItemHosts(const StatusItemHostsOptions& options, std::shared_ptr<TimeSource> timeSource);
    // With other watches and hosts than the desktop's.
    AutomaticStatusItemHosts(const StatusItemHostsOptions& options, std::shared_ptr<TimeSource> timeSource,
                             MakeTrayWatches makeTrayWatches, MakeHost makeHost);
    ~AutomaticStatusItemHosts() override;

    StatusItemHost* host() const override { return host_.get(); }
    void start() override;
    // Unlike with the option, somebody who chooses a tray that is not there keeps the item: on the strip, until one
    // comes.
    void choose(std::optional<StatusItemPlace> place) override;
    // Chooses what was and will be chosen there.
    void follow(const AutomaticStatusItemHosts& other);

Q_SIGNALS:
    void placeChosen(std::optional<quenby::StatusItemPlace> place);

private:
    void watchTrays();
    void reviewSoon();
    void review();
    // A tray of the kind that this process speaks; of any kind as long as that is not decided.
    const TrayWatch* usableTray() const;
    bool isAnswerAwaited() const;
    bool isStripUsed() const { return host_ && host_->place() == StatusItemPlace::strip; }
    void useStrip();
    void waitForTray();
    void use(std::optional<TrayKind> tray);

    StatusItemHostsOptions options_;
    std::shared_ptr<TimeSource> timeSource_;
    MakeTrayWatches makeTrayWatches_;
    MakeHost makeHost_;
    TrayWatches watches_;
    std::optional<TrayKind> kind_; // decided by the first tray that was used, for the whole process
    std::unique_ptr<Timer> patience_;
    std::chrono::milliseconds waitedFor_{0};
    bool isPatienceOver_ = false;
    bool isStarted_ = false;
    bool isChosen_ = false; // at run time
    bool isReviewComing_ = false;
    bool isTrayUsed_ = false; // the host stands in a tray that is there
    std::unique_ptr<StatusItemHost> host_;
};

} // namespace quenby
