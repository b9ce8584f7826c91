// Covers a part of the screen with a picture that moves and whose number can be read (MovingPattern.h).
//
//   moving_pattern X Y WIDTH HEIGHT RATE [LOG]   in pixels, and pictures a second
//
// Each picture has the number after the one before it and comes onto the screen at once, never in pieces. Says "ready"
// when the first is there. Writes a line for each to LOG when it is on the screen: its number and the time, in
// nanoseconds of the clock that only goes forward. Runs until it is ended, or its display is.

#include "tests/support/MovingPattern.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>

#include <unistd.h>
#include <xcb/xcb.h>

using namespace quenby::testing;

namespace {

constexpr qint64 second = 1'000'000'000;

qint64 now() {
    timespec time{};
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    return time.tv_sec * second + time.tv_nsec;
}

void sleepUntil(qint64 time) {
    const timespec until{time / second, time % second};
    ::clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &until, nullptr);
}

// A window above all others that nobody manages, and the picture that it gets next.
class PatternWindow {
public:
    explicit PatternWindow(const QRect& place)
        : size_(place.size())
        , connection_(xcb_connect(nullptr, nullptr))
        , window_(xcb_generate_id(connection_))
        , next_(xcb_generate_id(connection_))
        , painter_(xcb_generate_id(connection_)) {
        if (xcb_connection_has_error(connection_))
            return;
        const xcb_screen_t& screen = *xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
        const auto width = static_cast<uint16_t>(place.width());
        const auto height = static_cast<uint16_t>(place.height());
        const uint32_t unmanaged = 1;
        xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window_, screen.root, static_cast<int16_t>(place.x()),
                          static_cast<int16_t>(place.y()), width, height, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                          XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT, &unmanaged);
        xcb_create_pixmap(connection_, screen.root_depth, next_, window_, width, height);
        const uint32_t noEvents = 0;
        xcb_create_gc(connection_, painter_, window_, XCB_GC_GRAPHICS_EXPOSURES, &noEvents);
        xcb_map_window(connection_, window_);
    }
    ~PatternWindow() { xcb_disconnect(connection_); }
    PatternWindow(const PatternWindow&) = delete;
    PatternWindow& operator=(const PatternWindow&) = delete;

    // False when the display is gone.
    bool show(int number) {
        const PatternRectangles rectangles = patternRectangles(size_, number);
        fill(patternGrey, {QRect({}, size_)});
        fill(0xffffffff, rectangles.white);
        fill(0xff000000, rectangles.black);
        xcb_copy_area(connection_, next_, window_, painter_, 0, 0, 0, 0, static_cast<uint16_t>(size_.width()),
                      static_cast<uint16_t>(size_.height()));
        // The answer comes when all of that is done.
        std::free(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
        return !xcb_connection_has_error(connection_);
    }

private:
    void fill(QRgb colour, const std::vector<QRect>& rectangles) {
        const uint32_t foreground = colour & RGB_MASK;
        xcb_change_gc(connection_, painter_, XCB_GC_FOREGROUND, &foreground);
        std::vector<xcb_rectangle_t> filled;
        filled.reserve(rectangles.size());
        for (const QRect& one : rectangles)
            filled.push_back({static_cast<int16_t>(one.x()), static_cast<int16_t>(one.y()),
                              static_cast<uint16_t>(one.width()), static_cast<uint16_t>(one.height())});
        constexpr size_t most = 8000; // fits into a request of the plain kind
        for (size_t i = 0; i < filled.size(); i += most)
            xcb_poly_fill_rectangle(connection_, next_, painter_,
                                    static_cast<uint32_t>(std::min(most, filled.size() - i)), filled.data() + i);
    }

    const QSize size_;
    xcb_connection_t* const connection_;
    const xcb_window_t window_;
    const xcb_pixmap_t next_;
    const xcb_gcontext_t painter_;
};

int run(const QRect& place, int rate, std::FILE* log) {
    PatternWindow window(place);
    const qint64 period = second / rate;
    qint64 due = now();
    for (int number = 0; window.show(number); number = (number + 1) % patternNumbers) {
        const qint64 shown = now();
        if (log)
            std::fprintf(log, "%d %lld\n", number, static_cast<long long>(shown));
        if (number == 0) {
            std::puts("ready");
            std::fflush(stdout);
        }
        // A picture that came too late is not made up for: the others keep their distance.
        due = std::max(due + period, shown);
        sleepUntil(due);
    }
    return 1;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 6 && argc != 7) {
        std::fputs("usage: moving_pattern X Y WIDTH HEIGHT RATE [LOG]\n", stderr);
        return 2;
    }
    const auto number = [argv](int i) { return std::atoi(argv[i]); };
    std::FILE* log = argc == 7 ? std::fopen(argv[6], "w") : nullptr;
    if (argc == 7 && !log) {
        std::perror(argv[6]);
        return 2;
    }
    if (log)
        std::setvbuf(log, nullptr, _IOLBF, 4096);
    if (number(3) <= 0 || number(4) <= 0 || number(5) <= 0) {
        std::fputs("moving_pattern: the size and the rate are positive\n", stderr);
        return 2;
    }
    return run({number(1), number(2), number(3), number(4)}, number(5), log);
}
