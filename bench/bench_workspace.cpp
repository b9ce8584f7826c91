// How fast the workspace opens a tab.
//
//   bench_workspace URL COUNT   signs in to the local Drive at the address, then opens a tab by its bar's button, waits
//                               for the page, and closes the tab, so often
//
// Prints two lines for each tab, milliseconds since the button was pressed:
//
//   frame_ms   to the end of the first frame that shows the new tab: its place in the bar, and the page's area, still
//              blank. The toolkit has handed the frame to the X server, and the server has done with it.
//   page_ms    to the page's first contentful paint, as the engine itself has noted it; on the way the page was asked
//              for, sent by the local Drive and laid out.
//
// The button is pressed by the toolkit's own events: the way from the mouse to the toolkit is not in it. Runs in a
// desktop of scripts/desktop/session.sh.

#include "app/workspace/WorkspacePages.h"
#include "bench/popover/PaintWatch.h"
#include "bench/popover/Screen.h"
#include "platform/linux/LinuxPlatform.h"
#include "workspace/tab/TabWebView.h"
#include "workspace/tabbar/BarButton.h"
#include "workspace/tabbar/DemoModel.h"
#include "workspace/tabbar/TabBar.h"
#include "workspace/tabs/WorkspaceTabs.h"
#include "workspace/window/WorkspaceWindow.h"

#include <QMouseEvent>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <utility>

using namespace quenby;
using namespace quenby::bench;

namespace {

using namespace std::chrono_literals;
using WallClock = std::chrono::system_clock; // the page's clock, too

double milliseconds(WallClock::duration time) { return std::chrono::duration<double, std::milli>(time).count(); }

// Milliseconds since 1970; no number while there has been none.
constexpr auto firstPaintScript = "(() => { const paint = performance.getEntriesByName('first-contentful-paint')[0];"
                                  " return paint ? performance.timeOrigin + paint.startTime : null; })()";

// Whether a widget was painted since it was last asked about.
class PaintFlag final : public QObject {
public:
    explicit PaintFlag(QWidget& widget) { widget.installEventFilter(this); }
    bool take() { return std::exchange(isPainted_, false); }
    bool eventFilter(QObject*, QEvent* event) override {
        isPainted_ = isPainted_ || event->type() == QEvent::Paint;
        return false;
    }

private:
    bool isPainted_ = false;
};

class TabStage {
public:
    TabStage(PaintWatch& application, const QUrl& base)
        : application_(application)
        , platform_(makeLinuxPlatform({QStringLiteral("quenby-bench"), {}, {}, false}, timeSource_))
        , window_(*platform_.defaults)
        , pages_(window_, platform_, Endpoints::localDrive(base), timeSource_) {
        pages_.open(QStringLiteral("bench"), QStringLiteral("bench"));
        window_.showAccount();
        window_.bringToFront();
    }

    // The first tab has come to the Drive's sign-in page; its only button leads on to the Drive.
    void signIn() {
        application_.askUntil("the sign-in page", [this] { return isLoadedAt(QStringLiteral("/signin")); });
        selectedTab().myWebview()->evaluate(QStringLiteral("document.querySelector('button.primary').click()"),
                                            &context_, [](const QVariant&) {});
        application_.askUntil("the Drive's page", [this] { return isLoadedAt(QStringLiteral("/")); });
    }

    void measureOne() {
        const int before = tabs().count();
        std::optional<WallClock::time_point> seen;
        application_.frameEnded = [&] {
            if (seen || !barPainted_.take() || tabs().count() == before)
                return;
            screen_.finish();
            seen = WallClock::now();
        };
        const auto pressed = WallClock::now();
        pressAddButton();
        application_.waitUntil("the frame with the new tab", [&seen] { return seen.has_value(); });
        application_.frameEnded = nullptr;
        const double painted = firstPaint();
        const double start = milliseconds(pressed.time_since_epoch());
        std::printf("frame_ms %.3f\npage_ms %.3f\n", milliseconds(*seen - pressed), painted - start);
        application_.askUntil("the whole page", [this] { return isLoadedAt(QStringLiteral("/")); });
        application_.rest(500ms);
        tabs().closeTab(tabs().selectedIndex());
        application_.rest(500ms); // the bar's motion, and the end of the page's process
    }

private:
    WorkspaceTabs& tabs() { return pages_.tabs(); }
    TabWebView& selectedTab() { return *tabs().selectedTab(); }

    bool isLoadedAt(const QString& path) {
        const BrowserView* page = selectedTab().myWebview();
        return page && !page->isLoading() && page->url().path() == path && !selectedTab().demoModel().title().isEmpty();
    }

    void pressAddButton() {
        auto* button = tabs().tabBar().findChild<BarButton*>();
        const QPointF place = button->rect().center();
        for (const QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
            const bool isDown = type == QEvent::MouseButtonPress;
            QMouseEvent event(type, place, button->mapToGlobal(place), Qt::LeftButton,
                              isDown ? Qt::LeftButton : Qt::NoButton, Qt::NoModifier);
            QCoreApplication::sendEvent(button, &event);
        }
    }

    double firstPaint() {
        double painted = std::nan("");
        application_.askUntil("the page's first paint", [&] {
            if (BrowserView* page = selectedTab().myWebview())
                page->evaluate(QString::fromLatin1(firstPaintScript), &context_, [&painted](const QVariant& value) {
                    if (value.userType() == QMetaType::Double)
                        painted = value.toDouble();
                });
            return !std::isnan(painted);
        });
        return painted;
    }

    PaintWatch& application_;
    const std::shared_ptr<TimeSource> timeSource_ = makeSystemTimeSource();
    PlatformServices platform_;
    WorkspaceWindow window_;
    WorkspacePages pages_;
    PaintFlag barPainted_{pages_.tabs().tabBar()};
    Screen screen_;
    QObject context_;
};

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("usage: bench_workspace URL COUNT\n", stderr);
        return 2;
    }
    PaintWatch application(argc, argv);
    TabStage stage(application, QUrl(QString::fromLocal8Bit(argv[1])));
    stage.signIn();
    for (int i = std::atoi(argv[2]); i > 0; --i)
        stage.measureOne();
    return 0;
}
