// The multipart document and the streams that it is made of.
#include "http/GTMGatherInputStream.h"
#include "http/GTMMIMEDocument.h"
#include "http/GTMReadMonitorInputStream.h"
#include "tests/http/BrokenDevice.h"

#include <QBuffer>
#include <QRandomGenerator>
#include <QTest>
#include <QThread>

using namespace Qt::StringLiterals;

namespace quenby {
namespace {

std::shared_ptr<QIODevice> deviceOf(const QByteArray& bytes) {
    auto device = std::make_shared<QBuffer>();
    device->setData(bytes);
    device->open(QIODevice::ReadOnly);
    return device;
}

QByteArray randomBytes(QRandomGenerator& random, int maxLength) {
    QByteArray bytes(random.bounded(maxLength + 1), Qt::Uninitialized);
    for (char& byte : bytes)
        byte = static_cast<char>(random.bounded(256));
    return bytes;
}

HeaderFields headers(std::initializer_list<std::pair<const char*, const char*>> fields) {
    HeaderFields made;
    for (const auto& [name, value] : fields)
        made.append(name, value);
    return made;
}

} // namespace

class MIMEStreamsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void documentIsAssembledPartByPart() {
        GTMMIMEDocument document;
        document.addPartWithHeaders(headers({{"content-type", "text/plain"}, {"Content-ID", "\xc3\xa9t\xc3\xa9"}}),
                                    "first");
        document.addPartWithHeaders(headers({{"b", "2"}, {"A", "1"}, {"C", "3"}}), deviceOf("second"));
        document.addPartWithHeaders({}, QByteArray());
        const MIMEBody body = document.generateInputStream();
        QCOMPARE(body.boundary, "END_OF_PART");
        const QByteArray expected =
            "\r\n--END_OF_PART\r\nContent-ID: \xc3\xa9t\xc3\xa9\r\ncontent-type: text/plain\r\n\r\n"
            "first"
            "\r\n--END_OF_PART\r\nA: 1\r\nb: 2\r\nC: 3\r\n\r\nsecond"
            "\r\n--END_OF_PART\r\n\r\n"
            "\r\n--END_OF_PART--\r\n";
        QCOMPARE(body.inputStream->readAll(), expected);
        QCOMPARE(body.length, expected.size());
        QVERIFY(body.inputStream->atEnd());
        QVERIFY(body.inputStream->seek(0)); // a retry sends it again
        QCOMPARE(body.inputStream->readAll(), expected);
        const qsizetype separators = 3 * qstrlen("\r\n--END_OF_PART\r\n") + qstrlen("\r\n--END_OF_PART--\r\n");
        QCOMPARE(document.length(), expected.size() - separators);
    }

    void documentWithoutPartsIsTheTerminator() {
        const MIMEBody body = GTMMIMEDocument().generateInputStream();
        QCOMPARE(body.inputStream->readAll(), "\r\n--END_OF_PART--\r\n");
        QCOMPARE(body.length, 19);
    }

    void boundaryOccursInNoPart_data() {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<bool>("asDevice");
        QTest::addColumn<QByteArray>("boundary"); // with the seed 0xabc
        const QByteArray plain = "END_OF_PART";
        const QByteArray numbered = "END_OF_PART_00000abc";
        QTest::newRow("prefix only") << QByteArray("END_OF_PAR") << false << plain;
        QTest::newRow("in bytes") << QByteArray("xxEND_OF_PARTxx") << false << numbered;
        QTest::newRow("overlapping start") << QByteArray("EEND_OF_PART") << false << numbered;
        QTest::newRow("every candidate") << numbered << false << QByteArray("00000abc_mivorak_00000abc");
        // A device is looked through in blocks of 64 KiB; the boundary lies before, across and after their border.
        for (int offset : {0, 65536 - 11, 65536 - 10, 65536 - 1, 65536, 131072 - 5})
            QTest::addRow("in a device at %d", offset) << QByteArray(offset, 'x') + plain << true << numbered;
        QTest::newRow("not in a device") << QByteArray(65531, 'x') + "END_OF_PAR" + QByteArray(70000, 'x') << true
                                         << plain;
    }

    void boundaryOccursInNoPart() {
        QFETCH(QByteArray, body);
        QFETCH(bool, asDevice);
        GTMMIMEDocument document;
        document.seedRandomWith(0xabc);
        if (asDevice)
            document.addPartWithHeaders({}, deviceOf(body));
        else
            document.addPartWithHeaders({}, body);
        QTEST(document.uniqueBoundary(), "boundary");
        QTEST(document.generateInputStream().boundary, "boundary");
    }

    void boundaryInAHeaderIsRejectedToo() {
        GTMMIMEDocument document;
        document.addPartWithHeaders(headers({{"X-Note", "END_OF_PART"}}), "body");
        const QByteArray boundary = document.uniqueBoundary();
        QVERIFY(boundary.startsWith("END_OF_PART_"));
        QCOMPARE(boundary.size(), 20);
        QVERIFY2(document.uniqueBoundary() != boundary, "without a seed the number is random");
    }

