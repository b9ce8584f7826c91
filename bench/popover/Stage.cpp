#include "bench/popover/Stage.h"

#include "app/agent/CacheFolderNames.h"
#include "app/pictures/PictureFile.h"
#include "app/statusitem/ApplicationIcon.h"
#include "bench/popover/InventedChanges.h"
#include "driveapi/GTLServiceDrive.h"
#include "platform/linux/LinuxPlatform.h"
#include "popover/changes/ScrollView.h"
#include "popover/window/PopoverWindow.h"

#include <algorithm>
#include <atomic>
#include <numeric>

namespace quenby::bench {
namespace {

using namespace std::chrono_literals;

constexpr auto startingTime = 2s; // the panel's, with an item just shown

QWidget* popoverWindow() {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (qobject_cast<PopoverWindow*>(widget) != nullptr)
            return widget;
    }
    return nullptr;
}

std::vector<int> ranksFrom(int first, int count) {
    std::vector<int> ranks(static_cast<size_t>(count));
    std::iota(ranks.begin(), ranks.end(), first);
    return ranks;
}

} // namespace

AccountSummary Stage::Inputs::accountSummary() const {
    return {QStringLiteral("Ada"), QStringLiteral("ada@example.com"), QStringLiteral("15 GB"), QStringLiteral("37%")};
}

Stage::Stage(PaintWatch& application, std::shared_ptr<GTLServiceDrive> driveService)
    : application_(application)
    , platform_(makeLinuxPlatform({QStringLiteral("quenby-bench"), {}, {}, false}, timeSource_))
    , drive_(Endpoints::provider(), ClientIdentity::ofTheProgram(), timeSource_, nullptr)
    , driveService_(driveService ? std::move(driveService) : drive_.driveService())
    , feed_(
          driveService_, *platform_.defaults, [] { return QStringLiteral("https://drive.example.com/share?id="); },
          feedClock_)
    , pictures_(drive_.pictureFetcherService(), drive_.endpoints(), *platform_.cacheFolders)
    , inputs_(popover_)
    , menus_(inputs_, *platform_.defaults)
    , popover_({feed_, pictures_, inputs_, menus_, *platform_.defaults, drive_.endpoints(), timeSource_})
    , statusItem_(*platform_.statusItemHosts, *platform_.defaults, inputs_, timeSource_, menus_.statusMenu(),
                  applicationIcon()) {
    driveService_->fetcherService()->setConnectionClass(network_.factory());
    drive_.pictureFetcherService()->setConnectionClass([](const auto&, auto&) { return nullptr; });
    QObject::connect(&popover_, &ChangesPopover::visibleChanged, &statusItem_, &StatusItem::redisplay);
    QObject::connect(&statusItem_, &StatusItem::statusItemMiddleClicked, &popover_, [this] {
        callTime_ = std::chrono::steady_clock::now();
        popover_.toggle(statusItem_.geometry());
    });
    const AccountSummary account = inputs_.accountSummary();
    popover_.setAccount({account.displayName, account.emailAddress, quotaLine(inputs_), 37});
}

// The place where the status item stands still looks at it.
Stage::~Stage() { platform_.statusItemHosts.reset(); }

void Stage::cacheThumbnails(int highestRank) {
    const Result<QString> folder = platform_.cacheFolders->create(cacheFolderName::images);
    if (!folder)
        qFatal("%s", qPrintable(folder.error().description()));
    const std::atomic<bool> isGivenUp = false;
    for (int rank = highestRank; rank > highestRank - mostRecords && rank >= 0; --rank)
        writePictureFile(*folder + QLatin1Char('/') + pictureFileName(inventedIdentifier(rank)),
                         inventedThumbnail(rank), isGivenUp);
}

void Stage::fillFeed() {
    constexpr int newest = mostRecords - 1;
    cacheThumbnails(newest);
    // The server's clock stands between the two: the second poll brings what is new to it.
    network_.add(inventedPage(ranksFrom(0, newest)), inventedDate(newest).addSecs(-1));
    network_.add(inventedPage({newest}), inventedDate(newest).addSecs(1));
    feed_.GetChangeListGoogleDrive();
    application_.waitUntil("the first answer", [this] { return feedClock_->endedPolls() == 1; });
    poll();
    if (feed_.DriveChangeInfoAPI().size() != mostRecords)
        qFatal("the list has %d records", static_cast<int>(feed_.DriveChangeInfoAPI().size()));
}

void Stage::poll() {
    const int before = feedClock_->endedPolls();
    feedClock_->pollNow();
    application_.waitUntil("an answer", [this, before] { return feedClock_->endedPolls() > before; });
}

void Stage::showStatusItem() {
    platform_.statusItemHosts->start();
    statusItem_.createAndSetIconOfStatusBarIsInstant(u"n");
    screen_.movePointer(Screen::trayItem());
    // More than the panel's own ground.
    application_.askUntil("the status item in the tray", [this] {
        const QImage picture = screen_.picture(QRect(Screen::trayItem() - QPoint(11, 11), QSize(23, 23)));
        int darkest = 255;
        int lightest = 0;
        for (int i = 0; i < picture.width() * picture.height(); ++i) {
            const int grey = qGray(picture.pixel(i % picture.width(), i / picture.width()));
            darkest = std::min(darkest, grey);
            lightest = std::max(lightest, grey);
        }
        return lightest - darkest > 90;
    });
    application_.rest(startingTime);
}

void Stage::open(int height) {
    platform_.defaults->setValueForKey(QStringLiteral("heightForStatusMenu"), height);
    popover_.open(statusItem_.geometry());
    application_.waitUntil("the open popover", [] { return QApplication::activeWindow() == popoverWindow(); });
    application_.rest(settlingTime);
}

void Stage::close() {
    popover_.close();
    application_.rest(settlingTime);
}

ScrollView& Stage::list() const {
    QWidget* const window = popoverWindow();
    if (window == nullptr)
        qFatal("there is no popover yet");
    return *window->findChild<ScrollView*>();
}

} // namespace quenby::bench
