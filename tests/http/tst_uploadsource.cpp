// What an upload sends and where it stands: windows of files and bytes, the header fields, the plan.
#include "http/ContentRange.h"
#include "http/FileWindowDevice.h"
#include "http/UploadPlan.h"
#include "http/UploadSource.h"

#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <limits>

#include <sys/stat.h>

Q_DECLARE_METATYPE(std::optional<quenby::ByteRange>)

using namespace Qt::StringLiterals;

namespace quenby {
namespace {

constexpr quint64 largest = std::numeric_limits<quint64>::max();

std::shared_ptr<QFile> openFile(const QString& path) {
    auto file = std::make_shared<QFile>(path);
    return file->open(QIODevice::ReadOnly) ? file : nullptr;
}

} // namespace

class UploadSourceTest : public QObject {
    Q_OBJECT

    QTemporaryDir folder_;

    QString writeFile(const QByteArray& bytes) {
        const QString path = folder_.filePath(u"body"_s);
        QFile file(path);
        file.open(QIODevice::WriteOnly | QIODevice::Truncate);
        file.write(bytes);
        return path;
    }

private Q_SLOTS:
    void rangeIsScanned_data() {
        using Range = std::optional<ByteRange>;
        QTest::addColumn<QByteArray>("header");
        QTest::addColumn<Range>("range");
        const auto row = [](const char* header, Range range) { QTest::newRow(header) << QByteArray(header) << range; };
        row("bytes=0-262143", ByteRange{0, 262143});
        row("bytes=5-5", ByteRange{5, 5});
        row(" Bytes=0-9 ", ByteRange{0, 9});
        row("bytes=0-18446744073709551615", ByteRange{0, largest});
        row("bytes=0-18446744073709551616", ByteRange{0, largest});
        row("bytes=0-99999999999999999999999999", ByteRange{0, largest});
        for (const char* malformed :
             {"", "bytes", "bytes=", "bytes=-5", "bytes=5-", "bytes=a-b", "bytes=0-5,7-9", "bytes=0-5x", "bytes 0-5",
              "bytes=+0-5", "bytes=0--5", "bytes=0 - 5", "0-5", "bytes=9-5", "bytes=0x0-0x5", "octets=0-5"})
            row(malformed, std::nullopt);
        QTest::newRow("NUL inside") << QByteArray("bytes=0-5\0", 10) << Range();
    }

    void rangeIsScanned() {
        QFETCH(QByteArray, header);
        QFETCH(std::optional<ByteRange>, range);
        QVERIFY(scanRange(header) == range);
    }

    void pieceIsCut_data() {
        QTest::addColumn<quint64>("fullLength");
        QTest::addColumn<quint64>("chunkSize");
        QTest::addColumn<quint64>("offset");
        QTest::addColumn<QByteArray>("contentRange");
        const auto row = [](const char* name, quint64 full, quint64 chunk, quint64 offset, const char* range) {
            QTest::newRow(name) << full << chunk << offset << QByteArray(range);
        };
        row("remainder of 2499 folded in", 502499, 500000, 0, "bytes 0-502498/502499");
        row("remainder of 2500 stands alone", 502500, 500000, 0, "bytes 0-499999/502500");
        row("no chunking from the middle", 1000, largest, 400, "bytes 400-999/1000");
        row("hundred gigabytes", 100'000'000'000, 50000, 99'999'900'000, "bytes 99999900000-99999949999/100000000000");
        row("largest length", largest, largest - 1, 1, "bytes 1-18446744073709551614/18446744073709551615");
        row("everything sent", 1000, 500, 1000, "bytes */1000");
        row("chunk size zero counts as one", 10000, 0, 0, "bytes 0-0/10000");
    }

    void pieceIsCut() {
        QFETCH(quint64, fullLength);
        QFETCH(quint64, chunkSize);
        QFETCH(quint64, offset);
        const auto piece = UploadPlan(fullLength, chunkSize).pieceAt(offset);
        QTEST(piece.contentRange, "contentRange");
        QCOMPARE(piece.offset, offset);
    }

    void answersThatLeadNowhereEnd_data() {
        QTest::addColumn<QByteArrayList>("cycle");
        QTest::newRow("never a range") << QByteArrayList{""};
        QTest::newRow("always the same") << QByteArrayList{"bytes=0-99"};
        QTest::newRow("forth and back") << QByteArrayList{"bytes=0-99", "bytes=0-199", "bytes=0-299", ""};
    }

