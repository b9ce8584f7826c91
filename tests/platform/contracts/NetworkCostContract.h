// What every NetworkCost must do.
#pragma once

#include "platform/NetworkCost.h"

#include <QSignalSpy>
#include <QTest>

#include <functional>

namespace quenby::testing {

// Nothing is metered at the start. The function does what the desktop's own settings do, and returns when everything
// that it caused has arrived.
inline void networkCostKeepsItsContract(NetworkCost& cost, const std::function<void(bool isMetered)>& setMetered) {
    QSignalSpy changed(&cost, &NetworkCost::changed);
    QVERIFY2(cost.unavailableBecause().isEmpty(), qPrintable(cost.unavailableBecause()));
    QVERIFY(!cost.isMetered());
    int told = 0;
    bool wasMetered = false;
    for (const bool isMetered : {false, true, true, false, true}) {
        setMetered(isMetered);
        told += isMetered != wasMetered ? 1 : 0;
        wasMetered = isMetered;
        QCOMPARE(cost.isMetered(), isMetered);
        QCOMPARE(changed.size(), told);
    }
}

} // namespace quenby::testing
