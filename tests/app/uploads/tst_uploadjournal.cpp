// What is written down of the uploads, and what becomes of it when the program is killed, the disk is full or the file
// is not what it should be.

#include "app/uploads/journal/UploadJournal.h"
#include "tests/app/uploads/JournalSamples.h"
#include "tests/support/TroubledDisk.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

#include <map>
#include <optional>
#include <set>

#include <sys/stat.h>
#include <unistd.h>

using namespace quenby;
using namespace quenby::testing;

namespace {

const QString fileName = QStringLiteral("uploads.sqlite");

// A journal whose calls are waited for.
class Bench {
public:
    explicit Bench(const QString& path)
        : journal(QFile::encodeName(path)) {
        QObject::connect(&journal, &UploadJournal::troubled, [this](const Error& error) { troubles.append(error); });
    }

    Result<QList<JournalEntry>> load() {
        std::optional<Result<QList<JournalEntry>>> answer;
        journal.load(&journal, [&](const auto& entries) { answer = entries; });
        return wait(answer) ? *answer : Error(errorDomain::posix, 0);
    }
    QList<JournalEntry> entries() { return load().valueOr({}); }
    MaybeError write(const QList<JournalEntry>& entries) {
        std::optional<MaybeError> answer;
        journal.write(entries, &journal, [&](const MaybeError& error) { answer = error; });
        return wait(answer) ? *answer : Error(errorDomain::posix, 0);
    }
    MaybeError remove(const QList<qint64>& numbers) {
        std::optional<MaybeError> answer;
        journal.remove(numbers, &journal, [&](const MaybeError& error) { answer = error; });
        return wait(answer) ? *answer : Error(errorDomain::posix, 0);
    }

