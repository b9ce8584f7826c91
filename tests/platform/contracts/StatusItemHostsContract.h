// What every StatusItemHosts must do.
#pragma once

#include "platform/StatusItemHost.h"

#include <QMenu>
#include <QSignalSpy>
#include <QTest>

namespace quenby::testing {

// Not started yet, and about to find the place.
inline void statusItemHostsKeepTheirContract(StatusItemHosts& hosts, StatusItemPlace place,
                                             const StatusItemFace& face) {
    QSignalSpy changed(&hosts, &StatusItemHosts::hostChanged);
    QVERIFY(!hosts.host());
    hosts.start();
    QVERIFY(changed.isEmpty() && !hosts.host()); // never from inside of a call
    QTRY_COMPARE(changed.size(), 1);
    QVERIFY(hosts.host());
    QCOMPARE(hosts.host()->place(), place);

    // Nothing to show yet, and still no harm done.
    hosts.host()->update();
    QMenu menu;
    hosts.host()->show(face, menu);
    hosts.host()->update();
    QVERIFY(place == StatusItemPlace::tray || !hosts.host()->geometry().isEmpty());
    QCoreApplication::processEvents();
    QCOMPARE(changed.size(), 1);

    // Chosen where it stands already, it stays; and wherever it is sent, it is somewhere.
    const StatusItemHost* const there = hosts.host();
    hosts.choose(place);
    QCoreApplication::processEvents();
    QVERIFY(changed.size() == 1 && hosts.host() == there);
    hosts.choose(StatusItemPlace::strip);
    QTRY_VERIFY(hosts.host() && hosts.host()->place() == StatusItemPlace::strip);
    hosts.choose(StatusItemPlace::tray);
    QCoreApplication::processEvents();
    QVERIFY(hosts.host());
}

} // namespace quenby::testing
