// What the popover costs: the time from a click on the status item to its rows, frames while its list is scrolled,
// polls that bring nothing, and a change list as long as the service sends one.
//
//   bench_popover open COUNT  opens it by a click: the first time after the start, and then so often again
//   bench_popover scroll      scrolls its list at the least height, in turn with a list of the toolkit's
//   bench_popover poll DATA   asks the local Drive with this data folder again and again for what is not there
//   bench_popover list        takes 27 pages of 1000 changes while it is open, as the first answer after the start
//   bench_popover read        that one's peer: the toolkit's JSON reader on the same bytes, and a sort by date
//
// Runs in a desktop of scripts/desktop/session.sh with a panel. Prints a line a figure, its name and its value: "open"
// two for each opening, "scroll" with "peer_" before the names of the other list's.

#include "app/cli/Console.h"
#include "app/cli/Session.h"
#include "bench/FrameMeter.h"
#include "bench/popover/InventedChanges.h"
#include "bench/popover/Moment.h"
#include "bench/popover/PaintWatch.h"
#include "bench/popover/PauseMeter.h"
#include "bench/popover/RowList.h"
#include "bench/popover/Screen.h"
#include "bench/popover/Stage.h"
#include "popover/changes/RowLook.h"
#include "popover/changes/ScrollView.h"
#include "popover/changes/TableRow.h"
#include "popover/changes/TableView.h"
#include "popover/window/PopoverHeight.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLoggingCategory>
#include <QScrollBar>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <cstdio>

#include <sys/resource.h>

using namespace quenby;
using namespace quenby::bench;

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

double milliseconds(std::chrono::nanoseconds time) { return std::chrono::duration<double, std::milli>(time).count(); }

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

// --- Opening --------------------------------------------------------------------------------------------------------

// Every row that is to be seen stands on the screen with its thumbnail.
bool isSeenWhole(Stage& stage) {
    const ScrollView& list = stage.list();
    const QWidget& window = *list.window();
    const TableView& rows = stage.list().tableView();
    if (!window.isVisible() || rows.numberOfRows() != mostRecords)
        return false;
    const QImage picture = stage.screen().picture(window);
    if (picture.size() != window.size())
        return false;
    for (int i = 0; i < rows.numberOfRows(); ++i) {
        const TableRow& row = rows.row(i);
        const QPoint middle = rowFrames(row.width(), row.layoutDirection()).picture.center();
        if (!list.viewport()->rect().contains(row.mapTo(list.viewport(), middle)))
            continue;
        // The newest is on top.
        if (picture.pixelColor(row.mapTo(&window, middle)).rgb() != middleOfThumbnail(mostRecords - 1 - i).rgb())
            return false;
    }
    return true;
}

struct Opening {
    double fromClick; // of the mouse button, by way of the panel; milliseconds
    double fromCall;  // that the click becomes
};

Opening openByClick(PaintWatch& application, Stage& stage) {
    std::optional<Clock::time_point> seenWhole;
    application.frameEnded = [&] {
        stage.screen().finish();
        const auto now = Clock::now();
        if (!seenWhole && stage.popover().isVisible() && isSeenWhole(stage))
            seenWhole = now;
    };
    const auto clicked = Clock::now();
    stage.screen().clickMiddleButton();
    application.waitUntil("the whole popover", [&seenWhole] { return seenWhole.has_value(); });
    application.frameEnded = nullptr;
    return {milliseconds(*seenWhole - clicked), milliseconds(*seenWhole - stage.callTime())};
}

int measureOpening(PaintWatch& application, int count) {
    Stage stage(application);
    stage.fillFeed();
    stage.showStatusItem();
    const Opening first = openByClick(application, stage);
    std::printf("first_ms %.3f\nfirst_from_call_ms %.3f\n", first.fromClick, first.fromCall);
    for (int i = 0; i < count; ++i) {
        application.rest(300ms);
        stage.close();
        const Opening later = openByClick(application, stage);
        std::printf("later_ms %.3f\nlater_from_call_ms %.3f\n", later.fromClick, later.fromCall);
    }
    return 0;
}

// --- Scrolling ------------------------------------------------------------------------------------------------------