    // Against plain concatenation, with buffers and seeks of every size.
    void gatherStreamEqualsConcatenation() {
        QRandomGenerator random(20240607);
        for (int round = 0; round < 300; ++round) {
            std::vector<GTMGatherInputStream::Piece> pieces;
            QByteArray whole;
            for (int count = random.bounded(7); count > 0; --count) {
                const QByteArray bytes = randomBytes(random, round % 3 == 0 ? 3 : 200);
                whole += bytes;
                if (random.bounded(2) != 0)
                    pieces.emplace_back(bytes);
                else
                    pieces.emplace_back(deviceOf(bytes));
            }
            GTMGatherInputStream stream(std::move(pieces));
            QCOMPARE(stream.size(), whole.size());
            for (int passes = 0; passes < 3; ++passes) {
                const qint64 start = passes == 0 ? 0 : random.bounded(static_cast<int>(whole.size()) + 1);
                QVERIFY(stream.seek(start));
                QByteArray read;
                QByteArray buffer(random.bounded(1, 90), Qt::Uninitialized);
                qint64 count = 0;
                while ((count = stream.read(buffer.data(), buffer.size())) > 0) {
                    QVERIFY2(count == buffer.size() || stream.atEnd(), "a read stopped at a border");
                    read += buffer.first(count);
                }
                QCOMPARE(count, 0);
                QVERIFY(stream.atEnd());
                QCOMPARE(read, whole.sliced(start));
            }
            QVERIFY(!stream.seek(whole.size() + 1));
        }
    }

    void gatherStreamReportsABrokenPiece_data() {
        QTest::addColumn<bool>("fails");
        QTest::addColumn<QString>("reason");
        QTest::newRow("fails") << true << u"the disk is gone"_s;
        QTest::newRow("ends early") << false << u"ended before its announced length"_s;
    }

    void gatherStreamReportsABrokenPiece() {
        QFETCH(bool, fails);
        QFETCH(QString, reason);
        GTMGatherInputStream stream(
            {QByteArray("ab"), std::make_shared<testing::BrokenDevice>(100, 5, fails), QByteArray("z")});
        QByteArray buffer(50, Qt::Uninitialized);
        QCOMPARE(stream.read(buffer.data(), buffer.size()), 7); // what there was
        QCOMPARE(stream.read(buffer.data(), buffer.size()), -1);
        QVERIFY2(stream.errorString().contains(reason), qPrintable(stream.errorString()));
    }

    void monitorTellsEveryPieceAtOnceOnItsThread() {
        const auto monitor = GTMReadMonitorInputStream::inputStreamWithStream(deviceOf("abcdef"));
        QObject delegate;
        QByteArrayList pieces;
        const void* seenAt = nullptr;
        monitor->setReadDelegate(&delegate, [&](QByteArrayView bytes) {
            pieces.append(bytes.toByteArray());
            seenAt = bytes.data();
        });
        char buffer[4];
        QCOMPARE(monitor->read(buffer, 4), 4);
        QCOMPARE(pieces, QByteArrayList({"abcd"}));
        QCOMPARE(seenAt, static_cast<const void*>(buffer)); // a view, not a copy
        QCOMPARE(monitor->read(buffer, 4), 2);
        QCOMPARE(monitor->read(buffer, 4), 0);
        QCOMPARE(pieces, QByteArrayList({"abcd", "ef"})); // nothing is told of the empty read
        QVERIFY(monitor->seek(1));
        QCOMPARE(monitor->read(3), "bcd");
        QCOMPARE(monitor->size(), 6);
    }

    void monitorTellsOtherThreadsReadsLater() {
        const auto monitor = GTMReadMonitorInputStream::inputStreamWithStream(deviceOf("abcdef"));
        QObject delegate;
        QByteArray told;
        QThread* toldOn = nullptr;
        monitor->setReadDelegate(&delegate, [&](QByteArrayView bytes) {
            told += bytes.toByteArray();
            toldOn = QThread::currentThread();
        });
        const std::unique_ptr<QThread> reader(QThread::create([&monitor] {
            monitor->read(4);
            monitor->read(4);
        }));
        reader->start();
        QVERIFY(reader->wait());
        QCOMPARE(told, "");
        QTRY_COMPARE(told, "abcdef");
        QCOMPARE(toldOn, QThread::currentThread());
    }

    void monitorForgetsADeadDelegateAndPassesErrorsOn() {
        const auto monitor =
            GTMReadMonitorInputStream::inputStreamWithStream(std::make_shared<testing::BrokenDevice>(10, 2, true));
        auto delegate = std::make_unique<QObject>();
        int calls = 0;
        monitor->setReadDelegate(delegate.get(), [&calls](QByteArrayView) { ++calls; });
        delegate.reset();
        char buffer[4];
        QCOMPARE(monitor->read(buffer, 4), 2);
        QCOMPARE(calls, 0);
        QCOMPARE(monitor->read(buffer, 4), -1);
        QCOMPARE(monitor->errorString(), u"the disk is gone"_s);
    }
};

} // namespace quenby

QTEST_GUILESS_MAIN(quenby::MIMEStreamsTest)
#include "tst_mimestreams.moc"
