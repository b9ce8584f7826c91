// What is written down of the uploads, and what is left of it when the program is killed.

#include "tests/app/uploads/JournalBench.h"

#include <QProcess>

#include <map>
#include <set>

#include <sys/stat.h>

using namespace quenby;
using namespace quenby::testing;

class UploadJournalTest : public JournalStage {
    Q_OBJECT

private Q_SLOTS:
    void keepsEveryField() {
        QList<JournalEntry> all = samples({1, 2, 3, 4, 5, 6, 7, 30, 105});
        {
            JournalBench bench(path_);
            QCOMPARE(bench.load().value(), {});
            QVERIFY(!bench.write(all));
        }
        JournalBench bench(path_);
        QCOMPARE(bench.entries(), all);
        QCOMPARE(bench.troubles.count(), 0);
    }

    void callsTakeEffectInOrder() {
        {
            UploadJournal journal(QFile::encodeName(path_));
            QList<int> answers;
            journal.load(this, [&](const auto& entries) { QVERIFY(entries.ok()); });
            const auto note = [&](int number) {
                return [&answers, number](const MaybeError& error) {
                    QVERIFY(!error);
                    answers.append(number);
                };
            };
            JournalEntry moved = sampleEntry(2);
            journal.write(samples({1, 2, 3, 4, 5}), this, note(1));
            journal.remove({3, 4, 99}, this, note(2));
            journal.write(samples({4}), this, note(3)); // is there again
            moved.place = -1;
            journal.write({moved});
            journal.write(samples({6}));
            journal.remove({6});
            journal.flush();
            JournalBench other(path_); // another program already sees it
            const QList<JournalEntry> left{moved, sampleEntry(1), sampleEntry(4), sampleEntry(5)};
            QCOMPARE(other.entries(), left);
            journal.write(samples({7}));
            QTRY_COMPARE(answers, (QList<int>{1, 2, 3}));
        }
        QCOMPARE(JournalBench(path_).entries().last(), sampleEntry(7)); // the end waited for it
    }

    void isForNobodyElse() {
        const QDir folder = QFileInfo(path_).dir();
        QVERIFY(QDir().mkpath(folder.path()));
        const mode_t before = ::umask(0);
        for (const bool isOld : {false, true}) {
            if (isOld) // by a copy, say
                QCOMPARE(::chmod(QFile::encodeName(path_), 0644), 0);
            JournalBench bench(path_);
            QVERIFY(bench.load().ok());
            for (const QFileInfo& file : folder.entryInfoList(QDir::Files)) {
                struct stat about {};
                QCOMPARE(::stat(QFile::encodeName(file.filePath()), &about), 0);
                QCOMPARE(about.st_mode & 07777, 0600U);
            }
        }
        const QString deep = folder_->filePath(QStringLiteral("new/one/") + journalFileName);
        QVERIFY(JournalBench(deep).load().ok());
        struct stat about {};
        QCOMPARE(::stat(QFile::encodeName(QFileInfo(deep).path()), &about), 0);
        QCOMPARE(about.st_mode & 07777, 0700U);
        ::umask(before);
    }

    // A location is as good as a password for a week.
    void removedLocationsLeaveNoTrace() {
        JournalBench bench(path_);
        QVERIFY(bench.load().ok());
        JournalEntry replaced = sampleEntry(2);
        QVERIFY(!bench.write(samples({1, 2, 4})));
        QVERIFY(contentsOf(path_).contains("location-1&"));
        QVERIFY(contentsOf(path_).contains("location-2&"));
        replaced.session.location.clear();
        QVERIFY(!bench.write({replaced}));
        QVERIFY(!bench.remove({1}));
        const QDir folder = QFileInfo(path_).dir();
        for (const QString& name : folder.entryList(QDir::Files)) {
            const QByteArray contents = contentsOf(folder.filePath(name));
            QVERIFY2(!contents.contains("location-1&") && !contents.contains("location-2&"), qPrintable(name));
        }
        QVERIFY(contentsOf(path_).contains("location-4&"));
    }

    void survivesBeingKilled() {
        std::set<qint64> written;
        std::set<qint64> removed;
        qint64 next = 1;
        for (const int lines : {1, 40, 7, 150, 63}) {
            QProcess writer;
            writer.start(QStringLiteral(QUENBY_JOURNAL_WRITER), {path_, QString::number(next)});
            QByteArray told;
            QVERIFY(QTest::qWaitFor(
                [&] {
                    told += writer.readAllStandardOutput();
                    return told.count('\n') >= lines;
                },
                60000));
            writer.kill();
            QVERIFY(writer.waitForFinished());
            told += writer.readAllStandardOutput();
            for (const QByteArray& line : told.first(told.lastIndexOf('\n')).split('\n')) {
                const qint64 round = line.mid(2).toLongLong();
                (line.startsWith('w') ? written : removed).insert(round);
                next = std::max(next, round + 1);
            }
            next += 10; // more may have been written than was told
            JournalBench bench(path_);
            const auto entries = bench.load();
            QVERIFY(entries.ok());
            QCOMPARE(bench.troubles.count(), 0);
            std::map<qint64, std::set<qint64>> found; // places in their call, by round
            for (const JournalEntry& entry : *entries) {
                QCOMPARE(entry, sampleEntry(entry.number));
                found[entry.number / samplesInACall].insert(entry.number % samplesInACall);
            }
            for (const qint64 round : written)
                QVERIFY2(found.contains(round), qPrintable(QString::number(round)));
            for (const qint64 round : removed)
                QVERIFY(!found[round].contains(1));
            for (auto& [round, places] : found) { // all of a call or nothing
                places.insert(1);
                QCOMPARE(qint64(places.size()), samplesInACall);
            }
        }
        QVERIFY(written.size() > 100);
    }
};

QTEST_GUILESS_MAIN(UploadJournalTest)
#include "tst_uploadjournal.moc"