// What a touchpad sends after flicks of a finger, a step a frame: fast at first, then slower and slower. At the end of
// the list the next flick goes the other way.
class Flicks {
public:
    // In pixels, downwards.
    int next(const QScrollBar& bar) {
        const bool isAtEnd = bar.value() == (direction_ > 0 ? bar.maximum() : bar.minimum());
        if (isAtEnd)
            direction_ = -direction_;
        if (isAtEnd || speed_ < slowest)
            speed_ = fastest;
        speed_ *= slowing;
        return static_cast<int>(std::lround(speed_)) * direction_;
    }

private:
    static constexpr double fastest = 60; // pixels a frame
    static constexpr double slowest = 1;
    static constexpr double slowing = 0.96;

    int direction_ = 1;
    double speed_ = 0;
};

// To the viewport: events that a program makes are not handed on by the rows to what they lie in.
void turnWheel(QAbstractScrollArea& area, int pixels) {
    const QPointF middle = area.viewport()->rect().center();
    // A notch has 120 and scrolls by three steps of 20 pixels.
    QWheelEvent event(middle, area.viewport()->mapToGlobal(middle), QPoint(0, -pixels), QPoint(0, -2 * pixels),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(area.viewport(), &event);
}

struct Scrolling {
    std::vector<double> lateness; // of each frame on the screen; milliseconds
    std::vector<double> effort;   // for it

    void print(const char* prefix) const {
        printLateness(prefix, lateness);
        std::printf("%sframe_ms %.3f\n", prefix, median(effort));
    }
};

void scroll(PaintWatch& application, Screen& screen, QAbstractScrollArea& area, Scrolling& scrolling) {
    constexpr auto time = 1500ms;
    const QPoint before = QCursor::pos();
    screen.movePointer(area.viewport()->mapToGlobal(area.viewport()->rect().center()));
    application.rest(300ms);
    Flicks flicks;
    QScrollBar& bar = *area.verticalScrollBar();
    FrameMeter meter([&] {
        const auto start = Clock::now();
        const int value = bar.value();
        const int paints = application.paintCount();
        turnWheel(area, flicks.next(bar));
        QCoreApplication::sendPostedEvents(area.window(), QEvent::UpdateRequest);
        screen.finish();
        if (bar.value() == value || application.paintCount() == paints)
            qFatal("the list was not painted in another place");
        scrolling.effort.push_back(milliseconds(Clock::now() - start));
    });
    meter.start();
    application.rest(time);
    meter.stop();
    screen.movePointer(before);
    scrolling.lateness.insert(scrolling.lateness.end(), meter.lateness().begin(), meter.lateness().end());
}

int measureScrolling(PaintWatch& application) {
    constexpr int rounds = 7;
    Stage stage(application);
    stage.fillFeed();
    stage.showStatusItem();
    Scrolling ours;
    Scrolling theirs;
    for (int i = 0; i < rounds; ++i) {
        stage.open(leastPopoverHeight);
        scroll(application, stage.screen(), stage.list(), ours);
        const QSize size = stage.list().viewport()->size();
        stage.close();
        RowList peer(stage.feed().DriveChangeInfoAPI(), size);
        peer.show();
        application.rest(Stage::settlingTime);
        scroll(application, stage.screen(), peer, theirs);
    }
    ours.print("");
    theirs.print("peer_");
    return 0;
}

// --- Polls that bring nothing ---------------------------------------------------------------------------------------

// Of all threads, when they wait for something.
double wakeups() {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_nvcsw);
}

int measurePolls(PaintWatch& application, const QByteArray& data) {
    constexpr int count = 101;
    Console console({});
    const auto timeSource = makeSystemTimeSource();
    Session session(console, {.local = true, .localData = data, .httpLog = {}},
                    {Endpoints::provider(), [] { return AccountStorage(); }}, timeSource);
    QObject context;
    std::optional<MaybeError> opened;
    session.open(&context, [&opened](const MaybeError& error) { opened = error; });
    application.waitUntil("the local Drive", [&opened] { return opened.has_value(); });
    if (*opened)
        qFatal("%s", qPrintable((*opened)->description()));

    Stage stage(application, session.driveService());
    stage.fillFeed();
    stage.showStatusItem();
    stage.open(usualPopoverHeight);
    stage.poll();         // the connection
    application.rest(3s); // the scroller has faded away by then
    const int painted = application.paintCount();
    std::vector<double> cpu;
    std::vector<double> woken;
    for (int i = 0; i < count; ++i) {
        const Moment before = Moment::now();
        const double wakeupsBefore = wakeups();
        stage.poll();
        application.rest(20ms); // what comes after it
        cpu.push_back(milliseconds(Moment::now().cpu - before.cpu) * 1000);
        woken.push_back(wakeups() - wakeupsBefore);
    }
    std::printf("repaints %d\ncpu_us %.1f\nwakeups %.0f\n", application.paintCount() - painted, median(cpu),
                median(woken));
    return 0;
}

