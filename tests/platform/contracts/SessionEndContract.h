// What every SessionEnd must do.
#pragma once

#include "platform/SessionEnd.h"

#include <QCoreApplication>
#include <QTest>
#include <QThread>

#include <functional>
#include <memory>

namespace quenby::testing {

// The function gives the program a reason to end, from outside, and as often as it is called.
inline void sessionEndKeepsItsContract(std::unique_ptr<SessionEnd> sessionEnd, const std::function<void()>& reason) {
    constexpr int patience = 20'000; // ms
    QVERIFY(sessionEnd->unavailableBecause().isEmpty());
    QList<QThread*> threads;
    QObject::connect(
        sessionEnd.get(), &SessionEnd::endRequested, sessionEnd.get(),
        [&] { threads.append(QThread::currentThread()); }, Qt::DirectConnection);
    QCoreApplication::processEvents();
    QVERIFY(threads.isEmpty()); // there is no reason yet

    // Every reason is told, and told once: who did not follow the first may follow the next.
    for (int times = 1; times <= 3; ++times) {
        reason();
        QTRY_COMPARE_WITH_TIMEOUT(threads.size(), times, patience);
    }
    QCoreApplication::processEvents();
    QCOMPARE(threads, QList<QThread*>(3, QThread::currentThread()));

    // It may go while it tells, as everything does at the end.
    QObject::connect(sessionEnd.get(), &SessionEnd::endRequested, qApp, [&] { sessionEnd.reset(); });
    reason();
    QTRY_VERIFY_WITH_TIMEOUT(!sessionEnd, patience);
    QCOMPARE(threads.size(), 4);
}

} // namespace quenby::testing
