// What becomes of the uploads that are written down when the disk is full or the file is not what it should be.

#include "tests/app/uploads/JournalBench.h"
#include "tests/support/TroubledDisk.h"

#include <QtEndian>

#include <sys/stat.h>
#include <unistd.h>

using namespace quenby;
using namespace quenby::testing;

namespace {

bool overwrite(const QString& path, qint64 offset, const QByteArray& bytes) {
    QFile file(path);
    return file.open(QIODevice::ReadWrite) && file.seek(offset) && file.write(bytes) == bytes.size();
}

// Of those that SQLite keeps for later; they are found by the numbers in its header.
bool damageFreePage(const QString& path) {
    const QByteArray contents = contentsOf(path);
    const auto first = qFromBigEndian<quint32>(contents.constData() + 32);
    return first > 1 && overwrite(path, (first - 1) * 4096, QByteArray(4096, '\x07'));
}

} // namespace

class UploadJournalTroubleTest : public JournalStage {
    Q_OBJECT

private Q_SLOTS:
    void unusableFilesArePutAside_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("word");
        QTest::newRow("no database") << "text"
                                     << "damaged";
        QTest::newRow("a page of it is damaged") << "page"
                                                 << "damaged";
        QTest::newRow("a page that is not in use is damaged") << "free"
                                                              << "damaged";
        QTest::newRow("cut off") << "cut"
                                 << "damaged";
        QTest::newRow("another program's tables") << "foreign"
                                                  << "damaged";
        QTest::newRow("of a later version") << "later"
                                            << "later";
    }
    void unusableFilesArePutAside() {
        QFETCH(QString, kind);
        QFETCH(QString, word);
        {
            JournalBench bench(path_);
            QVERIFY(bench.load().ok());
            QList<JournalEntry> many;
            for (qint64 number = 1; number < 200; ++number)
                many.append(sampleEntry(number));
            QVERIFY(!bench.write(many));
            QList<qint64> most;
            for (qint64 number = 50; number < 200; ++number)
                most.append(number);
            QVERIFY(!bench.remove(most));
        }
        if (kind == QLatin1String("text"))
            QVERIFY(overwrite(path_, 0, QByteArray(4096, 'x')));
        else if (kind == QLatin1String("page"))
            QVERIFY(overwrite(path_, 4096, QByteArray(4096, '\x07')));
        else if (kind == QLatin1String("free"))
            QVERIFY(damageFreePage(path_));
        else if (kind == QLatin1String("cut"))
            QVERIFY(QFile::resize(path_, 3 * 4096 + 100));
        else if (kind == QLatin1String("foreign"))
            QVERIFY(overwrite(path_, contentsOf(path_).indexOf("held INTEGER"), "hulk"));
        else
            QVERIFY(overwrite(path_, 60, QByteArray("\0\0\0\x02", 4))); // where SQLite keeps the user's version
        const QByteArray before = contentsOf(path_);
        JournalBench bench(path_);
        const auto entries = bench.load();
        QVERIFY(entries.ok());
        QCOMPARE(entries.value(), {});
        QTRY_COMPARE(bench.troubles.count(), 1);
        const QDir folder = QFileInfo(path_).dir();
        const QStringList aside = folder.entryList({journalFileName + QLatin1Char('.') + word + QStringLiteral("-2*")});
        QCOMPARE(aside.size(), 1);
        QCOMPARE(contentsOf(folder.filePath(aside.first())), before);
        const QString reason = bench.troubles.first().description();
        QVERIFY2(reason.contains(aside.first()), qPrintable(reason));
        QVERIFY(!bench.write(samples({1})));
        QCOMPARE(JournalBench(path_).entries(), samples({1}));
    }

    // Whatever happens to the file meanwhile: what was written stays written.
    void isWrittenAnewWhenItIsGone_data() {
        QTest::addColumn<QString>("kind");
        for (const char* kind : {"deleted", "its folder deleted", "damaged"})
            QTest::newRow(kind) << QString::fromLatin1(kind);
    }
    void isWrittenAnewWhenItIsGone() {
        QFETCH(QString, kind);
        JournalBench bench(path_);
        QVERIFY(bench.load().ok());
        QVERIFY(!bench.write(samples({1, 2})));
        if (kind == QLatin1String("deleted"))
            QVERIFY(QFile::remove(path_));
        else if (kind == QLatin1String("damaged"))
            QVERIFY(overwrite(path_, 0, QByteArray(contentsOf(path_).size(), 'x')));
        else
            QVERIFY(QFileInfo(path_).dir().removeRecursively());
        QVERIFY(!bench.write(samples({3})));
        QCOMPARE(JournalBench(path_).entries(), samples({1, 2, 3}));
    }

    void waitsForRoom_data() {
        QTest::addColumn<bool>("isWholeDisk"); // else this file may not grow
        QTest::addColumn<int>("code");
        QTest::newRow("full disk") << true << ENOSPC;
        QTest::newRow("limited file") << false << EIO;
    }
    void waitsForRoom() {
        QFETCH(bool, isWholeDisk);
        QFETCH(int, code);
        const SmallDisk disk(1);
        if (isWholeDisk && !disk.isThere())
            QSKIP("only the administrator gets a disk of his own");
        const QString path = isWholeDisk ? disk.filePath(journalFileName) : path_;
        std::optional<FileSizeLimit> limit;
        QList<JournalEntry> large;
        for (qint64 number = 10; number < 20; ++number) {
            large.append(sampleEntry(number));
            large.last().request = QByteArray(20000, 'r');
        }
        {
            JournalBench bench(path);
            QVERIFY(bench.load().ok());
            QVERIFY(!bench.write(samples({1, 2})));
            if (isWholeDisk)
                disk.fill(8192);
            else
                limit.emplace(rlim_t(QFileInfo(path).size()) + 8192);
            for (int i = 0; i < 2; ++i) {
                const MaybeError error = bench.write(large);
                QVERIFY(error && error->is(errorDomain::posix, code));
            }
            bench.journal.flush(); // does not wait for room
            QCOMPARE(bench.troubles.count(), 1);
            QCOMPARE(bench.troubles.first().code(), code);
        }
        {
            JournalBench bench(path); // can be read without any
            QCOMPARE(bench.entries(), samples({1, 2}));
            QVERIFY(bench.write(large));
            limit.reset();
            if (isWholeDisk)
                QVERIFY(QFile::remove(disk.filePath(QStringLiteral("filler"))));
            QVERIFY(!bench.remove({2})); // takes the rest with it
        }
        QCOMPARE(JournalBench(path).entries(), samples({1}) + large);
    }

    void canBeReadWhereNothingCanBeWritten() {
        const SmallDisk disk(1); // permissions mean nothing to the administrator
        if (!disk.isThere() && ::geteuid() == 0)
            QSKIP("no disk can be mounted here");
        const QString folder = disk.isThere() ? disk.path() : folder_->path();
        const QString path = folder + QLatin1Char('/') + journalFileName;
        const auto setReadOnly = [&](bool isReadOnly) {
            const QByteArray place = QFile::encodeName(folder);
            if (disk.isThere())
                return ::mount("none", place, nullptr, MS_REMOUNT | (isReadOnly ? MS_RDONLY : 0), "size=1m") == 0;
            return ::chmod(place, isReadOnly ? 0500 : 0700) == 0 &&
                   ::chmod(QFile::encodeName(path), isReadOnly ? 0400 : 0600) == 0;
        };
        {
            JournalBench bench(path);
            QVERIFY(bench.load().ok());
            QVERIFY(!bench.write(samples({1})));
        }
        QVERIFY(setReadOnly(true));
        JournalBench bench(path);
        QCOMPARE(bench.entries(), samples({1}));
        QVERIFY(bench.write(samples({2})));
        QVERIFY(bench.write(samples({3})));
        QCOMPARE(bench.troubles.count(), 1);
        QCOMPARE(bench.troubles.first().code(), EACCES);
        JournalBench elsewhere(folder + QStringLiteral("/missing/uploads.sqlite"));
        QVERIFY(!elsewhere.load().ok());
        QVERIFY(elsewhere.write(samples({5})));
        QVERIFY(setReadOnly(false));
        QVERIFY(!bench.write(samples({4})));
        QCOMPARE(bench.entries(), samples({1, 2, 3, 4}));
        QVERIFY(!elsewhere.write({}));
        QCOMPARE(elsewhere.entries(), samples({5}));
    }

    // What could not be read at first is not written over by uploads that happen to have the same numbers.
    void keepsWhatItCouldNotRead() {
        {
            JournalBench bench(path_);
            QVERIFY(bench.load().ok());
            QVERIFY(!bench.write(samples({1, 2})));
        }
        const QString folder = QFileInfo(path_).path();
        const QString away = folder_->filePath(QStringLiteral("away"));
        QVERIFY(QFile::rename(folder, away));
        QFile obstacle(folder);
        QVERIFY(obstacle.open(QIODevice::WriteOnly));
        JournalBench bench(path_);
        QVERIFY(!bench.load().ok());
        QVERIFY(obstacle.remove());
        QVERIFY(QFile::rename(away, folder));
        JournalEntry mine = sampleEntry(1);
        mine.account = QStringLiteral("another");
        QVERIFY(bench.write({mine}));
        QCOMPARE(JournalBench(path_).entries(), samples({1, 2}));
    }
};

QTEST_GUILESS_MAIN(UploadJournalTroubleTest)
#include "tst_uploadjournal_trouble.moc"
