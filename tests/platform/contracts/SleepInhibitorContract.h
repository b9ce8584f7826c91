// What every SleepInhibitor must do.
#pragma once

#include "platform/SleepInhibitor.h"

#include <QStringList>
#include <QTest>

#include <functional>

namespace quenby::testing {

// Nobody holds the computer awake yet. The function lists the reasons that the desktop knows at this moment.
inline void sleepInhibitorKeepsItsContract(SleepInhibitor& inhibitor, const std::function<QStringList()>& reasons) {
    const auto sorted = [&reasons] {
        QStringList list = reasons();
        list.sort();
        return list;
    };
    const QString uploads = QStringLiteral("Uploads");
    const QString recording = QStringLiteral("A recording <b>&amp; \U0001F3A5");
    auto first = inhibitor.hold(uploads);
    QTRY_COMPARE_WITH_TIMEOUT(sorted(), QStringList{uploads}, 20'000);
    auto second = inhibitor.hold(recording);
    auto third = inhibitor.hold(uploads); // each stands for itself
    QTRY_COMPARE_WITH_TIMEOUT(sorted(), (QStringList{recording, uploads, uploads}), 20'000);
    first.reset();
    QTRY_COMPARE_WITH_TIMEOUT(sorted(), (QStringList{recording, uploads}), 20'000);
    third.reset();
    QTRY_COMPARE_WITH_TIMEOUT(sorted(), QStringList{recording}, 20'000);
    second.reset();
    QTRY_VERIFY_WITH_TIMEOUT(sorted().isEmpty(), 20'000);
    QVERIFY2(inhibitor.unavailableBecause().isEmpty(), qPrintable(inhibitor.unavailableBecause()));

    inhibitor.hold(uploads).reset(); // before any desktop could answer
    const auto last = inhibitor.hold(recording);
    QTRY_COMPARE_WITH_TIMEOUT(sorted(), QStringList{recording}, 20'000);
}

} // namespace quenby::testing
