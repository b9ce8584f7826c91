// The REST road of the local Drive, against the real program: calls, batches, and what the Drive is told to have lost.
#include "tests/localdrive/RestClient.h"

#include <QTest>

using namespace quenby::testing;
using namespace Qt::StringLiterals;

namespace {

QByteArray batchPart(const QByteArray& contentId, const QByteArray& request) {
    return "--b\r\nContent-Type: application/http\r\nContent-ID: <" + contentId + ">\r\n\r\n" + request + "\r\n";
}

// The answer to one call of a batch: its status and what follows.
QByteArray batchAnswer(const RawReply& reply, const QByteArray& contentId) {
    const qsizetype from = reply.body.indexOf(QByteArray("Content-ID: <response-" + contentId + ">"));
    const qsizetype status = reply.body.indexOf("HTTP/1.1 ", from) + 9;
    return from < 0 ? QByteArray() : reply.body.mid(status, reply.body.indexOf("\r\n--", status) - status);
}

} // namespace

class TestLocalRest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        QVERIFY2(drive_.start(), drive_.log());
        client_.emplace(drive_);
    }
    void cleanup() {
        QVERIFY(drive_.setService(R"({"rpc":true,"changeIds":true})"));
        QCOMPARE(drive_.pendingFaults(), QJsonArray());
    }

    // One after the other on one file.
    void resourcesHaveTheirVerbs() {
        struct Step {
            QByteArray verb, path, body;
            int status;
            QByteArray kind; // of the answer; empty: there is none
        };
        const Step steps[] = {
            {"GET", "about", "", 200, "drive#about"},
            {"GET", "apps", "", 200, "drive#appList"},
            {"GET", "apps/localdrive-pages", "", 200, "drive#app"},
            {"GET", "files?maxResults=1&q=title%20=%20'walk+through'", "", 200, "drive#fileList"},
            {"PATCH", "files/$FILE", R"({"title":"patched"})", 200, "drive#file"},
            {"PUT", "files/$FILE", R"({"title":"updated"})", 200, "drive#file"},
            {"POST", "files/$FILE/touch", "", 200, "drive#file"},
            {"POST", "files/$FILE/trash", "", 200, "drive#file"},
            {"POST", "files/$FILE/untrash", "", 200, "drive#file"},
            {"POST", "files/$FILE/copy", R"({"title":"copy"})", 200, "drive#file"},
            {"POST", "files/$FILE/parents", R"({"id":"$FOLDER"})", 200, "drive#parentReference"},
            {"GET", "files/$FILE/parents", "", 200, "drive#parentList"},
            {"GET", "files/$FOLDER/children/$FILE", "", 200, "drive#childReference"},
            {"GET", "files/$FOLDER/children", "", 200, "drive#childList"},
            {"DELETE", "files/$FOLDER/children/$FILE", "", 204, ""},
            {"POST", "files/$FOLDER/children", R"({"id":"$FILE"})", 200, "drive#childReference"},
            {"DELETE", "files/$FILE/parents/$FOLDER", "", 204, ""},
            {"POST", "files/$FILE/properties", R"({"key":"a/b c+d","value":"1"})", 200, "drive#property"},
            {"PUT", "files/$FILE/properties/a%2Fb%20c+d", R"({"value":"2"})", 200, "drive#property"},
            {"GET", "files/$FILE/properties/a%2Fb%20c%2Bd", "", 200, "drive#property"},
            {"DELETE", "files/$FILE/properties/a%2Fb%20c+d", "", 204, ""},
            {"GET", "permissionIds/a+b@example.com", "", 200, "drive#permissionId"},
            {"POST", "files/$FILE/permissions", R"({"role":"reader","type":"anyone"})", 200, "drive#permission"},
            {"PATCH", "files/$FILE/permissions/anyone", R"({"role":"writer"})", 200, "drive#permission"},
            {"GET", "files/$FILE/permissions", "", 200, "drive#permissionList"},
            {"DELETE", "files/$FILE/permissions/anyone", "", 204, ""},
            {"GET", "files/$FILE/revisions", "", 200, "drive#revisionList"},
            {"GET", "files/$FILE/realtime", "", 200, "-"},
            {"POST", "files/$FILE/comments", R"({"content":"c"})", 200, "drive#comment"},
            {"GET", "files/$FILE/comments", "", 200, "drive#commentList"},
            {"POST", "files/$FILE/comments/$COMMENT/replies", R"({"content":"r"})", 200, "drive#commentReply"},
            {"GET", "changes", "", 200, "drive#changeList"},
            {"POST", "changes/watch", R"({"id":"w","type":"web_hook","address":"http://127.0.0.1/"})", 200,
             "api#channel"},
            {"DELETE", "files/trash", "", 204, ""},
            {"DELETE", "files/$FILE", "", 204, ""},
            {"GET", "files/$FILE", "", 404, "-"},
        };
        const QByteArray file = client_->insert(R"({"title":"walk through"})").toLatin1();
        const QByteArray folder =
            client_->insert(R"({"title":"f","mimeType":"application/vnd.google-apps.folder"})").toLatin1();
        QByteArray comment;
        for (Step step : steps) {
            for (QByteArray* text : {&step.path, &step.body})
                text->replace("$FILE", file).replace("$FOLDER", folder).replace("$COMMENT", comment);
            const RawReply reply = client_->call(step.verb, step.path, step.body);
            const QByteArray name = step.verb + ' ' + step.path + ": " + reply.bytes;
            QVERIFY2(reply.status == step.status, name);
            const QJsonObject answer = jsonOf(reply.body);
            QVERIFY2(step.kind == "-" || answer["kind"_L1].toString().toLatin1() == step.kind, name);
            QVERIFY2(!step.kind.isEmpty() || reply.body.isEmpty(), name);
            if (answer.contains("commentId"_L1))
                comment = answer["commentId"_L1].toString().toLatin1();
        }
    }

    void queriesAreParameters() {
        const QString id = client_->insert(R"({"title":"a b&c","description":"+"})");
        const QJsonObject masked =
            client_->get("files/" + id.toLatin1() + "?fields=title,labels(starred)&prettyPrint=false");
        QCOMPARE(masked, (QJsonObject{{u"title"_s, u"a b&c"_s}, {u"labels"_s, QJsonObject{{u"starred"_s, false}}}}));
        const QJsonObject found = client_->get("files?q=title+%3D+'a+b%26c'");
        QCOMPARE(found["items"_L1].toArray().size(), 1);
        QVERIFY(found["items"_L1][0]["quotaBytesUsed"_L1].isString());
        QCOMPARE(client_->get("changes?maxResults=1&includeDeleted=false")["items"_L1].toArray().size(), 1);
    }

    void failuresAreJson_data() {
        QTest::addColumn<QByteArray>("verb");
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("reason");
        const auto row = [](const char* verb, const char* path, const char* body, int status, const char* reason) {
            QTest::addRow("%s %s", verb, path)
                << QByteArray(verb) << QByteArray(path) << QByteArray(body) << status << QString::fromLatin1(reason);
        };
        row("GET", "nothing", "", 404, "notFound");
        row("DELETE", "about", "", 404, "notFound");
        row("GET", "files/x/children/y/z", "", 404, "notFound");
        row("GET", "files/nowhere", "", 404, "notFound");
        row("GET", "files/nowhere?alt=media", "", 404, "notFound");
        row("GET", "about?alt=media", "", 400, "invalid");
        row("GET", "files?maxResults=many", "", 400, "invalid");
        row("GET", "files?fields=items(", "", 400, "invalid");
        row("POST", "files", "{\"title\":", 400, "parseError");
        row("POST", "files", "[]", 400, "parseError");
        row("PATCH", "files/root", R"({"title":"x"})", 403, "insufficientFilePermissions");
        row("POST", "files/root/permissions", "", 400, "required");
    }
    void failuresAreJson() {
        QFETCH(QByteArray, verb);
        QFETCH(QByteArray, path);
        QFETCH(QByteArray, body);
        QFETCH(int, status);
        const RawReply reply = client_->call(verb, path, body);
        QCOMPARE(reply.status, status);
        QTEST(RestClient::reasonOf(reply), "reason");
        const QJsonValue error = jsonOf(reply.body)["error"_L1];
        QCOMPARE(error["code"_L1].toInt(), status);
        QVERIFY(!error["message"_L1].toString().isEmpty() && error["data"_L1].isUndefined());
    }

    void callsNeedAToken() {
        for (const QByteArray& path : {"/drive/v2/about"_ba, "/drive/v2/files/root?alt=media"_ba}) {
            const RawReply without = RawHttp::exchange(drive_.url(), RawHttp::request("GET", path));
            QCOMPARE(without.status, 401);
            QCOMPARE(without.header("WWW-Authenticate"), "Bearer");
            QCOMPARE(RestClient::reasonOf(without), u"required"_s);
            const RawReply wrong =
                RawHttp::exchange(drive_.url(), RawHttp::request("GET", path, {"Authorization: Bearer x"}));
            QVERIFY(wrong.header("WWW-Authenticate").contains("invalid_token"));
        }
    }

    void batchesAnswerEachCall() {
        const QByteArray file = client_->insert(R"({"title":"in a batch"})").toLatin1();
        const QByteArray body = R"({"title":"renamed"})";
        const QByteArray parts =
            batchPart("1", "PATCH /drive/v2/files/" + file +
                               "?fields=title HTTP/1.1\r\nContent-Type: application/json\r\nContent-Length: " +
                               QByteArray::number(body.size()) + "\r\n\r\n" + body) +
            batchPart("2", "GET /drive/v2/files/nowhere\r\n") +
            batchPart("3", "DELETE /drive/v2/files/" + file + "\r\n") +
            batchPart("4", "GET /drive/v2/about\r\nAuthorization: Bearer x\r\n") + batchPart("5", "nonsense");
        const RawReply reply = batch("/batch/drive/v2", parts + "--b--\r\n");
        QCOMPARE(reply.status, 200);
        QVERIFY(reply.header("Content-Type").startsWith("multipart/mixed; boundary="));
        QVERIFY(batchAnswer(reply, "1").startsWith("200 ") &&
                batchAnswer(reply, "1").endsWith(R"({"title":"renamed"})"));
        QVERIFY(batchAnswer(reply, "2").startsWith("404 ") && batchAnswer(reply, "2").contains("notFound"));
        QVERIFY(batchAnswer(reply, "3").startsWith("204 "));
        QVERIFY(batchAnswer(reply, "4").startsWith("401 "));
        QVERIFY(batchAnswer(reply, "5").startsWith("404 "));
        // Clients must not rely on an order.
        QVERIFY(reply.body.indexOf("<response-1>") > reply.body.indexOf("<response-2>"));
        QCOMPARE(client_->call("GET", "files/" + file).status, 404);
    }

    void batchesHaveLimits() {
        QByteArray parts;
        for (int i = 0; i < 100; ++i)
            parts += batchPart(QByteArray::number(i), "GET /drive/v2/about?fields=name\r\n");
        QCOMPARE(batch("/batch", parts + "--b--").body.count("\"name\""), 100);
        const RawReply tooMany = batch("/batch", parts + batchPart("100", "GET /drive/v2/about\r\n") + "--b--");
        QCOMPARE(tooMany.status, 400);
        QCOMPARE(RestClient::reasonOf(tooMany), u"batchSizeTooLarge"_s);
        QCOMPARE(batch("/batch", parts).status, 400); // it never ends
    }

    void listsGoOnFromNowOn() {
        const QByteArray token = client_->get("changes/startPageToken")["startPageToken"_L1].toString().toLatin1();
        const QJsonObject before = client_->get("changes?pageToken=" + token);
        QCOMPARE(before["items"_L1].toArray().size(), 0);
        const QString a = client_->insert(R"({"title":"a"})");
        const QString b = client_->insert(R"({"title":"b"})");
        const QJsonObject first = client_->get("changes?maxResults=1&includeSubscribed=false&pageToken=" + token);
        QCOMPARE(first["items"_L1][0]["fileId"_L1].toString(), a);
        QVERIFY(!first.contains("newStartPageToken"_L1));
        const QJsonObject second = client_->get("changes?maxResults=1&includeSubscribed=false&pageToken=" +
                                                first["nextPageToken"_L1].toString().toLatin1());
        QCOMPARE(second["items"_L1][0]["fileId"_L1].toString(), b);
        const QByteArray next = second["newStartPageToken"_L1].toString().toLatin1();
        QCOMPARE(client_->get("changes?pageToken=" + next)["items"_L1].toArray().size(), 0);
        QCOMPARE(client_->call("GET", "files?pageToken=" + next).status, 400);
    }

    void changesLoseTheirIds() {
        const QString file = client_->insert(R"({"title":"numbered"})");
        const QByteArray token = client_->get("changes/startPageToken")["startPageToken"_L1].toString().toLatin1();
        client_->call("PATCH", "files/" + file.toLatin1(), R"({"title":"not numbered"})");
        QVERIFY(drive_.setService(R"({"changeIds":false})"));
        const QJsonObject changes = client_->get("changes?pageToken=" + token);
        QCOMPARE(changes["items"_L1][0]["file"_L1]["title"_L1].toString(), u"not numbered"_s);
        QVERIFY(changes["items"_L1][0]["id"_L1].isUndefined() && !changes.contains("largestChangeId"_L1));
        QVERIFY(!client_->get("about").contains("largestChangeId"_L1));
        QCOMPARE(client_->call("GET", "changes?startChangeId=1").status, 400);
        QCOMPARE(client_->call("GET", "about?startChangeId=1").status, 400);
    }

    void rpcIsLost() {
        LocalClient rpc(drive_);
        const QByteArray begun = rpc.announce(10, u"begun before"_s);
        QVERIFY(drive_.setService(R"({"rpc":false})"));
        for (QByteArray request : {rpc.callRequest(u"drive.about.get"_s), rpc.announceRequest(10, u"x"_s)}) {
            QCOMPARE(RawHttp::exchange(drive_.url(), request).status, 200); // to tests it is open
            request.replace(LocalDriveProcess::controlHeader(), "X-Nothing: here");
            const RawReply closed = RawHttp::exchange(drive_.url(), request);
            QCOMPARE(closed.status, 404);
            QVERIFY(closed.header("Content-Type").startsWith("text/html") && closed.body.contains("<html"));
        }
        QCOMPARE(rpc.put(begun, "01234", 0, 10).status, 308);
        const QJsonObject done = jsonOf(rpc.put(begun, "56789", 5, 10).body);
        QCOMPARE(done["result"_L1]["title"_L1].toString(), u"begun before"_s);
        QCOMPARE(client_->call("GET", "about").status, 200);
    }

    void lossesAreToldAtTheStart_data() {
        QTest::addColumn<bool>("byVariable");
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("rpcStatus");
        QTest::newRow("option") << false << QStringList{u"--without-rpc"_s} << 404;
        QTest::newRow("variable") << true << QStringList{} << 404;
        QTest::newRow("overridden") << true << QStringList{u"--with-rpc"_s} << 200;
    }
    void lossesAreToldAtTheStart() {
        QFETCH(bool, byVariable);
        QFETCH(QStringList, arguments);
        if (byVariable)
            qputenv("QUENBY_LOCALDRIVE_WITHOUT_RPC", "1");
        LocalDriveProcess other(arguments);
        const bool started = other.start();
        qunsetenv("QUENBY_LOCALDRIVE_WITHOUT_RPC");
        QVERIFY2(started, other.log());
        QTEST(aboutByRpc(other).status, "rpcStatus");
    }

    // A test's rules strike on whichever road it runs.
    void faultsAndCountsCoverBothRoads() {
        const auto counted = [this] { return drive_.state()["rpcMethods"_L1]["drive.about.get"_L1].toInt(); };
        const int before = counted();
        QVERIFY(drive_.orderFaults(
            R"([{"match":{"rpcMethod":"drive.about.get","times":3},"action":{"errorReason":"userRateLimitExceeded"}}])"));
        const RawReply rest = client_->call("GET", "about");
        QCOMPARE(rest.status, 403);
        QCOMPARE(RestClient::reasonOf(rest), u"userRateLimitExceeded"_s);
        const RawReply rpc = LocalClient(drive_).about();
        QCOMPARE(jsonOf(rpc.body)["error"_L1]["data"_L1][0]["reason"_L1].toString(), u"userRateLimitExceeded"_s);
        QCOMPARE(batch("/batch", batchPart("1", "GET /drive/v2/about\r\n") + "--b--").status, 403);
        QCOMPARE(counted(), before + 3);

        QVERIFY(drive_.orderFaults(
            R"([{"match":{"pathPrefix":"/rpc"},"action":{"status":429,"errorReason":"rateLimitExceeded"}}])"));
        QCOMPARE(client_->call("GET", "about").status, 200);
        QVERIFY(drive_.setService(R"({"rpc":false})"));
        QCOMPARE(aboutByRpc(drive_).status, 404);
        QCOMPARE(client_->call("GET", "about").status, 429);
        QVERIFY(drive_.orderFaults(R"([{"match":{"pathPrefix":"/upload/rpc"},"action":{"status":503}}])"));
        QCOMPARE(client_->call("GET", "about").status, 200);
        QCOMPARE(client_->announce("POST", "files", 1, "{}").status, 503);
    }

    // What a program may see that was let in to its own files alone.
    void ownFilesOnly() {
        const QString scope = u"https://www.googleapis.com/auth/drive.file"_s;
        RestClient narrow(drive_, u"narrow"_s, scope);
        RestClient other(drive_, u"other"_s, scope);
        const QByteArray foreign = client_->insert(R"({"title":"of another"})").toLatin1();
        const QByteArray token = narrow.get("changes/startPageToken")["startPageToken"_L1].toString().toLatin1();
        client_->call("PATCH", "files/" + foreign, R"({"title":"changed"})");
        const QString own = narrow.insert(R"({"title":"my own"})");
        const auto idsOf = [](const QJsonObject& list, const char* key) {
            QStringList ids;
            for (const QJsonValue item : list["items"_L1].toArray())
                ids.append(item[QLatin1String(key)].toString());
            return ids;
        };
        QCOMPARE(idsOf(narrow.get("files"), "id"), QStringList{own});
        QCOMPARE(idsOf(narrow.get("files/root/children"), "id"), QStringList{own});
        QCOMPARE(idsOf(narrow.get("changes?pageToken=" + token), "fileId"), QStringList{own});
        QCOMPARE(narrow.call("GET", "files/" + foreign).status, 404);
        QCOMPARE(narrow.call("DELETE", "files/" + foreign).status, 404);
        QCOMPARE(other.call("GET", "files/" + own.toLatin1()).status, 404);
        QCOMPARE(client_->call("GET", "files/" + own.toLatin1()).status, 200);
        // An upload's file belongs to the program that announced it.
        const QByteArray target = narrow.location(1);
        const QString uploaded = jsonOf(narrow.put(target, "x", 0, 1).body)["id"_L1].toString();
        QCOMPARE(idsOf(narrow.get("files"), "id"), (QStringList{uploaded, own}));
    }

private:
    // As a client sends it.
    static RawReply aboutByRpc(LocalDriveProcess& drive) {
        QByteArray request = LocalClient(drive).callRequest(u"drive.about.get"_s);
        request.replace(LocalDriveProcess::controlHeader(), "X-Nothing: here");
        return RawHttp::exchange(drive.url(), request);
    }

    RawReply batch(const QByteArray& path, const QByteArray& body) {
        return RawHttp::exchange(
            drive_.url(),
            RawHttp::request("POST", path, {client_->authorization(), "Content-Type: multipart/mixed; boundary=b"},
                             body));
    }

    LocalDriveProcess drive_{{u"--with-rpc"_s, u"--with-change-ids"_s}};
    std::optional<RestClient> client_;
};

QTEST_GUILESS_MAIN(TestLocalRest)
#include "tst_localrest.moc"
