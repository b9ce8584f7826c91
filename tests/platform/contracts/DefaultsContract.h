// What every Defaults must do.
#pragma once

#include "platform/Defaults.h"

#include <QSignalSpy>
#include <QTest>

namespace quenby::testing {

// The settings hold nothing yet.
inline void defaultsKeepTheirContract(Defaults& defaults) {
    QSignalSpy changed(&defaults, &Defaults::changed);
    const QString odd = QStringLiteral("OAuth2: Drive: Google Drive");
    QVERIFY(!defaults.valueForKey(odd).isValid());
    QVERIFY(defaults.boolForKey(odd, true));

    // Truth and numbers keep their meaning, not their type; keys that differ in their spelling are different keys.
    defaults.setValueForKey(odd, true);
    defaults.setValueForKey(odd.toLower(), false);
    defaults.setValueForKey(QStringLiteral("heightForStatusMenu"), 312.25);
    QCOMPARE(defaults.boolForKey(odd), true);
    QCOMPARE(defaults.boolForKey(odd.toLower(), true), false);
    QCOMPARE(defaults.valueForKey(QStringLiteral("heightForStatusMenu")).toDouble(), 312.25);
    QCOMPARE(defaults.valueForKey(odd), QVariant(QStringLiteral("true")));
    QCOMPARE(changed.size(), 3);
    QCOMPARE(changed.first().first().toString(), odd);

    // The same value once more is no change, in whichever type it comes.
    defaults.setValueForKey(odd, true);
    defaults.setValueForKey(odd, QStringLiteral("true"));
    QCOMPARE(changed.size(), 3);

    const QVariantList tabs{QVariantMap{{QStringLiteral("title"), QStringLiteral("a \"b\"\nc; ü")}},
                            QVariantMap{{QStringLiteral("data"), QByteArray("\0\xff", 2)}}};
    defaults.setValueForKey(QStringLiteral("OldTabs"), tabs);
    QCOMPARE(defaults.valueForKey(QStringLiteral("OldTabs")).toList(), tabs);

    // An invalid value is none, and removing what is not there changes nothing.
    defaults.setValueForKey(odd, QVariant());
    defaults.removeValueForKey(odd.toLower());
    QCOMPARE(changed.size(), 6);
    defaults.removeValueForKey(odd);
    QCOMPARE(changed.size(), 6);
    QVERIFY(!defaults.valueForKey(odd).isValid());
}

} // namespace quenby::testing
