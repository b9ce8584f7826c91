// What every SingleInstance must do.
#pragma once

#include "platform/SingleInstance.h"

#include <QSignalSpy>
#include <QTest>

#include <functional>

namespace quenby::testing {

// No other instance is there. The function lets a newer one come, and calls back with what that one was given.
inline void
singleInstanceKeepsItsContract(SingleInstance& instance,
                               const std::function<void(std::function<void(const Handover& given)>)>& newerComes) {
    constexpr int patience = 20'000; // ms
    QSignalSpy ended(&instance, &SingleInstance::endRequested);
    std::optional<Handover> acquired;
    instance.acquire(&instance, [&](const Handover& handover) { acquired = handover; });
    QVERIFY(!acquired); // never from inside of the call
    QTRY_VERIFY_WITH_TIMEOUT(acquired, patience);
    QCOMPARE(*acquired, Handover());

    const Handover work{"one", QByteArray("\0\xff", 2), QByteArray()};
    int asked = 0;
    instance.setHandover([&] {
        ++asked;
        return work;
    });
    std::optional<Handover> given;
    newerComes([&](const Handover& handover) { given = handover; });
    QTRY_VERIFY_WITH_TIMEOUT(given, patience);
    QCOMPARE(*given, work);
    QTRY_COMPARE_WITH_TIMEOUT(ended.size(), 1, patience);
    QCOMPARE(asked, 1);
}

} // namespace quenby::testing
