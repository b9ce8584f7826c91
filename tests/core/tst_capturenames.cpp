// Names of captures: the hours that clocks of twelve hours get wrong, zones, and languages with other words for them.

#include "core/CaptureNames.h"

#include <QLocale>
#include <QTest>

#include <ctime>

using namespace quenby;

class CaptureNamesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void nameTellsWhen() {
        const auto name = [](QTime utc) { return screenCastName(QDateTime(QDate(2026, 3, 9), utc, Qt::UTC)); };
        setZone("Asia/Kolkata"); // UTC+05:30
        for (const QLocale& locale : {QLocale(QLocale::Arabic, QLocale::Egypt), QLocale(QLocale::Thai), QLocale::c()}) {
            QLocale::setDefault(locale);
            QCOMPARE(name(QTime(9, 37, 41)), QStringLiteral("ScreenCast 2026-03-09 at 03.07.41 PM"));
            QCOMPARE(name(QTime(6, 30)), QStringLiteral("ScreenCast 2026-03-09 at 12.00.00 PM"));
            QCOMPARE(name(QTime(6, 29, 59, 999)), QStringLiteral("ScreenCast 2026-03-09 at 11.59.59 AM"));
            QCOMPARE(name(QTime(18, 30)), QStringLiteral("ScreenCast 2026-03-10 at 12.00.00 AM"));
        }
        setZone("America/New_York"); // people travel while the program runs
        QCOMPARE(name(QTime(0, 30)), QStringLiteral("ScreenCast 2026-03-08 at 08.30.00 PM"));
    }

private:
    static void setZone(const char* zone) {
        qputenv("TZ", zone);
        ::tzset();
    }
};

QTEST_GUILESS_MAIN(CaptureNamesTest)
#include "tst_capturenames.moc"
