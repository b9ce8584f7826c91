// What every LoginItem must do.
#pragma once

#include "platform/LoginItem.h"

#include <QSignalSpy>
#include <QTest>

#include <functional>

namespace quenby::testing {

// It is off, and nobody else has to do with it. The function does what the desktop's own settings do.
inline void loginItemKeepsItsContract(LoginItem& item, const std::function<void(bool isEnabled)>& switchByDesktop) {
    QSignalSpy changed(&item, &LoginItem::changed);
    QVERIFY2(item.unavailableBecause().isEmpty(), qPrintable(item.unavailableBecause()));
    QVERIFY(!item.isEnabled());
    item.followProgram(); // switches nothing on
    QVERIFY(!item.isEnabled());

    for (const bool isEnabled : {false, true, true, false, false, true}) {
        QVERIFY(!item.setEnabled(isEnabled));
        QCOMPARE(item.isEnabled(), isEnabled);
    }
    item.followProgram();
    QVERIFY(item.isEnabled());

    // Once for each time that the desktop moves it: of what was done here, nothing is told.
    int told = 0;
    for (const bool isEnabled : {false, true, false}) {
        switchByDesktop(isEnabled);
        ++told;
        QTRY_COMPARE_WITH_TIMEOUT(changed.size(), told, 20'000);
        QCOMPARE(item.isEnabled(), isEnabled);
    }
    QVERIFY(!item.setEnabled(true));
    QVERIFY(item.isEnabled());
    QVERIFY(!item.setEnabled(false));
    switchByDesktop(true);
    QTRY_COMPARE_WITH_TIMEOUT(changed.size(), told + 1, 20'000);
}

} // namespace quenby::testing
