// Ordered faults: each does what it says, to the byte.
#include "tests/localdrive/LocalClient.h"

#include <QTest>

using namespace quenby::testing;
using namespace Qt::StringLiterals;

namespace {

const QByteArray ten = "0123456789";

QByteArray rule(const QByteArray& action, const QByteArray& match = R"({"pathPrefix":"/rpc"})") {
    return "[{\"match\":" + match + ",\"action\":" + action + "}]";
}

const QByteArray uploadPut = R"({"uploadPut":true})";

} // namespace

class TestLocalFaults final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY2(drive_.start(), drive_.log()); }
    void init() { client_.emplace(drive_); }
    // A rule that did not strike is a test that tested nothing.
    void cleanup() {
        QCOMPARE(drive_.pendingFaults(), QJsonArray());
        drive_.clearFaults();
    }

    void orderedReplies_data() {
        QTest::addColumn<QByteArray>("action");
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("header");
        QTest::addColumn<QByteArray>("value");
        QTest::addColumn<QByteArray>("body");
        const auto row = [](const char* name, const QByteArray& action, int status, const char* header,
                            const char* value, const QByteArray& body) {
            QTest::newRow(name) << action << status << QByteArray(header) << QByteArray(value) << body;
        };
        row("bare status", R"({"status":503})", 503, "Content-Length", "0", "");
        row("retry after", R"({"status":503,"headers":{"Retry-After":"7"},"body":"busy"})", 503, "Retry-After", "7",
            "busy");
        row("json body", R"({"status":403,"body":{"error":1},"contentType":"application/json"})", 403, "Content-Type",
            "application/json", R"({"error":1})");
        row("so many bytes", R"({"status":500,"bodyBytes":5})", 500, "Content-Length", "5", "xxxxx");
        row("redirect", R"({"redirect":{"url":"http://127.0.0.1:1/x","status":307}})", 307, "Location",
            "http://127.0.0.1:1/x", "");
    }
    void orderedReplies() {
        QFETCH(QByteArray, action);
        QFETCH(int, status);
        QFETCH(QByteArray, header);
        QFETCH(QByteArray, body);
        QVERIFY(drive_.orderFaults(rule(action)));
        RawHttp connection(drive_.url());
        QVERIFY(connection.send(client_->callRequest(u"drive.about.get"_s)));
        const RawReply reply = connection.readReply();
        QCOMPARE(reply.status, status);
        QTEST(reply.header(header), "value");
        QCOMPARE(reply.body, body);
        // Once is the standard, and the connection stays good.
        QVERIFY(connection.send(client_->callRequest(u"drive.about.get"_s)));
        QCOMPARE(connection.readReply().status, 200);
    }

    void workIsDoneOrNot_data() {
        QTest::addColumn<QByteArray>("action");
        QTest::addColumn<qsizetype>("files");
        QTest::newRow("refused") << QByteArray(R"({"status":500})") << qsizetype{0};
        QTest::newRow("done, then denied") << QByteArray(R"({"status":500,"commitFirst":true})") << qsizetype{1};
        QTest::newRow("done, reply lost") << QByteArray(R"({"drop":{"afterResponseBytes":0}})") << qsizetype{1};
        QTest::newRow("reset before") << QByteArray(R"({"reset":"before"})") << qsizetype{0};
    }
    void workIsDoneOrNot() {
        QFETCH(QByteArray, action);
        QFETCH(qsizetype, files);
        const QString title = u"work %1"_s.arg(QLatin1String(QTest::currentDataTag()));
        QVERIFY(drive_.orderFaults(rule(action, R"({"rpcMethod":"drive.files.insert"})")));
        client_->call(u"drive.files.insert"_s, {{u"resource"_s, QJsonObject{{u"title"_s, title}}}});
        QCOMPARE(client_->filesNamed(title).size(), files);
    }

    void connectionsEnd_data() {
        QTest::addColumn<QByteArray>("action");
        QTest::addColumn<int>("ending");
        QTest::addColumn<qsizetype>("bytes");
        const auto row = [](const char* name, const QByteArray& action, Ending ending, qsizetype bytes) {
            QTest::newRow(name) << action << static_cast<int>(ending) << bytes;
        };
        row("reset before", R"({"reset":"before"})", Ending::rst, 0);
        row("drop before", R"({"drop":"before"})", Ending::fin, 0);
        row("drop after the first byte", R"({"drop":{"afterResponseBytes":1}})", Ending::fin, 1);
        row("drop in the head", R"({"drop":{"afterResponseBytes":33}})", Ending::fin, 33);
        row("reset in the head", R"({"reset":{"afterResponseBytes":33}})", Ending::rst, 33);
        row("reset after the request", R"({"reset":{"afterRequestBytes":1}})", Ending::rst, 0);
    }
    void connectionsEnd() {
        QFETCH(QByteArray, action);
        QFETCH(int, ending);
        QVERIFY(drive_.orderFaults(rule(action)));
        RawHttp connection(drive_.url());
        connection.send(client_->callRequest(u"drive.about.get"_s));
        QTEST(connection.readToEnd().size(), "bytes");
        QCOMPARE(static_cast<int>(connection.ending()), ending);
    }

    void uploadCutAfterBytes_data() {
        QTest::addColumn<QByteArray>("kind");
        QTest::addColumn<int>("ending");
        QTest::newRow("reset") << QByteArray("reset") << static_cast<int>(Ending::rst);
        QTest::newRow("drop") << QByteArray("drop") << static_cast<int>(Ending::fin);
    }
    void uploadCutAfterBytes() {
        QFETCH(QByteArray, kind);
        QFETCH(int, ending);
        const QByteArray bytes(300'000, 'u');
        const QByteArray target = client_->announce(bytes.size(), u"cut"_s);
        QVERIFY(drive_.orderFaults(rule("{\"" + kind + "\":{\"afterRequestBytes\":270001}}", uploadPut)));
        RawHttp connection(drive_.url());
        connection.send(LocalClient::putRequest(target, bytes, 0, bytes.size()));
        QCOMPARE(connection.readToEnd(), QByteArray());
        QCOMPARE(static_cast<int>(connection.ending()), ending);
        QTRY_COMPARE(client_->held(target, bytes.size()), 270'001);
    }

    void stallsAtTheByte() {
        QVERIFY(drive_.orderFaults(rule(R"({"stall":{"where":{"afterResponseBytes":10},"seconds":600}})")));
        RawHttp connection(drive_.url());
        QVERIFY(connection.send(client_->callRequest(u"drive.about.get"_s)));
        QVERIFY(connection.hasSomethingToRead(30'000));
        QVERIFY(client_->about().status == 200); // others go on
        QCOMPARE(connection.readAvailable(), "HTTP/1.1 2");
        QVERIFY(!connection.hasSomethingToRead(0));
    }

    void dripsSlowly() {
        QVERIFY(drive_.orderFaults(rule(R"({"dripBytesPerSecond":1})")));
        RawHttp connection(drive_.url());
        QVERIFY(connection.send(client_->callRequest(u"drive.about.get"_s)));
        QVERIFY(connection.hasSomethingToRead(30'000));
        const QByteArray first = connection.readAvailable();
        QVERIFY(QByteArray("HTTP/1.1 200 OK").startsWith(first));
        QCOMPARE(client_->about().status, 200);
    }

    void bodiesAreFalsified() {
        QVERIFY(drive_.orderFaults(rule(R"({"truncateBody":7})")));
        RawHttp connection(drive_.url());
        QVERIFY(connection.send(client_->callRequest(u"drive.about.get"_s)));
        const RawReply truncated = connection.readReply();
        QCOMPARE(truncated.body.size(), 7);
        QVERIFY(truncated.header("Content-Length").toInt() > 7);
        QCOMPARE(connection.ending(), Ending::fin);

        QVERIFY(drive_.orderFaults(rule(R"({"malformedJson":true})")));
        const RawReply malformed = client_->about();
        QVERIFY(malformed.isComplete());
        QVERIFY(malformed.body.startsWith('{') && QJsonDocument::fromJson(malformed.body).isNull());

        QVERIFY(drive_.orderFaults(rule(R"({"contentType":"text/html"})")));
        const RawReply otherType = client_->about();
        QCOMPARE(otherType.header("Content-Type"), "text/html");
        QVERIFY(jsonOf(otherType.body).contains("result"_L1));
    }

    void rangesAreFalsified_data() {
        QTest::addColumn<QByteArray>("range");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("missing") << QByteArray("missing") << QByteArray();
        QTest::newRow("malformed") << QByteArray("malformed") << QByteArray("bytes=zero-all");
        QTest::newRow("backward") << QByteArray("backward") << QByteArray("bytes=0-2");
        QTest::newRow("too far") << QByteArray("tooFar") << QByteArray("bytes=0-1005");
        QTest::newRow("literal") << QByteArray("bytes=5-9") << QByteArray("bytes=5-9");
    }
    void rangesAreFalsified() {
        QFETCH(QByteArray, range);
        const QByteArray target = client_->announce(10, u"range"_s);
        QVERIFY(drive_.orderFaults(rule("{\"range\":\"" + range + "\"}", uploadPut)));
        const RawReply reply = client_->put(target, ten.left(6), 0, 10);
        QCOMPARE(reply.status, 308);
        QTEST(reply.header("Range"), "expected");
        QCOMPARE(client_->held(target, 10), 6);
    }

    void sessionsAreLostOrMoved() {
        const QByteArray lost = client_->announce(10, u"lost"_s);
        QVERIFY(drive_.orderFaults(rule(R"({"loseSession":true})", uploadPut)));
        QCOMPARE(client_->put(lost, ten.left(4), 0, 10).status, 404);

        const QByteArray moved = client_->announce(10, u"moved"_s);
        QVERIFY(drive_.orderFaults(rule(R"({"changeLocation":true})", uploadPut)));
        const RawReply reply = client_->put(moved, ten.left(4), 0, 10);
        QCOMPARE(reply.status, 308);
        QCOMPARE(client_->askHeld(moved, 10).status, 404);
        QCOMPARE(client_->put(LocalClient::targetOf(reply), ten.mid(4), 4, 10).status, 200);
    }

    void announcingIsAnsweredWithABody() {
        QVERIFY(drive_.orderFaults(rule(R"({"firstReplyBody":"surprise"})", R"({"pathPrefix":"/upload/rpc"})")));
        const RawReply reply = RawHttp::exchange(drive_.url(), client_->announceRequest(10, u"body"_s));
        QCOMPARE(reply.status, 200);
        QCOMPARE(reply.body, "surprise");
        QVERIFY(!reply.header("Location").isEmpty());
    }

    void tokensEnd_data() {
        QTest::addColumn<QByteArray>("action");
        QTest::addColumn<int>("refreshStatus");
        QTest::newRow("expired") << QByteArray(R"({"expireAccessToken":true})") << 200;
        QTest::newRow("revoked") << QByteArray(R"({"revokeRefreshToken":true})") << 400;
        QTest::newRow("clock ahead") << QByteArray(R"({"clockSkewSeconds":7200})") << 200;
    }
    void tokensEnd() {
        QFETCH(QByteArray, action);
        const QString refreshToken = drive_.grant()["refresh_token"_L1].toString();
        QCOMPARE(client_->about().status, 200);
        QVERIFY(drive_.orderFaults(rule(action)));
        const RawReply reply = client_->about();
        QCOMPARE(reply.status, 401);
        QVERIFY(reply.header("WWW-Authenticate").startsWith("Bearer"));
        QVERIFY(jsonOf(reply.body)["error"_L1].isObject());
        const auto refreshing =
            RawHttp::request("POST", "/o/oauth2/token", {"Content-Type: application/x-www-form-urlencoded"},
                             formOf({{u"grant_type"_s, u"refresh_token"_s},
                                     {u"client_id"_s, u"test"_s},
                                     {u"refresh_token"_s, refreshToken}}));
        QTEST(RawHttp::exchange(drive_.url(), refreshing).status, "refreshStatus");
        QVERIFY(drive_.orderFaults(rule(R"({"clockSkewSeconds":0})")));
        client_->about();
    }

    void rulesCountTheirRequests() {
        QVERIFY(drive_.orderFaults(
            R"([{"match":{"rpcMethod":"drive.about.get","nth":1,"times":2},"action":{"status":500}}])"));
        client_->filesNamed(u"another method does not count"_s);
        QList<int> statuses;
        for (int i = 0; i < 4; ++i)
            statuses.append(client_->about().status);
        QCOMPARE(statuses, (QList<int>{200, 500, 500, 200}));
    }

    void wrongRulesAreRefused_data() {
        QTest::addColumn<QByteArray>("rules");
        QTest::newRow("unknown action") << rule(R"({"explode":true})");
        QTest::newRow("unknown match") << rule(R"({"status":500})", R"({"path":"/rpc"})");
        QTest::newRow("unknown part") << QByteArray(R"([{"match":{},"action":{},"extra":1}])");
        QTest::newRow("wrong kind") << rule(R"({"reset":"after"})");
        QTest::newRow("no list") << QByteArray(R"({"match":{},"action":{"status":500}})");
    }
    void wrongRulesAreRefused() {
        QFETCH(QByteArray, rules);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"^Faults refused"_s));
        QVERIFY(!drive_.orderFaults(rules));
    }

    void controlNeedsItsToken() {
        QCOMPARE(RawHttp::exchange(drive_.url(), RawHttp::request("GET", "/control/secrets")).status, 403);
    }

    void countsWhatHappened() {
        const QByteArray target = client_->announce(10, u"counted"_s);
        client_->put(target, ten.left(6), 0, 10);
        client_->put(target, ten.mid(2), 2, 10);
        const QJsonObject state = drive_.state();
        const QJsonObject upload = state["uploads"_L1].toArray().last().toObject();
        QCOMPARE(upload["received"_L1].toInt(), 14);
        QCOMPARE(upload["duplicates"_L1].toInt(), 4);
        QVERIFY(upload["complete"_L1].toBool());
        QVERIFY(state["requests"_L1]["PUT /upload/rpc"_L1].toInt() >= 2);
        QVERIFY(state["rpcMethods"_L1]["drive.files.insert"_L1].toInt() >= 1);
    }

    // Last: by now the log has lines of every kind.
    void logHoldsNoSecrets() {
        const QStringList secrets = drive_.secrets();
        QVERIFY(secrets.size() > 10);
        const QByteArray log = drive_.log();
        QVERIFY(log.contains("PUT /upload/rpc"));
        for (const QString& secret : secrets)
            QVERIFY2(!log.contains(secret.toUtf8()), qPrintable(secret));
    }

private:
    LocalDriveProcess drive_{{u"--with-rpc"_s}};
    std::optional<LocalClient> client_;
};

QTEST_GUILESS_MAIN(TestLocalFaults)
#include "tst_localfaults.moc"