    void answersThatLeadNowhereEnd() {
        QFETCH(QByteArrayList, cycle);
        UploadPlan plan(1000, 100);
        for (int answer = 0; answer < 100; ++answer) {
            if (!plan.offsetAfter(cycle.at(answer % cycle.size())))
                return;
        }
        QFAIL("it would go on for ever");
    }

    void progressForgivesSetbacks() {
        UploadPlan plan(1'000'000, 100);
        for (int held = 100; held < 100'000; held += 100) { // every chunk needs four attempts
            for (const QByteArray& range : QByteArrayList{"", "", "bytes=0-" + QByteArray::number(held - 1)})
                QVERIFY(plan.offsetAfter(range));
        }
        for (int answer = 1; answer < UploadPlan::maximumFruitlessAnswers; ++answer)
            QVERIFY(plan.offsetAfter(""));
        plan.forgetFruitlessAnswers();
        QVERIFY(plan.offsetAfter(""));
    }

    void windowsEqualSlices() {
        QRandomGenerator random(4711);
        QByteArray whole(200'000, Qt::Uninitialized);
        for (char& byte : whole)
            byte = static_cast<char>(random.bounded(256));
        const auto file = openFile(writeFile(whole));
        QVERIFY(file->seek(77));
        const UploadSource fromFile(file);
        const UploadSource fromData(whole);
        QCOMPARE(fromFile.fullLength(), 200'000u);
        QCOMPARE(fromData.fullLength(), 200'000u);
        for (int round = 0; round < 200; ++round) {
            const auto offset = random.bounded(200'001);
            const auto length = round % 10 == 0 ? 0 : random.bounded(200'001 - offset);
            for (const UploadSource* source : {&fromFile, &fromData}) {
                const auto window = source->openWindow(offset, length);
                QCOMPARE(window->size(), length);
                QCOMPARE(window->readAll(), whole.sliced(offset, length));
                QCOMPARE(window->read(1), QByteArray());
                const auto from = length == 0 ? 0 : random.bounded(length);
                QVERIFY(window->seek(from));
                QCOMPARE(window->read(1000),
                         whole.sliced(offset, length).sliced(from).first(qMin(1000, length - from)));
                QVERIFY(!window->isSequential());
            }
        }
        QCOMPARE(file->pos(), 77); // nobody moved it
    }

    void memoryWindowsShareAndOutliveTheirSource() {
        QByteArray whole(1'000'000, 'a');
        const char* bytes = whole.constData();
        std::shared_ptr<QIODevice> window;
        {
            const UploadSource source(whole);
            window = source.openWindow(10, 20);
        }
        QCOMPARE(whole.constData(), bytes); // nobody detached it
        whole = QByteArray();
        QCOMPARE(window->readAll(), QByteArray(20, 'a'));
    }

    void shrunkFileIsAReadErrorAndGrownOneIsNot() {
        const QString path = writeFile(QByteArray(1000, 'x'));
        const UploadSource source(openFile(path));
        const auto window = source.openWindow(100, 900);
        QVERIFY(QFile(path).resize(5000));
        QCOMPARE(source.fullLength(), 1000u);
        QCOMPARE(window->read(10'000).size(), 900);
        QVERIFY(QFile(path).resize(150));
        QVERIFY(window->seek(0));
        char buffer[500];
        QCOMPARE(window->read(buffer, 500), 50);
        QCOMPARE(window->read(buffer, 500), -1);
        QVERIFY(window->errorString().contains(u"shorter"_s));
    }

    void closedFileIsAReadError() {
        const auto file = openFile(writeFile("bytes"));
        const auto window = UploadSource(file).openWindow(0, 5);
        file->close();
        char byte = 0;
        QCOMPARE(window->read(&byte, 1), -1);
        QVERIFY(window->errorString().contains(u"could not be read"_s));
    }

    void unusableSourcesAreRefused() {
        QVERIFY(UploadSource(std::shared_ptr<QFile>()).error()->is(URLErrorCode::requestBodyUnreadable));
        QVERIFY(UploadSource(std::make_shared<QFile>(writeFile("x"))).error()); // not open
        const QString pipe = folder_.filePath(u"pipe"_s);
        QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        const auto both = std::make_shared<QFile>(pipe);
        QVERIFY(both->open(QIODevice::ReadWrite | QIODevice::Unbuffered));
        QVERIFY(UploadSource(both).error());
        QVERIFY(!UploadSource(openFile(writeFile(""))).error()); // an empty file is one
    }
};

} // namespace quenby

QTEST_GUILESS_MAIN(quenby::UploadSourceTest)
#include "tst_uploadsource.moc"
