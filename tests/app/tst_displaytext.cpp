// What a terminal is shown: harmless, of the right width, and with numbers that mean what they say.

#include "app/cli/DisplayText.h"
#include "app/cli/ProgressText.h"
#include "core/ByteCountText.h"

#include <QTest>

#include <clocale>

using namespace quenby;
using namespace std::chrono_literals;

class DisplayTextTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(std::setlocale(LC_CTYPE, "C.UTF-8")); } // for the widths of characters

    void paths_data() {
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<QString>("printed");
        QTest::addColumn<QString>("inJson");
        const auto row = [](const char* name, const QByteArray& path, const char* printed, const char* inJson) {
            QTest::newRow(name) << path << QString::fromUtf8(printed) << QString::fromUtf8(inJson);
        };
        row("plain", "dir/a b.txt", "dir/a b.txt", "dir/a b.txt");
        row("UTF-8",
            "gr\xC3\xBC\xC3\x9F"
            "e",
            "grüße", "grüße");
        row("beyond the BMP", "\xF0\x9F\x98\x80", "😀", "😀");
        row("line break", "a\nb", "a\\x0ab", "a\nb");
        row("escape sequence", "\x1b[2J", "\\x1b[2J", "\x1b[2J");
        row("right-to-left override",
            "a\xE2\x80\xAE"
            "b",
            "a\\u202eb",
            "a\xE2\x80\xAE"
            "b");
        row("Latin-1", "caf\xE9.txt", "caf\\xe9.txt", "caf\\xe9.txt");
        row("cut in the middle", "\xC3\xBC\xC3", "ü\\xc3", "ü\\xc3");
        row("overlong", "\xC0\xAF", "\\xc0\\xaf", "\\xc0\\xaf");
        row("bad bytes and a line break", "\xFF\n", "\\xff\\x0a", "\\xff\\x0a");
    }
    void paths() {
        QFETCH(QByteArray, path);
        QTEST(printablePath(path), "printed");
        QTEST(jsonPath(path), "inJson");
    }

    void byteCounts_data() {
        QTest::addColumn<qint64>("bytes");
        QTest::addColumn<QString>("text");
        QTest::newRow("zero") << qint64(0) << QStringLiteral("0 bytes");
        QTest::newRow("one") << qint64(1) << QStringLiteral("1 byte");
        QTest::newRow("below a kilobyte") << qint64(1023) << QStringLiteral("1023 bytes");
        QTest::newRow("a half") << qint64(1536) << QStringLiteral("1.5 kB");
        QTest::newRow("whole") << qint64(15) * 1024 * 1024 * 1024 << QStringLiteral("15 GB");
    }
    void byteCounts() {
        QFETCH(qint64, bytes);
        QTEST(byteCountText(bytes), "text");
    }

    void elision_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("columns");
        QTest::addColumn<QString>("shown");
        QTest::newRow("fits") << QStringLiteral("abc") << 3 << QStringLiteral("abc");
        QTest::newRow("even") << QStringLiteral("abcdef") << 4 << QStringLiteral("ab…f");
        QTest::newRow("odd") << QStringLiteral("abcdef") << 5 << QStringLiteral("ab…ef");
        QTest::newRow("one column") << QStringLiteral("abc") << 1 << QStringLiteral("…");
        QTest::newRow("none") << QStringLiteral("abc") << 0 << QString();
        QTest::newRow("wide characters") << QStringLiteral("日本語日本語") << 6 << QStringLiteral("日…語");
    }
    void elision() {
        QFETCH(QString, text);
        QFETCH(int, columns);
        const QString shown = elidedInTheMiddle(text, columns);
        QTEST(shown, "shown");
        QVERIFY(displayColumns(shown) <= columns);
    }

    void progressLines_data() {
        QTest::addColumn<int>("columns");
        QTest::addColumn<QString>("line");
        QTest::newRow("wide") << 80
                              << QStringLiteral("film.mov  [=======             ]  37%     1.5 kB/s     0:42 left");
        QTest::newRow("no room for the bar") << 50 << QStringLiteral("film.mov  37%     1.5 kB/s     0:42 left");
        QTest::newRow("no room for the rate") << 20 << QStringLiteral("film.mov  37%");
        QTest::newRow("hardly any") << 10 << QStringLiteral("fi…ov  37%");
    }
    void progressLines() {
        QFETCH(int, columns);
        const Progress progress{QStringLiteral("film.mov"), 37989, 102400, 1536};
        QTEST(progressLine(progress, columns), "line");
    }

    void noLineIsWiderThanTheTerminal() {
        const QString name = QString(300, QChar(0x65E5)) + QLatin1Char('\n');
        for (int columns = 1; columns < 200; ++columns) {
            const QString line = progressLine({name, 1, 3, 12345678}, columns);
            QVERIFY2(displayColumns(line) <= columns && !line.contains(QLatin1Char('\n')), qPrintable(line));
        }
    }

    void timeLeft_data() {
        QTest::addColumn<qint64>("left");
        QTest::addColumn<double>("rate");
        QTest::addColumn<QString>("text");
        QTest::newRow("nothing known") << qint64(100) << 0.0 << QStringLiteral("-:--");
        QTest::newRow("rounded up") << qint64(101) << 10.0 << QStringLiteral("0:11");
        QTest::newRow("minutes") << qint64(725) << 1.0 << QStringLiteral("12:05");
        QTest::newRow("hours") << qint64(3 * 3600 + 67) << 1.0 << QStringLiteral("3:01:07");
        QTest::newRow("for ever") << qint64(1) << 1e-9 << QStringLiteral("-:--");
        QTest::newRow("done") << qint64(0) << 5.0 << QStringLiteral("0:00");
    }
    void timeLeft() {
        QFETCH(qint64, left);
        QFETCH(double, rate);
        QTEST(timeLeftText({{}, 0, left, rate}), "text");
    }

    void rateMoves() {
        RateMeter meter;
        meter.add(0ms, 0);
        QCOMPARE(meter.bytesPerSecond(), 0.0);
        meter.add(1000ms, 1000);
        QCOMPARE(meter.bytesPerSecond(), 1000.0);
        for (int second = 2; second <= 12; ++second)
            meter.add(std::chrono::seconds(second), 1000 + (second - 1) * 5000);
        QCOMPARE(meter.bytesPerSecond(), 5000.0); // the slow start is forgotten
        meter.add(13s, 100);
        QCOMPARE(meter.bytesPerSecond(), 0.0); // set back
    }

    void percentIsTruncated() {
        QCOMPARE((Progress{{}, 999, 1000, 0}.percent()), 99);
        QCOMPARE((Progress{{}, 0, 0, 0}.percent()), 100);
        QCOMPARE((Progress{{}, qint64(1) << 60, qint64(1) << 61, 0}.percent()), 50);
    }
};

QTEST_GUILESS_MAIN(DisplayTextTest)
#include "tst_displaytext.moc"
