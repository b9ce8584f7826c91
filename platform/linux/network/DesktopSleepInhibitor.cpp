#include "platform/linux/network/DesktopSleepInhibitor.h"

#include "platform/linux/network/SleepRoad.h"

#include <QCoreApplication>
#include <QPointer>

#include <algorithm>
#include <utility>

namespace quenby {

struct DesktopSleepInhibitor::Roads {
    std::vector<std::unique_ptr<SleepRoad>> all;
    bool isRefused = false; // by all of them, the last time that they were asked
};

class DesktopSleepInhibitor::RoadHold final : public QObject, public Hold {
public:
    RoadHold(std::shared_ptr<Roads> roads, QString reason)
        : roads_(std::move(roads))
        , reason_(std::move(reason)) {
        for (const auto& road : roads_->all) {
            connect(road.get(), &SleepRoad::came, this, &RoadHold::askAgain);
            connect(road.get(), &SleepRoad::went, this, [this, gone = road.get()] {
                isAnswerStale_ = isAnswerStale_ || asked_ == gone;
                if (heldBy_ != gone)
                    return;
                letGo();
                askAgain();
            });
        }
        askAgain();
    }

private:
    void askAgain() {
        if (grip_)
            return;
        if (std::exchange(isAsking_, true))
            hasComeMeanwhile_ = true;
        else
            askFrom(0);
    }

    void askFrom(std::size_t index) {
        const auto& all = roads_->all;
        while (index < all.size() && !all[index]->hasBus())
            ++index;
        if (index == all.size()) {
            if (std::exchange(hasComeMeanwhile_, false))
                return askFrom(0);
            isAsking_ = false;
            roads_->isRefused = true;
            return;
        }
        asked_ = all[index].get();
        isAnswerStale_ = false;
        asked_->ask(reason_, [self = QPointer(this), index](std::unique_ptr<SleepRoad::Grip> grip) {
            if (!self)
                return; // nobody needs it any more
            if (!grip)
                self->askFrom(index + 1);
            else if (self->isAnswerStale_)
                self->askFrom(0);
            else
                self->take(std::move(grip));
        });
    }

    void take(std::unique_ptr<SleepRoad::Grip> grip) {
        isAsking_ = hasComeMeanwhile_ = false;
        roads_->isRefused = false;
        grip_ = std::move(grip);
        heldBy_ = asked_;
    }

    void letGo() {
        grip_.reset();
        heldBy_ = nullptr;
    }

    const std::shared_ptr<Roads> roads_;
    const QString reason_;
    std::unique_ptr<SleepRoad::Grip> grip_;
    SleepRoad* heldBy_ = nullptr;
    SleepRoad* asked_ = nullptr; // the latest
    bool isAsking_ = false;
    bool hasComeMeanwhile_ = false; // somebody who was perhaps not there when he was asked
    bool isAnswerStale_ = false;    // whoever gives it has ended: the news may overtake the answer
};

DesktopSleepInhibitor::DesktopSleepInhibitor(const QDBusConnection& systemBus, const QDBusConnection& sessionBus)
    : roads_(std::make_shared<Roads>()) {
    roads_->all = makeSleepRoads(systemBus, sessionBus);
}

DesktopSleepInhibitor::~DesktopSleepInhibitor() = default;

std::unique_ptr<SleepInhibitor::Hold> DesktopSleepInhibitor::hold(const QString& reason) {
    return std::make_unique<RoadHold>(roads_, reason);
}

QString DesktopSleepInhibitor::unavailableBecause() const {
    const bool hasBus = std::ranges::any_of(roads_->all, [](const auto& road) { return road->hasBus(); });
    if (hasBus && !roads_->isRefused)
        return {};
    return QCoreApplication::translate(
        "quenby::DesktopSleepInhibitor",
        "The computer may go to sleep while something is uploaded, because no service of "
        "this desktop keeps it awake. A power manager in the session would.");
}

} // namespace quenby
