// Names on their way between the Drive and a file system: titles, media types, search texts.

#include "app/uploads/transfer/DestinationFolder.h"
#include "app/uploads/transfer/MIMETypeFileName.h"
#include "core/SafeFileName.h"

#include <QTest>

using namespace quenby;

class NamesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void safeNames_data() {
        QTest::addColumn<QString>("title");
        QTest::addColumn<QByteArray>("name");
        const auto row = [](const char* name, const QString& title, const QByteArray& safe) {
            QTest::newRow(name) << title << safe;
        };
        row("plain", QStringLiteral("report 1.pdf"), "report 1.pdf");
        row("slash", QStringLiteral("../../etc/passwd"), "_.._etc_passwd");
        row("control characters", QStringLiteral("a\nb\tc\x7f"), "a_b_c_");
        row("NUL", QStringLiteral("a") + QChar(0) + QLatin1Char('b'), "a_b");
        row("hidden", QStringLiteral("...rc"), "rc");
        row("hidden behind a blank", QStringLiteral(".. .rc"), "rc");
        row("only dots", QStringLiteral(".."), "download");
        row("empty", QString(), "download");
        row("blanks around", QStringLiteral("  a  "), "a");
        row("longest", QString(255, QLatin1Char('a')), QByteArray(255, 'a'));
        row("too long", QString(300, QLatin1Char('a')) + QStringLiteral(".txt"), QByteArray(251, 'a') + ".txt");
        row("cut between characters", QString(200, QChar(0xFC)), QByteArray("\xC3\xBC").repeated(127));
        row("no extension worth keeping",
            QLatin1Char('a') + QString(1, QLatin1Char('.')) + QString(300, QLatin1Char('b')),
            "a." + QByteArray(253, 'b'));
    }
    void safeNames() {
        QFETCH(QString, title);
        const QByteArray safe = safeFileName(title);
        QTEST(safe, "name");
        QVERIFY(safe.size() <= 255 && QString::fromUtf8(safe).toUtf8() == safe);
    }

    void numbers() {
        QCOMPARE(numberedFileName("a.txt", 1), QByteArray("a.txt"));
        QCOMPARE(numberedFileName("a.txt", 2), QByteArray("a (2).txt"));
        QCOMPARE(numberedFileName("a", 10), QByteArray("a (10)"));
        const QByteArray longest = numberedFileName(QByteArray(251, 'a') + ".txt", 3);
        QCOMPARE(longest, QByteArray(247, 'a') + " (3).txt");
    }

    void mediaTypes_data() {
        QTest::addColumn<QString>("type");
        const auto row = [](const char* name, const char* type) { QTest::newRow(name) << QString::fromLatin1(type); };
        row("a.txt", "text/plain");
        row("a.PNG", "image/png");
        row("b.tar.gz", "application/x-compressed-tar");
        row("film.mov", "video/quicktime");
        row("page.html", "text/html");
        row("c.nosuchextension", "binary/octet-stream");
        row("Makefile2", "binary/octet-stream");
        row(".png", "binary/octet-stream"); // hidden, no extension
        row("ends.", "binary/octet-stream");
    }
    void mediaTypes() { QTEST(MIMETypeFileName(QString::fromUtf8(QTest::currentDataTag())), "type"); }

    void searchTexts() {
        QCOMPARE(DestinationFolder::searchText(QStringLiteral("Screen Shot")),
                 QStringLiteral("mimeType='application/vnd.google-apps.folder' and title = 'Screen Shot' and trashed = "
                                "false "));
        QCOMPARE(DestinationFolder::searchText(QStringLiteral("it's a \\ 'x'")).section(QStringLiteral("title = "), 1),
                 QStringLiteral("'it\\'s a \\\\ \\'x\\'' and trashed = false "));
    }
};

QTEST_GUILESS_MAIN(NamesTest)
#include "tst_names.moc"
