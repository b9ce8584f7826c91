// Files that change, vanish or were never easy, while they are sent.

#include "tests/faults/FaultBench.h"

#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

using namespace quenby;
using namespace quenby::testing;

class SourceFaultsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { content_ = sampleBytes(350000); }
    void init() { QVERIFY2(bench_.prepare(), bench_.drive().log().constData()); }
    void cleanupTestCase() { QCOMPARE(bench_.leakedSecrets().join(QLatin1Char('\n')), QString()); }

    void changesWhileItIsSent_data() {
        QTest::addColumn<int>("newLength"); // -1: the name vanishes, the open file stays whole
        QTest::addColumn<bool>("succeeds");
        QTest::newRow("vanishes") << -1 << true;
        QTest::newRow("shrinks") << 120000 << false;
        QTest::newRow("shrinks to nothing") << 0 << false;
        QTest::newRow("grows") << 900000 << false;
    }
    void changesWhileItIsSent() {
        QFETCH(int, newLength);
        QFETCH(bool, succeeds);
        const QString title = QString::fromLatin1(QTest::currentDataTag());
        const QByteArray path = bench_.makeFile(title.toUtf8(), content_);
        bool changed = false;
        const auto outcome = bench_.upload(path, [&](qint64 sent) {
            if (sent < 100000 || std::exchange(changed, true))
                return;
            QCOMPARE(newLength < 0 ? ::unlink(path) : ::truncate(path, newLength), 0);
        });
        QVERIFY(changed);
        QVERIFY2(outcome.ok() == succeeds, outcome ? "succeeded" : qPrintable(outcome.error().description()));
        // A file that changed may not pass for the one that was meant: its copy, if there is one, is told of.
        if (succeeds)
            QCOMPARE(bench_.copiesOf(title), QStringList{md5Of(content_)});
        else
            QVERIFY2(outcome.error().description().contains(QStringLiteral("changed")),
                     qPrintable(outcome.error().description()));
    }

    void cannotBeSent_data() {
        QTest::addColumn<QString>("kind");
        for (const char* kind : {"missing", "directory", "fifo", "dangling link", "device"})
            QTest::newRow(kind) << QString::fromLatin1(kind);
    }
    void cannotBeSent() {
        QFETCH(QString, kind);
        QTemporaryDir folder;
        QByteArray path = QFile::encodeName(folder.filePath(kind));
        if (kind == QLatin1String("directory"))
            QCOMPARE(::mkdir(path, 0700), 0);
        else if (kind == QLatin1String("fifo"))
            QCOMPARE(::mkfifo(path, 0600), 0);
        else if (kind == QLatin1String("dangling link"))
            QCOMPARE(::symlink("/nowhere/at/all", path), 0);
        else if (kind == QLatin1String("device"))
            path = "/dev/zero";
        const auto outcome = bench_.upload(path);
        QVERIFY(!outcome);
        QVERIFY2(outcome.error().description().size() > 20, qPrintable(outcome.error().description()));
    }

    void names_data() {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<QString>("title");
        const auto row = [](const char* tag, const QByteArray& name, const QString& title) {
            QTest::newRow(tag) << name << title;
        };
        row("quotes", R"(it's "so" \ back)", QStringLiteral(R"(it's "so" \ back)"));
        row("newline", "two\nlines", QStringLiteral("two\nlines"));
        row("emoji", "\xF0\x9F\x98\x80 \xE2\x80\x8F", QStringLiteral("\U0001F600 \u200F"));
        row("no UTF-8", "caf\xE9.txt", QStringLiteral("caf\uFFFD.txt"));
        row("empty file", "empty", QStringLiteral("empty"));
    }
    void names() {
        QFETCH(QByteArray, name);
        QFETCH(QString, title);
        const QByteArray content = name == "empty" ? QByteArray() : content_;
        const auto outcome = bench_.upload(bench_.makeFile(name, content));
        QVERIFY2(outcome.ok(), outcome ? "" : qPrintable(outcome.error().description()));
        QCOMPARE(outcome->title, title);
        QCOMPARE(bench_.copiesOf(title), QStringList{md5Of(content)});
    }

private:
    QByteArray content_;
    FaultBench bench_;
};

QTEST_GUILESS_MAIN(SourceFaultsTest)
#include "tst_sourcefaults.moc"
