// What the overlay costs on which it is chosen what to record: how fast it comes, and its frames while a rectangle is
// dragged, in turn with a plain window that shows the same picture and the toolkit's own rubber band.
//
//   bench_overlay   in a desktop of scripts/desktop/session.sh
//
// Prints a line a figure, its name and its value, those of the other window with "peer_" before their names:
//
//   opening_ms      from the making of the overlay to the end of its first frame
//   frames          that showed a new rectangle
//   missed_percent  of the frames of a screen that has 60 a second: nothing new was there for them
//   p99_ms          from one frame to the next
//   frame_cpu_ms    of all the program's threads
//
// The pointer moves as often as an ordinary mouse tells, by the toolkit's own events.

#include "bench/FrameMeter.h"
#include "bench/popover/Moment.h"
#include "bench/popover/PaintWatch.h"
#include "bench/popover/Screen.h"
#include "platform/linux/desktop/ScreenDisplays.h"
#include "recording/RecordingState.h"
#include "recording/overlay/DrawMouseBoxView.h"
#include "recording/overlay/OverlayWindow.h"

#include <QMouseEvent>
#include <QPainter>
#include <QRubberBand>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <cstdio>

using namespace quenby;
using namespace quenby::bench;

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr int rounds = 5;
constexpr auto dragTime = 2s;
constexpr auto timeBetweenMoves = 8ms;
constexpr auto settlingTime = 500ms;

double milliseconds(std::chrono::nanoseconds time) { return std::chrono::duration<double, std::milli>(time).count(); }

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

// The peer.
class BandWindow final : public QWidget {
public:
    explicit BandWindow(const quenby::Display& display, const QImage& picture)
        : QWidget(nullptr, Qt::FramelessWindowHint | Qt::BypassWindowManagerHint)
        , picture_(picture.convertToFormat(QImage::Format_RGB32))
        , band_(QRubberBand::Rectangle, this) {
        setAttribute(Qt::WA_OpaquePaintEvent);
        setGeometry(display.frame);
    }

protected:
    void paintEvent(QPaintEvent* event) override {
        QPainter painter(this);
        for (const QRect& part : event->region())
            painter.drawImage(part.topLeft(), picture_, part);
    }
    void mousePressEvent(QMouseEvent* event) override {
        origin_ = event->pos();
        band_.setGeometry(QRect(origin_, QSize()));
        band_.show();
    }
    void mouseMoveEvent(QMouseEvent* event) override { band_.setGeometry(QRect(origin_, event->pos()).normalized()); }
    void mouseReleaseEvent(QMouseEvent*) override { band_.hide(); }

private:
    const QImage picture_;
    QRubberBand band_;
    QPoint origin_;
};

// Whether a place of the pointer has been painted that had not been before: what else moves (the outline's dashes) lies
// elsewhere. The pointer may have moved on meanwhile.
class FreshFrames final : public QObject {
public:
    explicit FreshFrames(QWidget& widget) { widget.installEventFilter(this); }
    void pointerIsAt(const QPoint& place) { places_.push_back(place); }
    bool take() { return std::exchange(isFresh_, false); }
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() != QEvent::Paint)
            return false;
        const QRegion& region = static_cast<QPaintEvent*>(event)->region();
        const auto painted = std::find_if(places_.rbegin(), places_.rend(), [&region](const QPoint& place) {
            return region.contains(place - QPoint(1, 1));
        });
        isFresh_ = isFresh_ || painted != places_.rend();
        places_.erase(places_.begin(), painted.base());
        return false;
    }

private:
    std::vector<QPoint> places_; // that nothing has been painted of yet
    bool isFresh_ = false;
};

// There and back again, fast enough for each move to leave everything behind that was painted around the last place.
class Zigzag {
public:
    explicit Zigzag(const QRect& room)
        : room_(room)
        , place_(room.topLeft()) {}
    QPoint next() {
        if (!room_.contains(QPoint(place_.x() + step_.x(), place_.y())))
            step_.rx() *= -1;
        if (!room_.contains(QPoint(place_.x(), place_.y() + step_.y())))
            step_.ry() *= -1;
        return place_ += step_;
    }

private:
    const QRect room_;
    QPoint place_;
    QPoint step_{17, 13}; // pixels
};