// --- A long list ----------------------------------------------------------------------------------------------------

constexpr int pageCount = 27;

// The peer. Dates of this form sort as they are.
int readByToolkit() {
    const std::vector<QByteArray> pages = inventedPages(pageCount);
    const Moment start = Moment::now();
    std::vector<QString> dates;
    for (const QByteArray& page : pages) {
        const QJsonDocument document = QJsonDocument::fromJson(page);
        for (const QJsonValue change : document[u"result"][u"items"].toArray())
            dates.push_back(change[u"modificationDate"].toString());
    }
    std::sort(dates.begin(), dates.end(), std::greater<>());
    if (dates.size() != size_t{pageCount} * changesOfAPage || dates.back().isEmpty())
        qFatal("the peer has not read everything");
    const Moment end = Moment::now();
    std::printf("peer_ms %.3f\npeer_cpu_ms %.3f\n", milliseconds(end.wall - start.wall),
                milliseconds(end.cpu - start.cpu));
    return 0;
}

int measureLongList(PaintWatch& application) {
    constexpr int highest = pageCount * changesOfAPage - 1;
    Stage stage(application);
    stage.cacheThumbnails(highest);
    for (const QByteArray& page : inventedPages(pageCount))
        stage.network().add(page, inventedDate(highest));
    stage.showStatusItem();
    stage.open(usualPopoverHeight);
    std::optional<Moment> painted;
    application.frameEnded = [&] {
        if (!painted && stage.list().tableView().numberOfRows() == mostRecordsOfFirstPoll)
            painted = Moment::now();
    };
    PauseMeter pauses;
    pauses.start();
    const Moment start = Moment::now();
    stage.feed().GetChangeListGoogleDrive();
    application.waitUntil("the rows", [&painted] { return painted.has_value(); });
    const auto longestPause = pauses.stop();
    application.frameEnded = nullptr;
    if (stage.feed().DriveChangeInfoAPI().constFirst().identifier != inventedIdentifier(highest))
        qFatal("the newest change is not the first row");
    application.rest(2s);
    pauses.start();
    application.rest(std::chrono::duration_cast<std::chrono::milliseconds>(painted->wall - start.wall));
    const Moment& lastPiece = stage.network().lastPiece();
    std::printf("from_last_byte_ms %.3f\nfrom_request_ms %.3f\n", milliseconds(painted->wall - lastPiece.wall),
                milliseconds(painted->wall - start.wall));
    std::printf("from_last_byte_cpu_ms %.3f\nfrom_request_cpu_ms %.3f\n", milliseconds(painted->cpu - lastPiece.cpu),
                milliseconds(painted->cpu - start.cpu));
    std::printf("pause_ms %.3f\nidle_pause_ms %.3f\n", milliseconds(longestPause), milliseconds(pauses.stop()));
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    QLoggingCategory::setFilterRules(QStringLiteral("*.info=false\n*.debug=false")); // a line a record
    QCoreApplication::setApplicationName(QStringLiteral("quenby-bench"));
    PaintWatch application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    const QStringList arguments = QCoreApplication::arguments();
    const QString what = arguments.value(1);
    if (what == QLatin1String("open") && arguments.size() == 3)
        return measureOpening(application, arguments.at(2).toInt());
    if (what == QLatin1String("scroll"))
        return measureScrolling(application);
    if (what == QLatin1String("poll") && arguments.size() == 3)
        return measurePolls(application, arguments.at(2).toLocal8Bit());
    if (what == QLatin1String("list"))
        return measureLongList(application);
    if (what == QLatin1String("read"))
        return readByToolkit();
    std::fputs("usage: bench_popover open COUNT | scroll | poll DATA | list | read\n", stderr);
    return 2;
}