    UploadJournal journal;
    QList<Error> troubles;

private:
    template <typename Answer>
    static bool wait(const Answer& answer) {
        return QTest::qWaitFor([&] { return answer.has_value(); }, 20000);
    }
};

QList<JournalEntry> samples(std::initializer_list<qint64> numbers) {
    QList<JournalEntry> entries;
    for (const qint64 number : numbers)
        entries.append(sampleEntry(number));
    return entries;
}

QByteArray contentsOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

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

class UploadJournalTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        folder_ = std::make_unique<QTemporaryDir>();
        path_ = folder_->filePath(QStringLiteral("data/uploads/") + fileName); // neither folder is there
    }

    void keepsEveryField() {
        QList<JournalEntry> all = samples({1, 2, 3, 4, 5, 6, 7, 30, 105});
        {
            Bench bench(path_);
            QCOMPARE(bench.load().value(), {});
            QVERIFY(!bench.write(all));
        }
        Bench bench(path_);
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
            Bench other(path_); // another program already sees it
            const QList<JournalEntry> left{moved, sampleEntry(1), sampleEntry(4), sampleEntry(5)};
            QCOMPARE(other.entries(), left);
            journal.write(samples({7}));
            QTRY_COMPARE(answers, (QList<int>{1, 2, 3}));
        }
        QCOMPARE(Bench(path_).entries().last(), sampleEntry(7)); // the end waited for it
    }

    void isForNobodyElse() {
        const QDir folder = QFileInfo(path_).dir();
        QVERIFY(QDir().mkpath(folder.path()));
        const mode_t before = ::umask(0);
        for (const bool isOld : {false, true}) {
            if (isOld) // by a copy, say
                QCOMPARE(::chmod(QFile::encodeName(path_), 0644), 0);
            Bench bench(path_);
            QVERIFY(bench.load().ok());
            for (const QFileInfo& file : folder.entryInfoList(QDir::Files)) {
                struct stat about {};
                QCOMPARE(::stat(QFile::encodeName(file.filePath()), &about), 0);
                QCOMPARE(about.st_mode & 07777, 0600U);
            }
        }
        const QString deep = folder_->filePath(QStringLiteral("new/one/") + fileName);
        QVERIFY(Bench(deep).load().ok());
        struct stat about {};
        QCOMPARE(::stat(QFile::encodeName(QFileInfo(deep).path()), &about), 0);
        QCOMPARE(about.st_mode & 07777, 0700U);
        ::umask(before);
    }

    // A location is as good as a password for a week.
    void removedLocationsLeaveNoTrace() {
        Bench bench(path_);
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
            Bench bench(path_);
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
            Bench bench(path_);
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
        Bench bench(path_);
        const auto entries = bench.load();
        QVERIFY(entries.ok());
        QCOMPARE(entries.value(), {});
        QTRY_COMPARE(bench.troubles.count(), 1);
        const QDir folder = QFileInfo(path_).dir();
        const QStringList aside = folder.entryList({fileName + QLatin1Char('.') + word + QStringLiteral("-2*")});
        QCOMPARE(aside.size(), 1);
        QCOMPARE(contentsOf(folder.filePath(aside.first())), before);
        const QString reason = bench.troubles.first().description();
        QVERIFY2(reason.contains(aside.first()), qPrintable(reason));
        QVERIFY(!bench.write(samples({1})));
        QCOMPARE(Bench(path_).entries(), samples({1}));
    }

    // Whatever happens to the file meanwhile: what was written stays written.
    void isWrittenAnewWhenItIsGone_data() {
        QTest::addColumn<QString>("kind");
        for (const char* kind : {"deleted", "its folder deleted", "damaged"})
            QTest::newRow(kind) << QString::fromLatin1(kind);
    }
    void isWrittenAnewWhenItIsGone() {
        QFETCH(QString, kind);
        Bench bench(path_);
        QVERIFY(bench.load().ok());
        QVERIFY(!bench.write(samples({1, 2})));
        if (kind == QLatin1String("deleted"))
            QVERIFY(QFile::remove(path_));
        else if (kind == QLatin1String("damaged"))
            QVERIFY(overwrite(path_, 0, QByteArray(contentsOf(path_).size(), 'x')));
        else
            QVERIFY(QFileInfo(path_).dir().removeRecursively());
        QVERIFY(!bench.write(samples({3})));
        QCOMPARE(Bench(path_).entries(), samples({1, 2, 3}));
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
        const QString path = isWholeDisk ? disk.filePath(fileName) : path_;
        std::optional<FileSizeLimit> limit;
        QList<JournalEntry> large;
        for (qint64 number = 10; number < 20; ++number) {
            large.append(sampleEntry(number));
            large.last().request = QByteArray(20000, 'r');
        }
        {
            Bench bench(path);
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
            Bench bench(path); // can be read without any
            QCOMPARE(bench.entries(), samples({1, 2}));
            QVERIFY(bench.write(large));
            limit.reset();
            if (isWholeDisk)
                QVERIFY(QFile::remove(disk.filePath(QStringLiteral("filler"))));
            QVERIFY(!bench.remove({2})); // takes the rest with it
        }
        QCOMPARE(Bench(path).entries(), samples({1}) + large);
    }

    void canBeReadWhereNothingCanBeWritten() {
        const SmallDisk disk(1); // permissions mean nothing to the administrator
        if (!disk.isThere() && ::geteuid() == 0)
            QSKIP("no disk can be mounted here");
        const QString folder = disk.isThere() ? disk.path() : folder_->path();
        const QString path = folder + QLatin1Char('/') + fileName;
        const auto setReadOnly = [&](bool isReadOnly) {
            const QByteArray place = QFile::encodeName(folder);
            if (disk.isThere())
                return ::mount("none", place, nullptr, MS_REMOUNT | (isReadOnly ? MS_RDONLY : 0), "size=1m") == 0;
            return ::chmod(place, isReadOnly ? 0500 : 0700) == 0 &&
                   ::chmod(QFile::encodeName(path), isReadOnly ? 0400 : 0600) == 0;
        };
        {
            Bench bench(path);
            QVERIFY(bench.load().ok());
            QVERIFY(!bench.write(samples({1})));
        }
        QVERIFY(setReadOnly(true));
        Bench bench(path);
        QCOMPARE(bench.entries(), samples({1}));
        QVERIFY(bench.write(samples({2})));
        QVERIFY(bench.write(samples({3})));
        QCOMPARE(bench.troubles.count(), 1);
        QCOMPARE(bench.troubles.first().code(), EACCES);
        Bench elsewhere(folder + QStringLiteral("/missing/uploads.sqlite"));
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
            Bench bench(path_);
            QVERIFY(bench.load().ok());
            QVERIFY(!bench.write(samples({1, 2})));
        }
        const QString folder = QFileInfo(path_).path();
        const QString away = folder_->filePath(QStringLiteral("away"));
        QVERIFY(QFile::rename(folder, away));
        QFile obstacle(folder);
        QVERIFY(obstacle.open(QIODevice::WriteOnly));
        Bench bench(path_);
        QVERIFY(!bench.load().ok());
        QVERIFY(obstacle.remove());
        QVERIFY(QFile::rename(away, folder));
        JournalEntry mine = sampleEntry(1);
        mine.account = QStringLiteral("another");
        QVERIFY(bench.write({mine}));
        QCOMPARE(Bench(path_).entries(), samples({1, 2}));
    }

private:
    std::unique_ptr<QTemporaryDir> folder_;
    QString path_;
};

QTEST_GUILESS_MAIN(UploadJournalTest)
#include "tst_uploadjournal.moc"
