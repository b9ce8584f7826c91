// A copy of a recording is whole under its name, or not there; and the texts of its length.
#include "recording/review/DurationText.h"
#include "recording/review/MovieCopy.h"
#include "tests/support/TroubledDisk.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

using namespace quenby;
using namespace quenby::testing;
using namespace std::chrono_literals;
using End = MovieCopyResult::End;

namespace {

QByteArray contentOf(const QByteArray& path) {
    QFile file(QFile::decodeName(path));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray madeFile(const QTemporaryDir& folder, const QString& name, const QByteArray& content) {
    QFile file(folder.filePath(name));
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size() ? QFile::encodeName(file.fileName())
                                                                                    : QByteArray();
}

QStringList everythingIn(const QString& folder) {
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

const std::atomic_bool goesOn{false};

} // namespace

class tst_moviecopy : public QObject {
    Q_OBJECT

    QTemporaryDir folder_;
    const QByteArray content_ = QByteArray(5'000'000, 'm') + "end";
    QByteArray movie_;

    QByteArray placeFor(const QString& name) const { return QFile::encodeName(folder_.filePath(name)); }

private Q_SLOTS:
    void initTestCase() { movie_ = madeFile(folder_, QStringLiteral("movie.mov"), content_); }
    void init() { QVERIFY(!movie_.isEmpty()); }

    void lengthsInWords_data() {
        QTest::addColumn<double>("seconds");
        QTest::addColumn<QString>("text");
        QTest::newRow("none") << 0.0 << QStringLiteral("less than 1 second");
        QTest::newRow("short") << 0.4 << QStringLiteral("less than 1 second");
        QTest::newRow("nonsense") << -3.0 << QStringLiteral("less than 1 second");
        QTest::newRow("one") << 1.99 << QStringLiteral(" 1 second");
        QTest::newRow("five") << 5.0 << QStringLiteral(" 5 seconds");
        QTest::newRow("59") << 59.0 << QStringLiteral("59 seconds");
        QTest::newRow("60") << 60.0 << QStringLiteral(" 1 minutes  0 seconds");
        QTest::newRow("61") << 61.0 << QStringLiteral(" 1 minute  1 second");
        QTest::newRow("120") << 120.0 << QStringLiteral(" 2 minutes  0 seconds");
        QTest::newRow("661") << 661.0 << QStringLiteral("11 minute  1 second");
        QTest::newRow("3601") << 3601.0 << QStringLiteral(" 1 hour  1 second");
        QTest::newRow("long") << 100.0 * 3600 + 725 << QStringLiteral("100 hours 12 minutes  5 seconds");
    }
    void lengthsInWords() {
        QFETCH(double, seconds);
        QTEST(stringFromTimeInterval(seconds), "text");
    }

    void timesInDigits() {
        QCOMPARE(clockText(999ms), QStringLiteral("0:00"));
        QCOMPARE(clockText(754s), QStringLiteral("12:34"));
        QCOMPARE(clockText(3723s), QStringLiteral("1:02:03"));
    }

    // The name need not be text in any encoding.
    void aCopyIsWholeAndAlone() {
        const QByteArray destination = placeFor(QStringLiteral("copies")) + "/c\xff\xfe #.mov";
        QVERIFY(QDir(folder_.path()).mkdir(QStringLiteral("copies")));
        QCOMPARE(copyMovie(movie_, destination, goesOn).end, End::copied);
        struct stat status {};
        QCOMPARE(::stat(destination.constData(), &status), 0);
        QCOMPARE(status.st_size, off_t(content_.size()));
        QCOMPARE(contentOf(movie_), content_);
        QCOMPARE(::rename(destination.constData(), placeFor(QStringLiteral("read.mov")).constData()), 0);
        QCOMPARE(contentOf(placeFor(QStringLiteral("read.mov"))), content_);
        QVERIFY(everythingIn(folder_.filePath(QStringLiteral("copies"))).isEmpty());
    }

    void nothingIsReplaced() {
        const QByteArray taken = madeFile(folder_, QStringLiteral("taken.mov"), "mine");
        QVERIFY(QFile::link(QStringLiteral("nowhere"), folder_.filePath(QStringLiteral("link.mov"))));
        const QStringList before = everythingIn(folder_.path());
        for (const QByteArray& destination : {taken, placeFor(QStringLiteral("link.mov")), movie_}) {
            const MovieCopyResult result = copyMovie(movie_, destination, goesOn);
            QCOMPARE(result.end, End::failed);
            QVERIFY2(result.reason.contains(QFile::decodeName(destination)), qPrintable(result.reason));
        }
        QCOMPARE(contentOf(taken), "mine");
        QCOMPARE(contentOf(movie_), content_);
        QCOMPARE(everythingIn(folder_.path()), before);
    }

    void whatStandsInTheWayIsTold() {
        QCOMPARE(copyMovie(movie_ + ".gone", placeFor(QStringLiteral("x.mov")), goesOn).end, End::movieGone);
        const MovieCopyResult noFolder = copyMovie(movie_, placeFor(QStringLiteral("no/x.mov")), goesOn);
        QCOMPARE(noFolder.end, End::failed);
        QVERIFY(noFolder.reason.contains(QStringLiteral("not there any more")));
        // A place where nobody may write, not even the administrator.
        const MovieCopyResult notWritable = copyMovie(movie_, "/proc/x.mov", goesOn);
        QCOMPARE(notWritable.end, End::failed);
        QVERIFY(notWritable.reason.contains(QStringLiteral("/proc")));
    }

    void aReadOnlyFolderIsTold() {
        if (::geteuid() == 0)
            QSKIP("The administrator may write everywhere");
        const QString closed = folder_.filePath(QStringLiteral("closed"));
        QVERIFY(QDir().mkdir(closed));
        QVERIFY(QFile::setPermissions(closed, QFile::ReadOwner | QFile::ExeOwner));
        const MovieCopyResult result = copyMovie(movie_, QFile::encodeName(closed) + "/x.mov", goesOn);
        QFile::setPermissions(closed, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        QCOMPARE(result.end, End::failed);
        QVERIFY2(result.reason.contains(QStringLiteral("cannot be written")), qPrintable(result.reason));
        QVERIFY(everythingIn(closed).isEmpty());
    }

    void aFullDiskLeavesNothing() {
        const SmallDisk disk(1);
        if (!disk.isThere())
            QSKIP("Only the administrator can make a small disk");
        const MovieCopyResult result =
            copyMovie(movie_, QFile::encodeName(disk.filePath(QStringLiteral("x.mov"))), goesOn);
        const QStringList left = everythingIn(disk.path());
        QCOMPARE(result.end, End::failed);
        QVERIFY2(result.reason.contains(QStringLiteral("no room")), qPrintable(result.reason));
        QVERIFY(left.isEmpty());
    }

    void aStoppedCopyLeavesNothing() {
        const QStringList before = everythingIn(folder_.path());
        QCOMPARE(copyMovie(movie_, placeFor(QStringLiteral("stopped.mov")), true).end, End::stopped);
        QCOMPARE(everythingIn(folder_.path()), before);
    }
};

QTEST_GUILESS_MAIN(tst_moviecopy)
#include "tst_moviecopy.moc"
