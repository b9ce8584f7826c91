// Texts and addresses on their way to and from the desktop.
#include "core/LocalPaths.h"
#include "platform/linux/desktop/NotificationText.h"

#include <QTest>

using namespace quenby;

class tst_DesktopTexts : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void paths_data() {
        QTest::addColumn<QByteArray>("list");
        QTest::addColumn<QList<QByteArray>>("paths");

        QTest::newRow("several, with a comment") << QByteArray("# files\r\nfile:///tmp/a\r\nfile:///tmp/b%20c\r\n")
                                                 << QList<QByteArray>{"/tmp/a", "/tmp/b c"};
        QTest::newRow("no UTF-8") << QByteArray("file:///tmp/%FFx%25") << QList<QByteArray>{"/tmp/\xFFx%"};
        QTest::newRow("plus and semicolon") << QByteArray("file:///a+b;c") << QList<QByteArray>{"/a+b;c"};
        QTest::newRow("without authority") << QByteArray("FILE:/tmp/a\n") << QList<QByteArray>{"/tmp/a"};
        QTest::newRow("this computer") << QByteArray("file://localhost/tmp/a") << QList<QByteArray>{"/tmp/a"};
        QTest::newRow("another computer") << QByteArray("file://elsewhere.example/tmp/a") << QList<QByteArray>{};
        QTest::newRow("no file") << QByteArray("http://localhost/tmp/a\nfile:\nfile://\n/tmp/a") << QList<QByteArray>{};
        QTest::newRow("a NUL in the name") << QByteArray("file:///tmp/a%00.txt") << QList<QByteArray>{};
    }
    void paths() {
        QFETCH(QByteArray, list);
        QTEST(localPathsOfList(list), "paths");
    }

    void bodies_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("readsMarkup");
        QTest::addColumn<QString>("body");

        const QString odd = QStringLiteral(" \n <b>&amp;\"x\".txt added");
        QTest::newRow("markup") << odd << true << QStringLiteral("&lt;b&gt;&amp;amp;\"x\".txt added");
        QTest::newRow("no markup") << odd << false << QStringLiteral("<b>&amp;\"x\".txt added");
        QTest::newRow("controls") << QStringLiteral("\033\033a\tb%1\002c\nd").arg(QChar(QChar::Null)) << false
                                  << QStringLiteral("a b c\nd");
        QTest::newRow("too many lines") << QStringLiteral("x\n").repeated(900) << false
                                        << QStringLiteral("x\nx\nx\nx\nx\nx\nx\nx") + QChar(0x2026);
        QTest::newRow("just enough lines")
            << QStringLiteral("1\n2\n3\n4\n5\n6\n7\n8\n") << false << QStringLiteral("1\n2\n3\n4\n5\n6\n7\n8");
        // Neither the pair of surrogates nor the accent is cut off from what it belongs to.
        QTest::newRow("too long") << QString(298, QLatin1Char('a')) + QString::fromUtf8("\U0001F600 and more") << false
                                  << QString(298, QLatin1Char('a')) + QChar(0x2026);
        QTest::newRow("too long, escaped afterwards")
            << QString(10'000, QLatin1Char('<')) << true << QStringLiteral("&lt;").repeated(299) + QChar(0x2026);
    }
    void bodies() {
        QFETCH(QString, text);
        QFETCH(bool, readsMarkup);
        QTEST(notificationBody(text, readsMarkup), "body");
    }

    void aTitleIsOneLineWithoutEscapes() {
        const QString separators = QString(QChar::LineSeparator) + QChar::ParagraphSeparator;
        QCOMPARE(notificationTitle(QStringLiteral(" <b>A & B</b>\r\nC%1D ").arg(separators)),
                 QStringLiteral("<b>A & B</b> C D"));
        QCOMPARE(notificationTitle(QString(10'000, QLatin1Char('x'))), QString(119, QLatin1Char('x')) + QChar(0x2026));
    }
};

QTEST_GUILESS_MAIN(tst_DesktopTexts)
#include "tst_DesktopTexts.moc"
