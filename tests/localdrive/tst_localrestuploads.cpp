// Contents on the REST road: announced uploads and their rules, small contents in one request, and chosen ids.
#include "localdrive/server/upload/UploadSessions.h"
#include "localdrive/store/DriveStore.h"
#include "tests/localdrive/RestClient.h"

#include <QCryptographicHash>
#include <QTest>

using namespace quenby::testing;
using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype unit = 256 * 1024;

QString md5(const QByteArray& bytes) {
    return QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Md5).toHex());
}

QString md5Of(const RawReply& reply) { return jsonOf(reply.body)["md5Checksum"_L1].toString(); }

QByteArray numbered(qsizetype size) {
    QByteArray bytes;
    for (int i = 0; bytes.size() < size; ++i)
        bytes += QByteArray::number(i) + ' ';
    return bytes.left(size);
}

} // namespace

class TestLocalRestUploads final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        QVERIFY2(drive_.start(), drive_.log());
        client_.emplace(drive_);
    }

    void arrivesInChunks() {
        const QByteArray bytes = numbered(2 * unit + 100);
        const RawReply announced = client_->announce("POST", "files?fields=md5Checksum,title&pinned=true", bytes.size(),
                                                     R"({"title":"chunks"})");
        QCOMPARE(announced.status, 200);
        QVERIFY(
            announced.header("Location").startsWith(QByteArray(drive_.url().toEncoded() + "/upload/drive/v2/files?")));
        const QByteArray target = LocalClient::targetOf(announced);
        QVERIFY(client_->askHeld(target, bytes.size()).header("Range").isEmpty());
        QCOMPARE(client_->put(target, bytes.first(unit), 0, bytes.size()).header("Range"), "bytes=0-262143");

        const RawReply uneven = client_->put(target, bytes.mid(unit, unit - 1), unit, bytes.size());
        QCOMPARE(uneven.status, 400);
        QCOMPARE(RestClient::reasonOf(uneven), u"invalid"_s);
        QCOMPARE(client_->askHeld(target, bytes.size()).header("Range"), "bytes=0-262143");

        drive_.kill();
        QVERIFY2(drive_.start(), drive_.log());
        const RawReply done = client_->put(target, bytes.mid(unit), unit, bytes.size());
        QCOMPARE(done.status, 200);
        QCOMPARE(jsonOf(done.body), (QJsonObject{{u"md5Checksum"_s, md5(bytes)}, {u"title"_s, u"chunks"_s}}));
        drive_.kill();
        QVERIFY2(drive_.start(), drive_.log());
        QCOMPARE(client_->askHeld(target, bytes.size()).body, done.body);
    }

    void replacesContents() {
        const QByteArray id = client_->insert(R"({"title":"to be replaced"})").toLatin1();
        for (const QByteArray& verb : {"PUT"_ba, "PATCH"_ba}) {
            const RawReply announced = client_->announce(verb, "files/" + id, 3, R"({"description":"new"})");
            const QJsonObject file = jsonOf(client_->put(LocalClient::targetOf(announced), "new", 0, 3).body);
            QCOMPARE(file["id"_L1].toString().toLatin1(), id);
            QCOMPARE(file["fileSize"_L1].toString(), u"3"_s);
            QCOMPARE(file["description"_L1].toString(), u"new"_s);
        }
        const RawReply realtime = client_->announce("PUT", "files/" + id + "/realtime", 9, {});
        QCOMPARE(client_
                     ->put(LocalClient::targetOf(realtime),
                           R"({"a": 1})"
                           " ",
                           0, 9)
                     .status,
                 200);
        QCOMPARE(client_->get("files/" + id + "/realtime")["data"_L1]["a"_L1].toInt(), 1);
    }

    void refusesBeforeAByteIsSent_data() {
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<qint64>("length");
        QTest::addColumn<QByteArray>("resource");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("reason");
        QTest::newRow("no room") << "files"_ba << (qint64{1} << 40) << "{}"_ba << 403 << u"quotaExceeded"_s;
        QTest::newRow("no such address") << "about"_ba << qint64{1} << "{}"_ba << 404 << u"notFound"_s;
        QTest::newRow("no JSON") << "files"_ba << qint64{1} << "{"_ba << 400 << u"parseError"_s;
        QTest::newRow("no length") << "files"_ba << qint64{-1} << "{}"_ba << 400 << u"invalid"_s;
        QTest::newRow("no id") << "files"_ba << qint64{1} << R"({"id":"../../etc/passwd"})"_ba << 400 << u"invalid"_s;
    }
    void refusesBeforeAByteIsSent() {
        QFETCH(QByteArray, path);
        QFETCH(qint64, length);
        QFETCH(QByteArray, resource);
        const RawReply reply = client_->announce("POST", path, length, resource);
        QTEST(reply.status, "status");
        QTEST(RestClient::reasonOf(reply), "reason");
        QVERIFY(reply.header("Location").isEmpty());
    }

    // An unknown, lost or expired upload is told from one that goes on, and what was sent to it all the same is
    // counted.
    void uploadsEnd() {
        const QByteArray unknown = "/upload/drive/v2/files?uploadType=resumable&upload_id=unknown";
        QCOMPARE(RestClient::reasonOf(client_->askHeld(unknown, 4)), u"notFound"_s);
        const QByteArray lost = client_->location(4);
        QVERIFY(drive_.orderFaults(R"([{"match":{"uploadPut":true},"action":{"loseSession":true}}])"));
        QCOMPARE(client_->put(lost, "lost", 0, 4).status, 404);
        QCOMPARE(client_->put(lost, "lost", 0, 4).status, 404);
        const QByteArray late = client_->location(4);
        QVERIFY(drive_.orderFaults(R"([{"match":{"uploadPut":true},"action":{"clockSkewSeconds":604801}}])"));
        QCOMPARE(client_->askHeld(late, 4).status, 410);
        QVERIFY(drive_.orderFaults(R"([{"match":{"uploadPut":true},"action":{"clockSkewSeconds":0}}])"));
        QCOMPARE(client_->askHeld(late, 4).status, 404);

        const QJsonObject refused = drive_.state()["refusedUploads"_L1].toObject();
        QCOMPARE(refused.size(), 3);
        const QString digest = QString::fromLatin1(
            QCryptographicHash::hash(lost.mid(lost.indexOf("upload_id=") + 10), QCryptographicHash::Sha256).toHex());
        QCOMPARE(refused[digest].toObject(), (QJsonObject{{u"puts"_s, 2}, {u"bytes"_s, 8}, {u"queries"_s, 0}}));
        const auto sum = [&refused](const char* what) {
            return std::accumulate(refused.begin(), refused.end(), 0, [what](int total, const QJsonValue& one) {
                return total + one[QLatin1String(what)].toInt();
            });
        };
        QCOMPARE(sum("queries"), 3);
        QCOMPARE(sum("bytes"), 8);
    }

    void smallContentsComeAtOnce() {
        const RawReply media = send("files?uploadType=media", "text/css", "p{}");
        QCOMPARE(media.status, 200);
        QCOMPARE(jsonOf(media.body)["mimeType"_L1].toString(), u"text/css"_s);
        const QByteArray content = "--not the boundary\r\n\r\n--b is not either\r\n";
        const RawReply both = send("files?uploadType=multipart", "multipart/related; boundary=\"b\"",
                                   "--b\r\nContent-Type: application/json\r\n\r\n{\"title\":\"both\"}\r\n"
                                   "--b\r\nContent-Type: text/plain\r\n\r\n" +
                                       content + "\r\n--b--\r\n");
        QCOMPARE(jsonOf(both.body)["title"_L1].toString(), u"both"_s);
        QCOMPARE(md5Of(both), md5(content));
        QCOMPARE(send("files?uploadType=multipart", "multipart/related; boundary=b", "--b\r\n\r\n{}\r\n--b--").status,
                 400);
        QCOMPARE(send("files?uploadType=media", "text/css", QByteArray(6 * 1024 * 1024, 'x')).status, 413);
        QCOMPARE(send("files", "text/css", "p{}").status, 400);
    }

    void idsAreChosen() {
        const QJsonArray ids = client_->get("files/generateIds?maxResults=1000")["ids"_L1].toArray();
        QSet<QString> different;
        for (const QJsonValue id : ids)
            different.insert(id.toString());
        QCOMPARE(different.size(), 1000);
        QCOMPARE(client_->get("files/generateIds")["ids"_L1].toArray().size(), 10);
        for (const char* number : {"0", "1001"})
            QCOMPARE(client_->call("GET", QByteArray("files/generateIds?maxResults=") + number).status, 400);

        const QByteArray id = ids[0].toString().toLatin1();
        const QByteArray resource = "{\"id\":\"" + id + "\",\"title\":\"chosen\"}";
        // Both were announced while nobody had the id; only one can get it.
        const QByteArray first = client_->location(3, resource);
        const QByteArray second = client_->location(3, resource);
        QCOMPARE(jsonOf(client_->put(second, "one", 0, 3).body)["id"_L1].toString().toLatin1(), id);
        const RawReply late = client_->put(first, "two", 0, 3);
        QCOMPARE(late.status, 409);
        QCOMPARE(RestClient::reasonOf(late), u"fileIdInUse"_s);
        QCOMPARE(client_->askHeld(second, 3).status, 200);
        QCOMPARE(client_->get("files/" + id)["md5Checksum"_L1].toString(), md5("one"));

        QCOMPARE(client_->announce("POST", "files", 3, resource).status, 409);
        QCOMPARE(client_->call("POST", "files", resource).status, 409);
        client_->call("DELETE", "files/" + id);
        QCOMPARE(client_->call("POST", "files", resource).status, 409);
    }

    // A Drive of an earlier version goes on: what was announced there is answered as it was asked.
    void oldUploadsGoOn() {
        using namespace quenby::localdrive;
        QTemporaryDir folder;
        const auto store = DriveStore::open({folder.path()});
        QVERIFY(store.ok());
        Database& database = store.value()->database();
        QVERIFY(database
                    .migrate(u"uploads"_s,
                             {u"CREATE TABLE uploads (digest TEXT PRIMARY KEY, part TEXT NOT NULL, call TEXT NOT NULL, "
                              "media_type TEXT NOT NULL, length INTEGER NOT NULL, email TEXT NOT NULL, "
                              "name TEXT NOT NULL, expires INTEGER NOT NULL, result TEXT) WITHOUT ROWID"_s})
                    .ok());
        {
            Session session(database, Session::Kind::write);
            session.run(u"INSERT INTO uploads VALUES (?, 'part', '{\"id\":1}', '', 9, 'a@b', 'A', ?, NULL)"_s,
                        {UploadSessions::digest("old"), QDateTime::currentMSecsSinceEpoch() + 100'000});
            QVERIFY(session.commit().ok());
        }
        const ServerClock clock;
        const auto sessions = UploadSessions::open(database, store.value()->blobs(), clock);
        QVERIFY(sessions.ok());
        const auto found = sessions.value()->find("old");
        QVERIFY(found.ok());
        QCOMPARE(found.value()->facts().road, UploadRoad::rpc);
        QCOMPARE(found.value()->facts().length, 9);
    }

private:
    RawReply send(const QByteArray& path, const QByteArray& type, const QByteArray& body) {
        return RawHttp::exchange(drive_.url(),
                                 RawHttp::request("POST", "/upload/drive/v2/" + path,
                                                  {client_->authorization(), "Content-Type: " + type}, body));
    }

    LocalDriveProcess drive_;
    std::optional<RestClient> client_;
};

QTEST_GUILESS_MAIN(TestLocalRestUploads)
#include "tst_localrestuploads.moc"
