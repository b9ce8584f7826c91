#include "app/statusitem/StatusItem.h"

#include "app/account/AccountSummary.h"
#include "app/dropview/DroppedFiles.h"
#include "app/statusitem/StatusItemInputs.h"
#include "app/statusitem/StatusItemSizing.h"
#include "core/DefaultsKeys.h"
#include "core/TimeSource.h"
#include "platform/Defaults.h"

#include <QMenu>

#include <algorithm>

using namespace std::chrono_literals;

namespace quenby {
namespace {

constexpr auto roundWhileUploading = 500ms;
constexpr auto roundOtherwise = 4000ms;
// The end of an upload is worth a closer look.
constexpr auto lookAgain = 100ms;
constexpr int almostDone = 99;

// The number that "37%" begins with.
unsigned leadingPercent(const QString& text) {
    qsizetype digits = 0;
    while (digits < text.size() && (text[digits].isDigit() || text[digits] == QLatin1Char('.')))
        ++digits;
    return static_cast<unsigned>(std::min(text.first(digits).toDouble(), 100.0));
}

} // namespace

StatusItem::StatusItem(StatusItemHosts& hosts, const Defaults& defaults, const StatusItemInputs& inputs,
                       std::shared_ptr<TimeSource> timeSource, QMenu& statusMenu, QIcon applicationIcon)
    : hosts_(hosts)
    , defaults_(defaults)
    , inputs_(inputs)
    , timeSource_(std::move(timeSource))
    , statusMenu_(statusMenu)
    , applicationIcon_(std::move(applicationIcon)) {
    connect(&hosts_, &StatusItemHosts::hostChanged, this, &StatusItem::followHost);
    connect(&defaults_, &Defaults::changed, this, &StatusItem::settingChanged);
    followHost();
}

StatusItem::~StatusItem() = default;

void StatusItem::createAndSetIconOfStatusBarIsInstant(QStringView isInstant) {
    if (inputs_.isSignedIn() && inputs_.accountSummary().isComplete()) {
        if (!view_)
            view_ = std::make_unique<StatusItemView>(applicationIcon_);
        fillIn();
    }
    if (isInstant != u"y")
        scheduleNextRound();
    redisplay();
}

void StatusItem::fillIn() {
    StatusItemLook look = view_->look();
    look.strsize = inputs_.accountSummary().getBytesUsed;
    look.displaysize = gaugeValue(look.strsize);
    look.toolTip = toolTip();
    look.width = statusItemWidth(widthOfString(look.strsize, statusItemFont()),
                                 defaults_.boolForKey(defaultsKey::showMenubarIcon),
                                 defaults_.boolForKey(defaultsKey::showUsegeText));
    view_->setLook(look);
}

unsigned StatusItem::gaugeValue(const QString& getBytesUsed) {
    if (!inputs_.isUploadInProgress())
        return leadingPercent(getBytesUsed);
    const int percent = std::clamp(inputs_.uploadStatusPer(), 0, 100);
    if (percent >= almostDone)
        refreshSoon();
    return static_cast<unsigned>(percent);
}

QString StatusItem::toolTip() const {
    const QString quota = quotaText(inputs_.accountSummary());
    if (!inputs_.isUploadInProgress())
        return quota;
    return QStringLiteral("Uploading: %1%").arg(inputs_.uploadStatusPer()) + QLatin1Char('\n') + quota;
}

// One look is enough, however often it was asked for.
void StatusItem::refreshSoon() {
    soon_ = timeSource_->startTimer(lookAgain, [this] { createAndSetIconOfStatusBarIsInstant(u"y"); });
}

void StatusItem::scheduleNextRound() {
    const auto delay = inputs_.isUploadInProgress() ? roundWhileUploading : roundOtherwise;
    round_ = timeSource_->startTimer(delay, [this] { createAndSetIconOfStatusBarIsInstant(u"n"); });
}

void StatusItem::redisplay() {
    if (!view_)
        return;
    StatusItemLook look = view_->look();
    look.drag = drag_;
    look.isPopoverVisible = inputs_.isPopoverVisible();
    look.showMenubarIcon = defaults_.boolForKey(defaultsKey::showMenubarIcon);
    look.showUsegeText = defaults_.boolForKey(defaultsKey::showUsegeText);
    view_->setLook(look);
    show();
}

void StatusItem::show() {
    if (!host_)
        return;
    const StatusItemLook now = seen();
    if (shown_ == now)
        return;
    const bool isFirst = !shown_;
    shown_ = now;
    if (isFirst)
        host_->show(*view_, statusMenu_);
    else
        host_->update();
    Q_EMIT displayed(isFirst);
}

// The look as far as it matters at this place: a tray shows the gauge whatever the settings say, and never the text.
StatusItemLook StatusItem::seen() const {
    StatusItemLook look = view_->look();
    if (host_->place() == StatusItemPlace::tray) {
        look.showMenubarIcon = true;
        look.showUsegeText = false;
        look.width = statusItemHeight;
    }
    return look;
}

void StatusItem::followHost() {
    if (host_)
        host_->disconnect(this);
    host_ = hosts_.host();
    shown_.reset();
    drag_ = false; // it was over the former place
    if (!host_)
        return;
    connect(host_, &StatusItemHost::clicked, this, &StatusItem::statusItemClicked);
    connect(host_, &StatusItemHost::middleClicked, this, &StatusItem::statusItemMiddleClicked);
    connect(host_, &StatusItemHost::menuRequested, this, &StatusItem::statusItemRightClicked);
    connect(host_, &StatusItemHost::dragEntered, this, [this] {
        Q_EMIT dragEntered();
        setDrag(true);
    });
    connect(host_, &StatusItemHost::dragEnded, this, [this] { setDrag(false); });
    connect(host_, &StatusItemHost::dropped, this, &StatusItem::dropped);
    redisplay();
}

void StatusItem::settingChanged(const QString& key) {
    if (key == defaultsKey::showMenubarIcon || key == defaultsKey::showUsegeText)
        createAndSetIconOfStatusBarIsInstant(u"y");
}

void StatusItem::setDrag(bool drag) {
    drag_ = drag;
    redisplay();
}

void StatusItem::dropped(const QList<QByteArray>& paths) {
    if (holdsRegularFile(paths))
        Q_EMIT filesDropped(paths);
}

void StatusItem::statusItemRightClicked(const QPoint& position) { statusMenu_.popup(position); }

QRect StatusItem::geometry() const { return host_ ? host_->geometry() : QRect(); }

} // namespace quenby
