// What is in a movie of the moving pattern: bench_movie FILE. Prints a line a figure, its name and its value:
//
//   frames      of the movie
//   seconds     that it lasts
//   unreadable  frames that show no pattern as a whole
//   repeated    frames that show the same picture as the one before
//   longest_gap the most pictures from one frame to the next

#include "tests/support/MovieFrames.h"
#include "tests/support/MovingPattern.h"

#include <algorithm>
#include <cstdio>

using namespace quenby::testing;

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: bench_movie FILE\n", stderr);
        return 2;
    }
    const QString path = QString::fromLocal8Bit(argv[1]);
    const auto facts = movieFacts(path);
    if (!facts)
        return 1;
    MovieFrames movie(path);
    std::optional<int> last;
    int unreadable = 0;
    int repeated = 0;
    int longestGap = 0;
    for (QImage frame = movie.next(); !frame.isNull(); frame = movie.next()) {
        const auto reading = readPattern(frame);
        if (!reading || reading->contradictingTiles > 0) {
            ++unreadable;
            continue;
        }
        if (last) {
            repeated += reading->number == *last;
            longestGap = std::max(longestGap, (reading->number - *last + patternNumbers) % patternNumbers);
        }
        last = reading->number;
    }
    if (!movie.error().isEmpty()) {
        std::fprintf(stderr, "%s\n", qPrintable(movie.error()));
        return 1;
    }
    std::printf("frames %d\nseconds %.3f\nunreadable %d\nrepeated %d\nlongest_gap %d\n", facts->frameCount(),
                facts->duration, unreadable, repeated, longestGap);
    return 0;
}
