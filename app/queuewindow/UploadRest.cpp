#include "app/queuewindow/UploadRest.h"

#include "app/uploads/UploadQueue.h"
#include "core/DefaultsKeys.h"
#include "platform/Defaults.h"
#include "platform/NetworkCost.h"

namespace quenby {
namespace {

using namespace std::chrono_literals;

// A short trouble is no reason to fall asleep in the middle of a file: some desktops do so at once.
constexpr auto patienceAwake = 2min;

} // namespace

UploadRest::UploadRest(UploadQueue& queue, Defaults& defaults, const NetworkCost& networkCost,
                       SleepInhibitor& sleepInhibitor, std::shared_ptr<TimeSource> timeSource)
    : queue_(queue)
    , defaults_(defaults)
    , networkCost_(networkCost)
    , sleepInhibitor_(sleepInhibitor)
    , timeSource_(std::move(timeSource)) {
    connect(&networkCost, &NetworkCost::changed, this, [this] {
        isCostAccepted_ = false;
        apply();
    });
    connect(&defaults, &Defaults::changed, this, [this](const QString& key) {
        if (key == defaultsKey::uploadsPaused || key == defaultsKey::uploadsRestOnMetered ||
            key == defaultsKey::uploadRateLimit)
            apply();
    });
    connect(&queue, &UploadQueue::changed, this, &UploadRest::holdAwake);
    connect(&queue, &UploadQueue::waitingCountChanged, this, &UploadRest::holdAwake);
    apply();
}

bool UploadRest::areAllPaused() const { return defaults_.boolForKey(defaultsKey::uploadsPaused); }

void UploadRest::setAllPaused(bool paused) { defaults_.setValueForKey(defaultsKey::uploadsPaused, paused); }

bool UploadRest::restsOnMetered() const { return defaults_.boolForKey(defaultsKey::uploadsRestOnMetered, true); }

qint64 UploadRest::rateLimit() const {
    return std::max<qint64>(defaults_.valueForKey(defaultsKey::uploadRateLimit).toLongLong(), 0);
}

bool UploadRest::isResting() const { return networkCost_.isMetered() && restsOnMetered() && !isCostAccepted_; }

void UploadRest::uploadAnyway() {
    isCostAccepted_ = true;
    apply();
}

void UploadRest::apply() {
    queue_.setMaxSendSpeed(rateLimit());
    queue_.setHeldBack(areAllPaused() || isResting());
    holdAwake();
    Q_EMIT changed();
}

void UploadRest::holdAwake() {
    if (queue_.runningCount() == 0) {
        letGo_.reset();
        awake_.reset();
    } else if (queue_.getsOn()) {
        letGo_.reset();
        if (!awake_)
            awake_ = sleepInhibitor_.hold(tr("Files are being uploaded"));
    } else if (awake_ && !letGo_) {
        letGo_ = timeSource_->startTimer(patienceAwake, [this] { awake_.reset(); });
    }
}

} // namespace quenby
