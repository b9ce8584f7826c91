// A moment by the clock on the wall and by the computing that the process has done up to it.
#pragma once

#include <chrono>
#include <ctime>

namespace quenby::bench {

struct Moment {
    std::chrono::steady_clock::time_point wall;
    std::chrono::nanoseconds cpu{0}; // of all threads

    static Moment now() {
        timespec cpu{};
        ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &cpu);
        return {std::chrono::steady_clock::now(),
                std::chrono::seconds(cpu.tv_sec) + std::chrono::nanoseconds(cpu.tv_nsec)};
    }
};

} // namespace quenby::bench
