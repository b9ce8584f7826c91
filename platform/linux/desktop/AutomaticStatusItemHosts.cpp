#include "platform/linux/desktop/AutomaticStatusItemHosts.h"

#include "platform/linux/desktop/EmbedTrayWatch.h"
#include "platform/linux/desktop/NotifierTrayWatch.h"
#include "platform/linux/desktop/StripHost.h"
#include "platform/linux/desktop/TrayHost.h"

#include <algorithm>
#include <utility>

namespace quenby {
namespace {

AutomaticStatusItemHosts::TrayWatches desktopsTrayWatches() {
    AutomaticStatusItemHosts::TrayWatches watches;
    watches.push_back(std::make_unique<NotifierTrayWatch>());
    watches.push_back(std::make_unique<EmbedTrayWatch>());
    return watches;
}

AutomaticStatusItemHosts::MakeHost desktopsHosts(const std::function<QRect()>& neighbour) {
    return [neighbour](std::optional<TrayKind> tray) -> std::unique_ptr<StatusItemHost> {
        if (tray)
            return std::make_unique<TrayHost>(*tray);
        return std::make_unique<StripHost>(neighbour);
    };
}

// How long a bus that does not answer may keep the status item from being shown.
constexpr std::chrono::milliseconds longestWaitForAnswer{1500};

} // namespace

AutomaticStatusItemHosts::AutomaticStatusItemHosts(const StatusItemHostsOptions& options,
                                                   std::shared_ptr<TimeSource> timeSource)
    : AutomaticStatusItemHosts(options, std::move(timeSource), desktopsTrayWatches, desktopsHosts(options.neighbour)) {}

AutomaticStatusItemHosts::AutomaticStatusItemHosts(const StatusItemHostsOptions& options,
                                                   std::shared_ptr<TimeSource> timeSource,
                                                   MakeTrayWatches makeTrayWatches, MakeHost makeHost)
    : options_(options)
    , timeSource_(std::move(timeSource))
    , makeTrayWatches_(std::move(makeTrayWatches))
    , makeHost_(std::move(makeHost)) {}

AutomaticStatusItemHosts::~AutomaticStatusItemHosts() = default;

void AutomaticStatusItemHosts::start() {
    isStarted_ = true;
    watchTrays();
    reviewSoon();
}

void AutomaticStatusItemHosts::choose(std::optional<StatusItemPlace> place) {
    const bool isNew = !std::exchange(isChosen_, true) || options_.place != place;
    options_.place = place;
    if (isNew && isStarted_) {
        patience_.reset();
        isPatienceOver_ = false;
        watchTrays();
        reviewSoon();
    }
    Q_EMIT placeChosen(place);
}

void AutomaticStatusItemHosts::follow(const AutomaticStatusItemHosts& other) {
    if (other.isChosen_)
        choose(other.options_.place);
    connect(&other, &AutomaticStatusItemHosts::placeChosen, this, &AutomaticStatusItemHosts::choose);
}

// Who wants the strip is not bothered with trays.
void AutomaticStatusItemHosts::watchTrays() {
    if (options_.place == StatusItemPlace::strip || !watches_.empty())
        return;
    watches_ = makeTrayWatches_();
    for (const auto& watch : watches_)
        connect(watch.get(), &TrayWatch::changed, this, &AutomaticStatusItemHosts::reviewSoon);
}

// Never from inside of a watch: a host may go, and with it windows whose events are being told.
void AutomaticStatusItemHosts::reviewSoon() {
    if (std::exchange(isReviewComing_, true))
        return;
    QMetaObject::invokeMethod(this, &AutomaticStatusItemHosts::review, Qt::QueuedConnection);
}

void AutomaticStatusItemHosts::review() {
    isReviewComing_ = false;
    if (options_.place == StatusItemPlace::strip) {
        watches_.clear();
        useStrip();
        return;
    }
    if (const TrayWatch* tray = usableTray()) {
        patience_.reset();
        isPatienceOver_ = false;
        kind_ = tray->kind();
        // A tray that went and came back does not know the former host any more.
        if (!std::exchange(isTrayUsed_, true))
            use(kind_);
        return;
    }
    isTrayUsed_ = false;
    if (isStripUsed() && (isPatienceOver_ || !isAnswerAwaited()))
        return;
    if (options_.place == StatusItemPlace::tray && !isChosen_)
        return;
    if (isPatienceOver_)
        useStrip();
    else
        waitForTray();
}

const TrayWatch* AutomaticStatusItemHosts::usableTray() const {
    for (const auto& watch : watches_) {
        if (kind_ && *kind_ != watch->kind())
            continue;
        if (watch->state() == TrayWatch::State::there)
            return watch.get();
        // The next one is not what the toolkit would choose if this one is there.
        if (watch->state() == TrayWatch::State::unknown && !isPatienceOver_)
            return nullptr;
    }
    return nullptr;
}

bool AutomaticStatusItemHosts::isAnswerAwaited() const {
    return std::any_of(watches_.begin(), watches_.end(),
                       [](const auto& watch) { return watch->state() == TrayWatch::State::unknown; });
}

void AutomaticStatusItemHosts::waitForTray() {
    const auto patience = options_.place == StatusItemPlace::tray ? options_.patienceWithChosenTray : options_.patience;
    const auto longest = isAnswerAwaited() ? std::max(patience, longestWaitForAnswer) : patience;
    if (patience_ && longest == waitedFor_)
        return;
    waitedFor_ = longest;
    patience_ = timeSource_->startTimer(longest, [this] {
        isPatienceOver_ = true;
        reviewSoon();
    });
}

void AutomaticStatusItemHosts::useStrip() {
    isTrayUsed_ = false;
    if (!isStripUsed())
        use(std::nullopt);
}

void AutomaticStatusItemHosts::use(std::optional<TrayKind> tray) {
    // Whoever hears of the change may still hold on to the former one while it does.
    const std::unique_ptr<StatusItemHost> former = std::exchange(host_, makeHost_(tray));
    Q_EMIT hostChanged();
}

} // namespace quenby