void sendMouse(QWidget& widget, QEvent::Type type, const QPoint& place) {
    const Qt::MouseButton button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
    const Qt::MouseButtons buttons = type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton;
    QMouseEvent event(type, place, widget.mapToGlobal(QPointF(place)), button, buttons, Qt::NoModifier);
    QCoreApplication::sendEvent(&widget, &event);
}

struct Dragging {
    std::vector<double> intervals; // between frames; milliseconds
    std::vector<double> cpu;       // for a frame, of each round

    void print(const char* prefix) const {
        const double frame = milliseconds(FrameMeter::frameTime);
        double missed = 0;
        double time = 0;
        for (const double interval : intervals) {
            missed += std::max(0.0, std::round(interval / frame) - 1);
            time += interval;
        }
        std::vector<double> sorted = intervals;
        std::sort(sorted.begin(), sorted.end());
        std::printf("%sframes %zu\n", prefix, sorted.size());
        std::printf("%smissed_percent %.3f\n", prefix, 100 * missed / (time / frame));
        std::printf("%sp99_ms %.3f\n", prefix, sorted.at((sorted.size() - 1) * 99 / 100));
        std::printf("%sframe_cpu_ms %.3f\n", prefix, median(cpu));
    }
};

// A rectangle, from near the upper left corner.
void drag(PaintWatch& application, Screen& screen, QWidget& widget, Dragging& dragging) {
    const QPoint start(40, 40);
    FreshFrames fresh(widget);
    Zigzag path(QRect(start + QPoint(60, 60), QPoint(widget.width() - 20, widget.height() - 20)));
    std::vector<Clock::time_point> frames;
    application.frameEnded = [&] {
        if (!fresh.take())
            return;
        screen.finish();
        frames.push_back(Clock::now());
    };
    sendMouse(widget, QEvent::MouseButtonPress, start);
    QTimer mouse;
    mouse.setTimerType(Qt::PreciseTimer);
    QPoint place;
    QObject::connect(&mouse, &QTimer::timeout, &mouse, [&] {
        place = path.next();
        fresh.pointerIsAt(place);
        sendMouse(widget, QEvent::MouseMove, place);
    });
    const Moment before = Moment::now();
    mouse.start(timeBetweenMoves);
    application.rest(dragTime);
    mouse.stop();
    const Moment after = Moment::now();
    application.frameEnded = nullptr;
    sendMouse(widget, QEvent::MouseButtonRelease, place);
    if (frames.size() < 2)
        qFatal("nothing was painted where the pointer was");
    for (size_t i = 1; i < frames.size(); ++i)
        dragging.intervals.push_back(milliseconds(frames[i] - frames[i - 1]));
    dragging.cpu.push_back(milliseconds(after.cpu - before.cpu) / static_cast<double>(frames.size()));
}

// The overlay itself is made, so what it needs to know of the screen is part of it.
std::unique_ptr<OverlayWindow> openOverlay(PaintWatch& application, Screen& screen, const Displays& displays,
                                           RecordingState& state, std::vector<double>& openings) {
    std::optional<Clock::time_point> seen;
    application.frameEnded = [&] {
        screen.finish();
        if (!seen)
            seen = Clock::now();
    };
    const auto start = Clock::now();
    auto overlay = std::make_unique<OverlayWindow>(displays.main(), displays.main(), displays, state);
    overlay->present(true);
    application.waitUntil("the overlay", [&seen] { return seen.has_value(); });
    application.frameEnded = nullptr;
    openings.push_back(milliseconds(*seen - start));
    return overlay;
}

} // namespace

int main(int argc, char** argv) {
    PaintWatch application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    Screen screen;
    const ScreenDisplays displays;
    std::vector<double> openings;
    Dragging ours;
    Dragging theirs;
    for (int i = 0; i < rounds; ++i) {
        const QImage picture = displays.picture(displays.main());
        RecordingState state{.isRecordingVideo = true, .isRecordingVideoClicked = true};
        {
            const auto overlay = openOverlay(application, screen, displays, state, openings);
            application.rest(settlingTime);
            drag(application, screen, overlay->view(), ours);
        }
        BandWindow peer(displays.main(), picture);
        peer.show();
        application.rest(settlingTime);
        drag(application, screen, peer, theirs);
    }
    std::printf("opening_ms %.3f\n", median(openings));
    ours.print("");
    theirs.print("peer_");
    return 0;
}
