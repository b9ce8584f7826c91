// What every Opener and every Pasteboard must do.
#pragma once

#include "platform/Opener.h"
#include "platform/Pasteboard.h"

#include <QTest>

namespace quenby::testing {

// There is a program for addresses.
inline void openerKeepsItsContract(Opener& opener) {
    QVERIFY(opener.openURL(QUrl(QStringLiteral("https://drive.example/file?id=1&x=%20#a"))));
    for (const char* refused : {"file:///etc/passwd", "mailto:somebody@example.com", "javascript:alert(1)",
                                "https:", "https:///path", "drive.example", ""})
        QVERIFY2(!opener.openURL(QUrl(QLatin1String(refused))), refused);
}

inline void pasteboardKeepsItsContract(Pasteboard& pasteboard) {
    for (const QString& text : {QStringLiteral("one"), QString::fromUtf8("zw\u00f6lf \U0001F600\nlines"), QString()}) {
        pasteboard.setText(text);
        QCOMPARE(pasteboard.text(), text);
    }
}

} // namespace quenby::testing
