// The resumable upload protocol, against the real program.
#include "tests/localdrive/LocalClient.h"

#include <QCryptographicHash>
#include <QDir>
#include <QTest>

#include <limits>

using namespace quenby::testing;
using namespace Qt::StringLiterals;

namespace {

// Bytes that repeat nowhere at a multiple of the server's piece sizes.
QByteArray content(qsizetype size) {
    QByteArray bytes(size, Qt::Uninitialized);
    quint32 state = 1;
    for (char& byte : bytes) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<char>(state >> 24);
    }
    return bytes;
}

QString md5(const QByteArray& bytes) {
    return QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Md5).toHex());
}

QString md5Of(const RawReply& reply) { return jsonOf(reply.body)["result"_L1]["md5Checksum"_L1].toString(); }

} // namespace

class TestLocalUploads final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        QVERIFY2(drive_.start(), drive_.log());
        client_.emplace(drive_);
    }

    void arrivesWholeOrInPieces_data() {
        QTest::addColumn<QList<qsizetype>>("pieces");
        QTest::newRow("empty") << QList<qsizetype>{};
        QTest::newRow("one byte") << QList<qsizetype>{1};
        QTest::newRow("whole") << QList<qsizetype>{3'000'000};
        QTest::newRow("pieces") << QList<qsizetype>{262'144, 1, 50'000, 262'145};
    }
    void arrivesWholeOrInPieces() {
        QFETCH(QList<qsizetype>, pieces);
        const qsizetype total = std::accumulate(pieces.begin(), pieces.end(), qsizetype{0});
        const QByteArray bytes = content(total);
        const QString title = QString::fromLatin1(QTest::currentDataTag());
        const RawReply announced = RawHttp::exchange(drive_.url(), client_->announceRequest(total, title));
        QCOMPARE(announced.status, 200);
        QCOMPARE(announced.body, QByteArray());
        QVERIFY(announced.header("Location").startsWith(drive_.url().toEncoded()));
        const QByteArray target = LocalClient::targetOf(announced);

        RawReply last = total == 0 ? client_->askHeld(target, 0) : RawReply();
        qsizetype first = 0;
        for (const qsizetype size : pieces) {
            last = client_->put(target, bytes.mid(first, size), first, total);
            first += size;
            if (first < total) {
                QCOMPARE(last.status, 308);
                QCOMPARE(last.header("Range"), "bytes=0-" + QByteArray::number(first - 1));
            }
        }
        QCOMPARE(last.status, 200);
        QCOMPARE(jsonOf(last.body)["id"_L1].toString(), u"call-1"_s);
        QCOMPARE(md5Of(last), md5(bytes));

        const RawReply again = client_->askHeld(target, total);
        QCOMPARE(again.status, 200);
        QCOMPARE(jsonOf(again.body), jsonOf(last.body));
        QCOMPARE(client_->filesNamed(title).size(), 1);
    }

    void saysWhereToGoOn_data() {
        QTest::addColumn<qint64>("first");
        QTest::addColumn<qint64>("length");
        QTest::addColumn<qint64>("heldAfter");
        QTest::newRow("continues") << qint64{1000} << qint64{500} << qint64{1500};
        QTest::newRow("overlaps") << qint64{400} << qint64{1000} << qint64{1400};
        QTest::newRow("held already") << qint64{0} << qint64{700} << qint64{1000};
        QTest::newRow("leaves a gap") << qint64{1001} << qint64{500} << qint64{1000};
    }
    void saysWhereToGoOn() {
        QFETCH(qint64, first);
        QFETCH(qint64, length);
        QFETCH(qint64, heldAfter);
        const QByteArray bytes = content(2000);
        const QByteArray target = client_->announce(2000, u"pieces"_s);
        QVERIFY(client_->askHeld(target, 2000).header("Range").isEmpty());
        QCOMPARE(client_->put(target, bytes.left(1000), 0, 2000).status, 308);
        const RawReply reply = client_->put(target, bytes.mid(first, length), first, 2000);
        QCOMPARE(reply.status, 308);
        QCOMPARE(reply.header("Range"), "bytes=0-" + QByteArray::number(heldAfter - 1));
        QCOMPARE(md5Of(client_->put(target, bytes.mid(heldAfter), heldAfter, 2000)), md5(bytes));
    }

    void refuses_data() {
        QTest::addColumn<QByteArray>("range");
        QTest::addColumn<QByteArray>("header");
        QTest::addColumn<int>("status");
        QTest::newRow("other length") << QByteArray("bytes 0-3/11") << QByteArray() << 400;
        QTest::newRow("unknown length") << QByteArray("bytes 0-3/*") << QByteArray() << 400;
        QTest::newRow("backwards") << QByteArray("bytes 3-0/10") << QByteArray() << 400;
        QTest::newRow("past the end") << QByteArray("bytes 7-10/10") << QByteArray() << 400;
        QTest::newRow("fewer bytes than said") << QByteArray("bytes 0-8/10") << QByteArray() << 400;
        QTest::newRow("nonsense") << QByteArray("0-3") << QByteArray() << 400;
        QTest::newRow("bad token") << QByteArray("bytes 0-3/10") << QByteArray("Authorization: Bearer x") << 401;
    }
    void refuses() {
        QFETCH(QByteArray, range);
        QFETCH(QByteArray, header);
        QFETCH(int, status);
        const QByteArray target = client_->announce(10, u"refused"_s);
        QList<QByteArray> headers{"Content-Range: " + range};
        if (!header.isEmpty())
            headers.append(header);
        // The refused body must not be taken for a request: the connection stays good.
        RawHttp connection(drive_.url());
        QVERIFY(connection.send(RawHttp::request("PUT", target, headers, "0123")));
        QCOMPARE(connection.readReply().status, status);
        QVERIFY(connection.send(LocalClient::putRequest(target, "0123456789", 0, 10)));
        QCOMPARE(connection.readReply().status, 200);
    }

    void announcingNeedsALengthWithinTheQuota() {
        QByteArray request = client_->announceRequest(10, u"x"_s);
        request.replace("X-Upload-Content-Length: 10", "X-Unknown: 10");
        QCOMPARE(RawHttp::exchange(drive_.url(), request).status, 400);
        for (const qint64 tooMuch : {qint64{16} << 30, std::numeric_limits<qint64>::max()}) {
            const RawReply refused = RawHttp::exchange(drive_.url(), client_->announceRequest(tooMuch, u"x"_s));
            QCOMPARE(refused.status, 403);
            QVERIFY(refused.body.contains("quotaExceeded"));
            QCOMPARE(refused.header("Location"), QByteArray());
        }
    }

    void unknownLocationsAreNotFound() {
        QCOMPARE(client_->askHeld("/upload/rpc?uploadType=resumable&upload_id=unknown", 10).status, 404);
    }

    // What arrived before the connection died is held, to the byte.
    void brokenConnectionKeepsItsBytes() {
        const QByteArray bytes = content(1'000'000);
        const QByteArray target = client_->announce(bytes.size(), u"broken"_s);
        {
            RawHttp connection(drive_.url());
            const QByteArray request = LocalClient::putRequest(target, bytes, 0, bytes.size());
            QVERIFY(connection.send(request.left(request.size() - bytes.size() + 700'001)));
        }
        QTRY_COMPARE(client_->held(target, bytes.size()), 700'001);
        QCOMPARE(md5Of(client_->put(target, bytes.mid(700'001), 700'001, bytes.size())), md5(bytes));
    }

    void killedInTheMiddleOfAPut() {
        const QByteArray bytes = content(3'000'000);
        const QByteArray target = client_->announce(bytes.size(), u"killed"_s);
        RawHttp connection(drive_.url());
        const QByteArray request = LocalClient::putRequest(target, bytes, 0, bytes.size());
        QVERIFY(connection.send(request.left(2'000'000)));
        QTRY_VERIFY(client_->held(target, bytes.size()) > 1'000'000);
        const qint64 confirmed = client_->held(target, bytes.size());
        const QUrl before = drive_.url();
        drive_.kill();
        QVERIFY2(drive_.start(), drive_.log());
        QCOMPARE(drive_.url(), before);

        const qint64 held = client_->held(target, bytes.size());
        QVERIFY(held >= confirmed);
        QVERIFY(held < bytes.size());
        const RawReply done = client_->put(target, bytes.mid(held), held, bytes.size());
        QCOMPARE(done.status, 200);
        QCOMPARE(md5Of(done), md5(bytes));
        drive_.kill();
        QVERIFY2(drive_.start(), drive_.log());
        QCOMPARE(jsonOf(client_->askHeld(target, bytes.size()).body), jsonOf(done.body));
        QCOMPARE(client_->filesNamed(u"killed"_s).size(), 1);
    }

    // A store that fails takes nothing away: asked again once it works, the upload is complete.
    void failedStoreKeepsTheUpload() {
        const QByteArray bytes = content(100'000);
        const QByteArray target = client_->announce(bytes.size(), u"kept"_s);
        const QString blobs = drive_.dataFolder() + u"/blobs"_s;
        const QString away = drive_.dataFolder() + u"/away"_s;
        QVERIFY(QDir().rename(blobs, away) && QFile(blobs).open(QIODevice::WriteOnly));
        QCOMPARE(client_->put(target, bytes, 0, bytes.size()).status, 500);
        QVERIFY(QFile::remove(blobs) && QDir().rename(away, blobs));
        QCOMPARE(md5Of(client_->askHeld(target, bytes.size())), md5(bytes));
        QCOMPARE(client_->filesNamed(u"kept"_s).size(), 1);
    }

    // Both connections carry the same upload; the file comes out right, and once.
    void abandonedConnectionDoesNoHarm() {
        const QByteArray bytes = content(600'000);
        const QByteArray target = client_->announce(bytes.size(), u"abandoned"_s);
        RawHttp abandoned(drive_.url());
        const QByteArray request = LocalClient::putRequest(target, bytes, 0, bytes.size());
        QVERIFY(abandoned.send(request.left(400'000)));
        QTRY_VERIFY(client_->held(target, bytes.size()) > 200'000);
        const qint64 held = client_->held(target, bytes.size());
        QCOMPARE(md5Of(client_->put(target, bytes.mid(held), held, bytes.size())), md5(bytes));
        QVERIFY(abandoned.send(request.mid(400'000)));
        QCOMPARE(md5Of(abandoned.readReply()), md5(bytes));
        QCOMPARE(client_->filesNamed(u"abandoned"_s).size(), 1);
    }

    void downloadsTellTheSameBytes_data() {
        QTest::addColumn<QByteArray>("range");
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("whole") << QByteArray() << 200 << QByteArray("0123456789");
        QTest::newRow("part") << QByteArray("bytes=2-4") << 206 << QByteArray("234");
        QTest::newRow("to the end") << QByteArray("bytes=7-") << 206 << QByteArray("789");
        QTest::newRow("beyond the end") << QByteArray("bytes=8-99") << 206 << QByteArray("89");
        QTest::newRow("last ones") << QByteArray("bytes=-3") << 206 << QByteArray("789");
        QTest::newRow("more than all") << QByteArray("bytes=-30") << 206 << QByteArray("0123456789");
        QTest::newRow("behind the end") << QByteArray("bytes=10-") << 416 << QByteArray();
    }
    void downloadsTellTheSameBytes() {
        QFETCH(QByteArray, range);
        QFETCH(int, status);
        const QByteArray target = client_->announce(10, u"ten"_s);
        const QJsonObject file = jsonOf(client_->put(target, "0123456789", 0, 10).body)["result"_L1].toObject();
        const QUrl url(file["downloadUrl"_L1].toString());
        const QByteArray path = url.toEncoded(QUrl::RemoveScheme | QUrl::RemoveAuthority);
        QList<QByteArray> headers{client_->authorization()};
        if (!range.isEmpty())
            headers.append("Range: " + range);
        const RawReply reply = RawHttp::exchange(drive_.url(), RawHttp::request("GET", path, headers));
        QCOMPARE(reply.status, status);
        QTEST(reply.body, "expected");
        const QByteArray condition = "If-None-Match: " + reply.header("ETag");
        const auto unchanged = RawHttp::request("GET", path, {client_->authorization(), condition});
        QCOMPARE(RawHttp::exchange(drive_.url(), unchanged).status, 304);
        QCOMPARE(RawHttp::exchange(drive_.url(), RawHttp::request("GET", path)).status, 401);
    }

private:
    LocalDriveProcess drive_;
    std::optional<LocalClient> client_;
};

QTEST_GUILESS_MAIN(TestLocalUploads)
#include "tst_localuploads.moc"
