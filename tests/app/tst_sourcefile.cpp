// Local files before they are sent: what is refused with which words, changes while sending, folders, MD5 sums.

#include "app/uploads/transfer/FileDigest.h"
#include "app/uploads/transfer/SourceFile.h"

#include <QCryptographicHash>
#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace quenby;

class SourceFileTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        write("plain.txt", "hello");
        write("caf\xE9.txt", "latin");
        QCOMPARE(::mkfifo(at("pipe").constData(), 0600), 0);
        QCOMPARE(::symlink("nowhere", at("dangling").constData()), 0);
        QCOMPARE(::symlink("loop", at("loop").constData()), 0);
        QCOMPARE(::symlink("plain.txt", at("link").constData()), 0);
        QCOMPARE(::mkdir(at("sub").constData(), 0700), 0);
    }

    // The temporary folder can't remove what is not UTF-8.
    void cleanupTestCase() { ::unlink(at("caf\xE9.txt").constData()); }

    void refused_data() {
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<QString>("reason");
        const auto row = [](const QByteArray& path, const char* reason) {
            QTest::newRow(path.constData()) << path << QString::fromLatin1(reason);
        };
        row("missing", "no such file");
        row("plain.txt/below", "no folder");
        row("pipe", "is a pipe");
        row("dangling", "link to nothing");
        row("loop", "back to itself");
        row("sub", "is a folder");
        row("/dev/null", "is a device");
    }
    void refused() {
        QFETCH(QByteArray, path);
        QFETCH(QString, reason);
        const auto source = SourceFile::open(path.startsWith('/') ? path : at(path));
        QVERIFY(!source);
        QVERIFY2(source.error().description().contains(reason), qPrintable(source.error().description()));
        const auto facts = SourceFacts::of(path.startsWith('/') ? path : at(path)); // without opening it
        QVERIFY(!facts);
        QCOMPARE(facts.error().description(), source.error().description());
    }

    void titlesShowWhatWasReplaced() {
        QCOMPARE(SourceFile::open(at("caf\xE9.txt"))->title(), QStringLiteral("caf\uFFFD.txt"));
        QCOMPARE(SourceFile::open(at("link"))->title(), QStringLiteral("link"));
        QCOMPARE(SourceFile::open(at("link"))->handle()->readAll(), QByteArray("hello"));
    }

    void changesAreNoticed() {
        write("changing", "one");
        const auto source = SourceFile::open(at("changing"));
        QVERIFY(source && source->isUnchanged());
        QVERIFY(SourceFacts::of(at("changing")).value() == source->facts());
        QFile file(QFile::decodeName(at("changing")));
        QVERIFY(file.open(QIODevice::Append) && file.write("more") == 4);
        file.close();
        QVERIFY(!source->isUnchanged());
        QVERIFY(SourceFacts::of(at("changing")).value() != source->facts());
    }

    void sameSizeIsAChangeToo() {
        write("rewritten", "one");
        const auto source = SourceFile::open(at("rewritten"));
        const timespec times[2] = {{0, UTIME_OMIT}, {12345, 0}};
        QCOMPARE(::utimensat(AT_FDCWD, at("rewritten").constData(), times, 0), 0);
        QVERIFY(!source->isUnchanged());
    }

    void foldersGiveTheirFiles() {
        QVERIFY(isFolder(at("sub")) && !isFolder(at("plain.txt")));
        write("sub/b", "2");
        write("sub/a", "1");
        write("sub/.hidden", "3");
        QCOMPARE(::mkdir(at("sub/deeper").constData(), 0700), 0);
        const auto listing = filesInFolder(at("sub"));
        QVERIFY(listing);
        QCOMPARE(listing->files, (QList<QByteArray>{at("sub/.hidden"), at("sub/a"), at("sub/b")}));
        QCOMPARE(listing->skipped, 1);
        QVERIFY(!filesInFolder(at("missing")));
    }

    void digestIsThatOfTheWholeFile_data() {
        QTest::addColumn<int>("size");
        QTest::newRow("empty") << 0;
        QTest::newRow("one piece") << 1000;
        QTest::newRow("at the border of a piece") << 256 * 1024;
        QTest::newRow("several pieces") << 3 * 256 * 1024 + 7;
    }
    void digestIsThatOfTheWholeFile() {
        QFETCH(int, size);
        QByteArray content(size, 'q');
        for (int i = 0; i < size; i += 997)
            content[i] = char(i);
        write("summed", content);
        const auto source = SourceFile::open(at("summed"));
        source->handle()->read(10); // somebody else's position plays no role
        const qint64 position = source->handle()->pos();
        QObject context;
        QByteArray sum;
        FileDigest digest(source->handle(), &context,
                          [&sum](const Result<QByteArray>& md5) { sum = md5.valueOr("?"); });
        QTRY_VERIFY(!sum.isEmpty());
        QCOMPARE(sum, QCryptographicHash::hash(content, QCryptographicHash::Md5).toHex());
        QCOMPARE(source->handle()->pos(), position);
    }

    // While it computes it makes way for the window's thread, and it stops when nobody wants it any more.
    void digestThatIsGivenUp() {
        write("endless", {});
        QCOMPARE(::truncate(at("endless").constData(), Q_INT64_C(1) << 40), 0); // half an hour of nothing
        std::shared_ptr<QFile> file = SourceFile::open(at("endless"))->handle();
        const std::weak_ptr<QFile> isOpen = file;
        QObject context;
        bool isTold = false;
        auto digest =
            std::make_unique<FileDigest>(std::move(file), &context, [&isTold](const auto&) { isTold = true; });
        QTRY_VERIFY(mostPatientThread() > ::getpriority(PRIO_PROCESS, 0));
        QVERIFY(!isOpen.expired());
        digest.reset();
        QTRY_VERIFY(isOpen.expired());
        QCoreApplication::processEvents();
        QVERIFY(!isTold);
    }

private:
    // The highest niceness of this process's threads.
    static int mostPatientThread() {
        int niceness = -20;
        for (const QString& thread :
             QDir(QStringLiteral("/proc/self/task")).entryList(QDir::Dirs | QDir::NoDotAndDotDot))
            niceness = std::max(niceness, ::getpriority(PRIO_PROCESS, thread.toUInt()));
        return niceness;
    }

    QByteArray at(const QByteArray& name) const { return QFile::encodeName(folder_.path()) + '/' + name; }
    void write(const QByteArray& name, const QByteArray& content) const {
        FILE* file = ::fopen(at(name).constData(), "w");
        QVERIFY(file);
        ::fwrite(content.constData(), 1, size_t(content.size()), file);
        ::fclose(file);
    }

    QTemporaryDir folder_;
};

QTEST_GUILESS_MAIN(SourceFileTest)
#include "tst_sourcefile.moc"
