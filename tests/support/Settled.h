// Waiting for something that is looked at from outside, such as a picture of the screen: it may be true for a moment
// while a panel is still drawing, so it has to stay true for several looks in a row.
#pragma once

#include <QTest>

namespace quenby::testing {

template <typename Predicate>
bool settles(Predicate holds, int patience = 20'000 /* milliseconds */) {
    constexpr int enough = 4; // looks, each after the events of at least ten milliseconds
    int looks = 0;
    return QTest::qWaitFor(
        [&] {
            looks = holds() ? looks + 1 : 0;
            return looks >= enough;
        },
        patience);
}

} // namespace quenby::testing
