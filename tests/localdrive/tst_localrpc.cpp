// What all of the API's methods share: changes, pages, errors, partial responses and the envelope.
#include "localdrive/rpc/FieldMask.h"
#include "localdrive/rpc/RpcEnvelope.h"
#include "localdrive/store/Text.h"
#include "tests/localdrive/LocalDrive.h"

#include <QJsonDocument>
#include <QSet>

using namespace quenby;
using namespace quenby::localdrive;
using namespace Qt::StringLiterals;

class LocalRpcTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void everyMethodIsThere() {
        const QString all =
            u"about.get apps.get,list changes.get,getStartPageToken,list,watch channels.stop "
            "children.delete,get,insert,list comments.delete,get,insert,list,patch,update "
            "files.copy,delete,emptyTrash,generateIds,get,insert,list,patch,touch,trash,untrash,update,watch "
            "parents.delete,get,insert,list "
            "permissions.delete,get,getIdForEmail,insert,list,patch,update "
            "properties.delete,get,insert,list,patch,update realtime.get,update "
            "replies.delete,get,insert,list,patch,update revisions.delete,get,list,patch,update"_s;
        QSet<QString> expected;
        for (const QString& resource : all.split(' '_L1))
            for (const QString& verb : resource.section('.'_L1, 1).split(','_L1))
                expected.insert(u"drive.%1.%2"_s.arg(resource.section('.'_L1, 0, 0), verb));
        const QStringList names = RpcMethods::names();
        QCOMPARE(QSet<QString>(names.begin(), names.end()), expected);
    }

    void everyMutationIsAChange() {
        LocalDrive drive;
        const QString id = drive.upload(u"a"_s, "x");
        const QString folder = drive.makeFolder(u"folder"_s);
        const QJsonObject on{{fileId, id}};
        const auto with = [&on](const char* json, QJsonObject extra = {}) {
            QJsonObject params = on;
            params.insert(body, parse(json));
            for (auto each = extra.begin(); each != extra.end(); ++each)
                params.insert(each.key(), each.value());
            return params;
        };
        const QJsonObject key{{u"propertyKey"_s, u"k"_s}};
        const QJsonObject parent{{u"parentId"_s, folder}, {fileId, id}};
        const QString folderBody = QStringLiteral(R"({"id": "%1"})").arg(folder);
        const std::vector<std::pair<const char*, QJsonObject>> mutations{
            {"files.patch", with(R"({"title": "b"})")},
            {"files.touch", on},
            {"files.get", {{fileId, id}, {u"updateViewedDate"_s, true}}},
            {"files.trash", on},
            {"files.untrash", on},
            {"parents.insert", with(folderBody.toUtf8().constData())},
            {"parents.delete", parent},
            {"permissions.insert", with(R"({"role": "reader", "type": "anyone"})")},
            {"permissions.delete", {{fileId, id}, {u"permissionId"_s, u"anyone"_s}}},
            {"properties.insert", with(R"({"key": "k", "value": "v"})")},
            {"properties.update", with(R"({"value": "w"})", key)},
            {"comments.insert", with(R"({"content": "c"})")},
            {"files.delete", on}};
        qint64 largest = drive.largestChangeId();
        for (const auto& [method, params] : mutations) {
            drive.result(QLatin1String(method), params);
            const QJsonObject changes =
                drive.result(u"changes.list"_s, {{u"startChangeId"_s, QString::number(largest + 1)}});
            QVERIFY2(column(changes, "fileId").contains(id), method);
            const qint64 now = changes["largestChangeId"_L1].toString().toLongLong();
            QVERIFY2(now > largest && drive.largestChangeId() == now, method);
            largest = now;
        }
        // Reading changes nothing, and neither does what changes nothing or fails.
        drive.file(folder);
        drive.result(u"files.untrash"_s, {{fileId, folder}});
        drive.refusal(u"files.trash"_s, {{fileId, u"root"_s}});
        QCOMPARE(drive.largestChangeId(), largest);
        drive.reopen();
        QCOMPARE(drive.largestChangeId(), largest);
    }

    void changesOfDeletedFiles() {
        LocalDrive drive;
        QVERIFY(drive.largestChangeId() > 0); // a poll that remembers it never begins anew
        const QString kept = drive.upload(u"kept"_s, "1");
        const QString gone = drive.upload(u"gone"_s, "2");
        drive.result(u"files.trash"_s, {{fileId, gone}});
        // In the trash is not deleted.
        const QJsonObject withoutDeleted{{u"includeDeleted"_s, false}};
        QCOMPARE(column(drive.result(u"changes.list"_s, withoutDeleted), "fileId"), QStringList({kept, gone}));
        drive.result(u"files.delete"_s, {{fileId, gone}});
        QCOMPARE(column(drive.result(u"changes.list"_s, withoutDeleted), "fileId"), QStringList{kept});

        const QJsonArray items = drive.result(u"changes.list"_s)["items"_L1].toArray();
        QCOMPARE(items.size(), 2); // only the latest change of each file
        const QJsonObject change = items[1].toObject();
        QCOMPARE(change["fileId"_L1].toString(), gone);
        QCOMPARE(change["deleted"_L1].toBool(), true);
        QVERIFY(!change.contains("file"_L1));
        QVERIFY(change["id"_L1].isString());
        QCOMPARE(items[0]["file"_L1], QJsonValue(drive.file(kept)));
        QCOMPARE(drive.result(u"changes.get"_s, {{u"changeId"_s, change["id"_L1]}}), change);
    }

    void pagesCoverEverythingOnce_data() {
        QTest::addColumn<QString>("method");
        QTest::addColumn<QString>("key");
        QTest::newRow("files") << u"files.list"_s << u"id"_s;
        QTest::newRow("children") << u"children.list"_s << u"id"_s;
        QTest::newRow("changes") << u"changes.list"_s << u"fileId"_s;
        QTest::newRow("comments") << u"comments.list"_s << u"commentId"_s;
    }
    void pagesCoverEverythingOnce() {
        QFETCH(QString, method);
        QFETCH(QString, key);
        LocalDrive drive;
        const QString file = drive.upload(u"first"_s, "x");
        for (int i = 1; i < 12; ++i)
            drive.upload(QString::number(i), "x");
        for (int i = 0; i < 12; ++i)
            drive.result(u"comments.insert"_s, onFile(file, R"({"content": "c"})"));
        const QByteArray name = key.toLatin1();
        for (int sizeOffset : {-11, -7, -1, 0, 1}) {
            QJsonObject params{{fileId, file}, {u"folderId"_s, u"root"_s}, {u"maxResults"_s, 100}};
            const QStringList all = column(drive.result(method, params), name.constData());
            const qsizetype size = std::max<qsizetype>(1, all.size() + sizeOffset);
            params.insert(u"maxResults"_s, size);
            QStringList found;
            int pages = 0;
            QJsonObject page;
            do {
                page = drive.result(method, params);
                found += column(page, name.constData());
                params.insert(u"pageToken"_s, page.value("nextPageToken"_L1));
                QVERIFY(column(page, name.constData()).size() <= size);
                QCOMPARE(page.contains("nextPageToken"_L1), page.contains("nextLink"_L1));
                // New files in between must neither shift nor repeat the others.
                if (method == "files.list"_L1)
                    drive.upload(u"late"_s, "x");
            } while (++pages < 30 && page.contains("nextPageToken"_L1));
            QCOMPARE(found, all);
            QCOMPARE(pages, (all.size() + size - 1) / size);
        }
    }

    void pageTokens() {
        LocalDrive drive;
        for (int i = 0; i < 3; ++i)
            drive.upload(QString::number(i), "x");
        QJsonObject params{{u"maxResults"_s, 1}};
        const QString token = drive.result(u"files.list"_s, params)["nextPageToken"_L1].toString();
        const auto answerTo = [&](const QString& method, const QString& given, const QString& q = {}) {
            return drive.refusal(method, {{u"pageToken"_s, given}, {u"q"_s, q}});
        };
        QCOMPARE(answerTo(u"files.list"_s, token), QString());
        QCOMPARE(answerTo(u"changes.list"_s, token), u"invalid"_s);
        QCOMPARE(answerTo(u"files.list"_s, token, u"trashed = false"_s), u"invalid"_s);
        for (qsizetype i = 0; i < token.size(); ++i) {
            QString changed = token;
            changed[i] = changed[i] == 'A'_L1 ? 'B'_L1 : 'A'_L1;
            QCOMPARE(answerTo(u"files.list"_s, changed), u"invalid"_s);
        }
        for (const char* made : {"x", "%", "AAAA", "ä"})
            QCOMPARE(answerTo(u"files.list"_s, QString::fromUtf8(made)), u"invalid"_s);
        drive.reopen();
        QCOMPARE(answerTo(u"files.list"_s, token), QString());
        // More than the most is the most, and less than one is a mistake.
        const QString maxResults = u"maxResults"_s;
        QCOMPARE(column(drive.result(u"files.list"_s, {{maxResults, 2147483647}})).size(), 3);
        QCOMPARE(drive.refusal(u"files.list"_s, {{maxResults, 0}}), u"invalid"_s);
    }

    void channels() {
        LocalDrive drive;
        const QJsonObject channel =
            parse("{\"id\": \"c1\", \"type\": \"web_hook\", \"address\": \"https://example.com/hook\"}");
        const QJsonObject open = drive.result(u"changes.watch"_s, {{body, channel}});
        QCOMPARE(drive.refusal(u"changes.watch"_s, {{body, channel}}), u"duplicate"_s);
        QVERIFY(open["expiration"_L1].toString().toLongLong() > drive.now.toMSecsSinceEpoch());
        drive.now = drive.now.addDays(2); // it has expired meanwhile
        drive.result(u"changes.watch"_s, {{body, channel}});
        drive.result(u"channels.stop"_s, {{body, open}});
        QCOMPARE(drive.refusal(u"channels.stop"_s, {{body, open}}), u"notFound"_s);
    }

    void refusals_data() {
        QTest::addColumn<QString>("method");
        QTest::addColumn<QByteArray>("params");
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("reason");
        const auto row = [](const char* method, const char* params, int code, const char* reason) {
            QTest::addRow("%s %s", method, params)
                << QString::fromLatin1(method) << QByteArray(params) << code << QString::fromLatin1(reason);
        };
        row("files.frobnicate", "{}", -32601, "methodNotFound");
        row("files.get", "{}", 400, "required");
        row("files.get", R"({"fileId": ""})", 400, "required");
        row("files.get", R"({"fileId": ["root"]})", 400, "invalid");
        row("files.get", R"({"fileId": "nowhere"})", 404, "notFound");
        row("files.get", "{\"fileId\": \"root\", \"fields\": \"id(\"}", 400, "invalid");
        row("files.get", R"({"fileId": "root", "updateViewedDate": "maybe"})", 400, "invalid");
        row("files.insert", R"({"resource": "x"})", 400, "invalid");
        row("files.insert", R"({"resource": {"title": 7}})", 400, "invalid");
        row("files.insert", R"({"resource": {"labels": {"starred": "yes"}}})", 400, "invalid");
        row("files.insert", R"({"resource": {"modifiedDate": "today"}})", 400, "invalid");
        row("files.insert", R"({"resource": {"parents": [{"id": "nowhere"}]}})", 404, "notFound");
        row("files.insert", R"({"resource": {"properties": [{"value": "x"}]}})", 400, "required");
        row("files.trash", R"({"fileId": "root"})", 403, "insufficientFilePermissions");
        row("files.delete", R"({"fileId": "root"})", 403, "insufficientFilePermissions");
        row("files.copy", R"({"fileId": "root"})", 403, "insufficientFilePermissions");
        row("files.list", R"({"q": "title"})", 400, "invalid");
        row("files.list", R"({"maxResults": "many"})", 400, "invalid");
        row("files.list", R"({"maxResults": 1.5})", 400, "invalid");
        row("changes.list", R"({"startChangeId": -1})", 400, "invalid");
        row("changes.get", R"({"changeId": "99"})", 404, "notFound");
        row("children.list", R"({"folderId": "nowhere"})", 404, "notFound");
        row("apps.get", R"({"appId": "x"})", 404, "notFound");
        row("permissions.getIdForEmail", R"({"email": "nobody"})", 400, "invalid");
        row("permissions.insert", R"({"fileId": "root", "resource": {"role": "king", "type": "user"}})", 400,
            "invalid");
        row("permissions.insert", R"({"fileId": "root", "resource": {"role": "reader", "type": "user"}})", 400,
            "required");
        row("realtime.update", R"({"fileId": "root"})", 400, "required");
        row("changes.watch", R"({"resource": {"id": "c", "type": "pigeon"}})", 400, "invalid");
    }
    void refusals() {
        QFETCH(QString, method);
        QFETCH(QByteArray, params);
        QFETCH(int, code);
        QFETCH(QString, reason);
        LocalDrive drive;
        const qint64 before = drive.largestChangeId();
        const QJsonValue error = drive.call(method, parse(params.constData()))["error"_L1];
        QCOMPARE(error["code"_L1].toInt(), code);
        QCOMPARE(error["data"_L1][0]["reason"_L1].toString(), reason);
        QVERIFY(!error["message"_L1].toString().isEmpty());
        QCOMPARE(drive.largestChangeId(), before);
    }

    void partialResponses_data() {
        QTest::addColumn<QString>("fields");
        QTest::addColumn<QByteArray>("kept"); // empty: refused
        const auto row = [](const char* fields, const char* kept) {
            QTest::newRow(fields) << QString::fromLatin1(fields) << QByteArray(kept);
        };
        const char* whole = R"({"items":[{"id":"1","l":{"s":1,"t":2}},{"id":"2"}],"token":"x"})";
        row("", whole);
        row("*", whole);
        row("items(id),token", R"({"items":[{"id":"1"},{"id":"2"}],"token":"x"})");
        row("items/id", R"({"items":[{"id":"1"},{"id":"2"}]})");
        row("items(id, l/t)", R"({"items":[{"id":"1","l":{"t":2}},{"id":"2"}]})");
        row("items/id,items/l/s", R"({"items":[{"id":"1","l":{"s":1}},{"id":"2"}]})");
        row("items/id,items,token/x", R"({"items":[{"id":"1","l":{"s":1,"t":2}},{"id":"2"}],"token":"x"})");
        row("items,items/id", R"({"items":[{"id":"1","l":{"s":1,"t":2}},{"id":"2"}]})");
        row("*/id", R"({"items":[{"id":"1"},{"id":"2"}],"token":"x"})");
        row("other", "{}");
        for (const char* broken : {",", "items(", "items()", "items)", "items(id", "items/", "/items", "a,,b", "a b(c"})
            row(broken, "");
    }
    void partialResponses() {
        QFETCH(QString, fields);
        QFETCH(QByteArray, kept);
        const auto mask = FieldMask::parse(fields);
        QCOMPARE(mask.ok(), !kept.isEmpty());
        const QJsonObject object = parse(R"({"items":[{"id":"1","l":{"s":1,"t":2}},{"id":"2"}],"token":"x"})");
        if (mask)
            QCOMPARE(mask->apply(object), QJsonDocument::fromJson(kept).object());
    }

    void envelope_data() {
        QTest::addColumn<QByteArray>("request");
        QTest::addColumn<int>("status");
        QTest::addColumn<int>("code"); // 0: a result
        QTest::addColumn<QJsonValue>("id");
        const auto row = [](const char* request, int status, int code, const QJsonValue& id) {
            QTest::newRow(request) << QByteArray(request) << status << code << id;
        };
        const QJsonValue none(QJsonValue::Null);
        const QJsonValue one(u"gtl_1"_s);
        row(R"({"jsonrpc":"2.0","method":"drive.about.get","id":"gtl_1","apiVersion":"v2"})", 200, 0, one);
        row(R"({"method":"drive.about.get","id":7,"params":{}})", 200, 0, 7);
        row(R"({"method":"drive.files.get","id":"gtl_1","params":{"fileId":"x"}})", 404, 404, one);
        row(R"({"method":"drive.files.fly","id":"gtl_1"})", 404, -32601, one);
        row(R"({"method":"drive.about.get","id":"gtl_1","params":[]})", 400, -32600, none);
        row(R"({"id":"gtl_1"})", 400, -32600, none);
        row(R"({"method":3,"id":"gtl_1"})", 400, -32600, none);
        row(R"({"method":"drive.about.get","id":{}})", 400, -32600, none);
        row("[]", 400, -32600, none);
        row(R"({"method":)", 400, -32700, none);
        row("3", 400, -32700, none);
        row("", 400, -32700, none);
    }
    void envelope() {
        QFETCH(QByteArray, request);
        QFETCH(int, status);
        QFETCH(int, code);
        QFETCH(QJsonValue, id);
        LocalDrive drive;
        const RpcMethods methods(drive.store());
        const RpcReply reply = RpcEnvelope(methods).answer(request, drive.context());
        const QJsonObject answer = QJsonDocument::fromJson(reply.body).object();
        QCOMPARE(reply.status, status);
        QCOMPARE(answer["error"_L1]["code"_L1].toInt(), code);
        QCOMPARE(answer.contains("result"_L1), code == 0);
        QCOMPARE(answer["id"_L1], id);
    }

    void batches() {
        LocalDrive drive;
        const RpcMethods methods(drive.store());
        const QByteArray request = R"([{"method":"drive.files.insert","id":"a","params":{"resource":{"title":"t"}}},)"
                                   R"({"method":"drive.files.get","id":"b","params":{"fileId":"nowhere"}},7,)"
                                   R"({"method":"drive.files.list","id":"c"}])";
        const RpcReply reply = RpcEnvelope(methods).answer(request, drive.context());
        const QJsonArray answers = QJsonDocument::fromJson(reply.body).array();
        QCOMPARE(reply.status, 200);
        QCOMPARE(answers.size(), 4);
        QCOMPARE(answers[0]["id"_L1].toString(), u"a"_s);
        QCOMPARE(answers[1]["error"_L1]["code"_L1].toInt(), 404);
        QCOMPARE(answers[2]["error"_L1]["code"_L1].toInt(), -32600);
        QCOMPARE(column(answers[3]["result"_L1].toObject(), "title"), QStringList{u"t"_s});
    }

    void dates_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("instant"); // empty: no date
        const auto row = [](const char* text, const char* instant) {
            QTest::newRow(text) << QString::fromLatin1(text) << QString::fromLatin1(instant);
        };
        row("2014-07-01T10:20:30.5Z", "2014-07-01T10:20:30.500Z");
        row("2014-07-01t10:20:30z", "2014-07-01T10:20:30.000Z");
        row("2014-07-01T10:20:30+05:30", "2014-07-01T04:50:30.000Z");
        row("2014-07-01T10:20:30.123999-08:00", "2014-07-01T18:20:30.123Z");
        row("2014-07-01T10:20:30", "2014-07-01T10:20:30.000Z");
        row("2014-07-01", "2014-07-01T00:00:00.000Z");
        row("2012-06-30T23:59:60Z", "2012-06-30T23:59:59.000Z");
        for (const char* wrong : {"", "2014-13-01", "2014-02-30", "2014-07-01T24:00:00Z", "2014-07-01T10:60:00Z",
                                  "2014-07-01T10:20:61Z", "2014-07-01T10:20:30+24:00", "2014-07-01T10:20Z", "14-07-01"})
            row(wrong, "");
    }
    void dates() {
        QFETCH(QString, text);
        const auto date = parsedDate(text);
        QTEST(date ? dateText(*date) : QString(), "instant");
    }
};

QTEST_GUILESS_MAIN(LocalRpcTest)
#include "tst_localrpc.moc"
