// What all of the API's methods share: changes, pages, errors, partial responses and the envelope.
#include "localdrive/rpc/FieldMask.h"
#include "localdrive/rpc/RpcEnvelope.h"
#include "localdrive/store/Text.h"
#include "tests/localdrive/LocalDrive.h"

#include <QJsonDocument>
#include <QSet>

using namespace quenby;
using namespace quenby::localdrive;

class LocalRpcTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void everyMethodIsThere();
    void everyMutationIsAChange();
    void changesOfDeletedFiles();
    void pagesCoverEverythingOnce_data();
    void pagesCoverEverythingOnce();
    void pageTokens();
    void channels();
    void refusals_data();
    void refusals();
    void partialResponses_data();
    void partialResponses();
    void envelope_data();
    void envelope();
    void batches();
    void dates_data();
    void dates();
};

void LocalRpcTest::everyMethodIsThere() {
    const QHash<QString, QString> resources{
        {QStringLiteral("about"), QStringLiteral("get")},
        {QStringLiteral("apps"), QStringLiteral("get list")},
        {QStringLiteral("changes"), QStringLiteral("get list watch")},
        {QStringLiteral("channels"), QStringLiteral("stop")},
        {QStringLiteral("children"), QStringLiteral("delete get insert list")},
        {QStringLiteral("comments"), QStringLiteral("delete get insert list patch update")},
        {QStringLiteral("files"),
         QStringLiteral("copy delete emptyTrash get insert list patch touch trash untrash update watch")},
        {QStringLiteral("parents"), QStringLiteral("delete get insert list")},
        {QStringLiteral("permissions"), QStringLiteral("delete get getIdForEmail insert list patch update")},
        {QStringLiteral("properties"), QStringLiteral("delete get insert list patch update")},
        {QStringLiteral("realtime"), QStringLiteral("get update")},
        {QStringLiteral("replies"), QStringLiteral("delete get insert list patch update")},
        {QStringLiteral("revisions"), QStringLiteral("delete get list patch update")}};
    QSet<QString> expected;
    for (auto each = resources.cbegin(); each != resources.cend(); ++each)
        for (const QString& verb : each.value().split(QLatin1Char(' ')))
            expected.insert(QStringLiteral("drive.%1.%2").arg(each.key(), verb));
    const QStringList names = RpcMethods::names();
    QCOMPARE(QSet<QString>(names.begin(), names.end()), expected);
}

void LocalRpcTest::everyMutationIsAChange() {
    LocalDrive drive;
    const QString id = drive.upload(QStringLiteral("a"), "x");
    const QString folder = drive.makeFolder(QStringLiteral("folder"));
    const QJsonObject on{{fileId, id}};
    const auto with = [&on](const char* json, QJsonObject extra = {}) {
        QJsonObject params = on;
        params.insert(body, parse(json));
        for (auto each = extra.begin(); each != extra.end(); ++each)
            params.insert(each.key(), each.value());
        return params;
    };
    const QJsonObject key{{QStringLiteral("propertyKey"), QStringLiteral("k")}};
    const QJsonObject parent{{QStringLiteral("parentId"), folder}, {fileId, id}};
    const QString folderBody = QStringLiteral(R"({"id": "%1"})").arg(folder);
    const std::vector<std::pair<const char*, QJsonObject>> mutations{
        {"files.patch", with(R"({"title": "b"})")},
        {"files.touch", on},
        {"files.get", {{fileId, id}, {QStringLiteral("updateViewedDate"), true}}},
        {"files.trash", on},
        {"files.untrash", on},
        {"parents.insert", with(folderBody.toUtf8().constData())},
        {"parents.delete", parent},
        {"permissions.insert", with(R"({"role": "reader", "type": "anyone"})")},
        {"permissions.delete", {{fileId, id}, {QStringLiteral("permissionId"), QStringLiteral("anyone")}}},
        {"properties.insert", with(R"({"key": "k", "value": "v"})")},
        {"properties.update", with(R"({"value": "w"})", key)},
        {"comments.insert", with(R"({"content": "c"})")},
        {"files.delete", on}};
    qint64 largest = drive.largestChangeId();
    for (const auto& [method, params] : mutations) {
        drive.result(QLatin1String(method), params);
        const QJsonObject changes = drive.result(QStringLiteral("changes.list"),
                                                 {{QStringLiteral("startChangeId"), QString::number(largest + 1)}});
        QVERIFY2(column(changes, "fileId").contains(id), method);
        const qint64 now = changes[QLatin1String("largestChangeId")].toString().toLongLong();
        QVERIFY2(now > largest && drive.largestChangeId() == now, method);
        largest = now;
    }
    // Reading changes nothing, and neither does what changes nothing or fails.
    drive.file(folder);
    drive.result(QStringLiteral("files.untrash"), {{fileId, folder}});
    drive.refusal(QStringLiteral("files.trash"), {{fileId, QStringLiteral("root")}});
    QCOMPARE(drive.largestChangeId(), largest);
    drive.reopen();
    QCOMPARE(drive.largestChangeId(), largest);
}

void LocalRpcTest::changesOfDeletedFiles() {
    LocalDrive drive;
    QVERIFY(drive.largestChangeId() > 0); // a poll that remembers it never begins anew
    const QString kept = drive.upload(QStringLiteral("kept"), "1");
    const QString gone = drive.upload(QStringLiteral("gone"), "2");
    drive.result(QStringLiteral("files.trash"), {{fileId, gone}});
    // In the trash is not deleted.
    const QJsonObject withoutDeleted{{QStringLiteral("includeDeleted"), false}};
    QCOMPARE(column(drive.result(QStringLiteral("changes.list"), withoutDeleted), "fileId"), QStringList({kept, gone}));
    drive.result(QStringLiteral("files.delete"), {{fileId, gone}});
    QCOMPARE(column(drive.result(QStringLiteral("changes.list"), withoutDeleted), "fileId"), QStringList{kept});

    const QJsonArray items = drive.result(QStringLiteral("changes.list"))[QLatin1String("items")].toArray();
    QCOMPARE(items.size(), 2); // only the latest change of each file
    const QJsonObject change = items[1].toObject();
    QCOMPARE(change[QLatin1String("fileId")].toString(), gone);
    QCOMPARE(change[QLatin1String("deleted")].toBool(), true);
    QVERIFY(!change.contains(QLatin1String("file")));
    QVERIFY(change[QLatin1String("id")].isString());
    QCOMPARE(items[0][QLatin1String("file")], QJsonValue(drive.file(kept)));
    QCOMPARE(drive.result(QStringLiteral("changes.get"), {{QStringLiteral("changeId"), change[QLatin1String("id")]}}),
             change);
}

void LocalRpcTest::pagesCoverEverythingOnce_data() {
    QTest::addColumn<QString>("method");
    QTest::addColumn<QString>("key");
    QTest::newRow("files") << QStringLiteral("files.list") << QStringLiteral("id");
    QTest::newRow("children") << QStringLiteral("children.list") << QStringLiteral("id");
    QTest::newRow("changes") << QStringLiteral("changes.list") << QStringLiteral("fileId");
    QTest::newRow("comments") << QStringLiteral("comments.list") << QStringLiteral("commentId");
}

void LocalRpcTest::pagesCoverEverythingOnce() {
    QFETCH(QString, method);
    QFETCH(QString, key);
    LocalDrive drive;
    const QString file = drive.upload(QStringLiteral("first"), "x");
    for (int i = 1; i < 12; ++i)
        drive.upload(QString::number(i), "x");
    for (int i = 0; i < 12; ++i)
        drive.result(QStringLiteral("comments.insert"), {{fileId, file}, {body, parse(R"({"content": "c"})")}});
    const QByteArray name = key.toLatin1();
    for (int sizeOffset : {-11, -7, -1, 0, 1}) {
        QJsonObject params{
            {fileId, file}, {QStringLiteral("folderId"), QStringLiteral("root")}, {QStringLiteral("maxResults"), 100}};
        const QStringList all = column(drive.result(method, params), name.constData());
        const qsizetype size = std::max<qsizetype>(1, all.size() + sizeOffset);
        params.insert(QStringLiteral("maxResults"), size);
        QStringList found;
        int pages = 0;
        QJsonObject page;
        do {
            page = drive.result(method, params);
            found += column(page, name.constData());
            params.insert(QStringLiteral("pageToken"), page.value(QLatin1String("nextPageToken")));
            QVERIFY(column(page, name.constData()).size() <= size);
            QCOMPARE(page.contains(QLatin1String("nextPageToken")), page.contains(QLatin1String("nextLink")));
            // New files in between must neither shift nor repeat the others.
            if (method == QLatin1String("files.list"))
                drive.upload(QStringLiteral("late"), "x");
        } while (++pages < 30 && page.contains(QLatin1String("nextPageToken")));
        QCOMPARE(found, all);
        QCOMPARE(pages, (all.size() + size - 1) / size);
    }
}

void LocalRpcTest::pageTokens() {
    LocalDrive drive;
    for (int i = 0; i < 3; ++i)
        drive.upload(QString::number(i), "x");
    QJsonObject params{{QStringLiteral("maxResults"), 1}};
    const QString token = drive.result(QStringLiteral("files.list"), params)[QLatin1String("nextPageToken")].toString();
    const auto answerTo = [&](const QString& method, const QString& given, const QString& q = {}) {
        return drive.refusal(method, {{QStringLiteral("pageToken"), given}, {QStringLiteral("q"), q}});
    };
    QCOMPARE(answerTo(QStringLiteral("files.list"), token), QString());
    QCOMPARE(answerTo(QStringLiteral("changes.list"), token), QStringLiteral("invalid"));
    QCOMPARE(answerTo(QStringLiteral("files.list"), token, QStringLiteral("trashed = false")),
             QStringLiteral("invalid"));
    for (qsizetype i = 0; i < token.size(); ++i) {
        QString changed = token;
        changed[i] = changed[i] == QLatin1Char('A') ? QLatin1Char('B') : QLatin1Char('A');
        QCOMPARE(answerTo(QStringLiteral("files.list"), changed), QStringLiteral("invalid"));
    }
    for (const char* made : {"x", "%", "AAAA", "ä"})
        QCOMPARE(answerTo(QStringLiteral("files.list"), QString::fromUtf8(made)), QStringLiteral("invalid"));
    drive.reopen();
    QCOMPARE(answerTo(QStringLiteral("files.list"), token), QString());
    // More than the most is the most, and less than one is a mistake.
    const QString maxResults = QStringLiteral("maxResults");
    QCOMPARE(column(drive.result(QStringLiteral("files.list"), {{maxResults, 2147483647}})).size(), 3);
    QCOMPARE(drive.refusal(QStringLiteral("files.list"), {{maxResults, 0}}), QStringLiteral("invalid"));
}

void LocalRpcTest::channels() {
    LocalDrive drive;
    const QJsonObject channel = parse(R"({"id": "c1", "type": "web_hook", "address": "https://example.com/hook"})");
    const QJsonObject open = drive.result(QStringLiteral("changes.watch"), {{body, channel}});
    QCOMPARE(drive.refusal(QStringLiteral("changes.watch"), {{body, channel}}), QStringLiteral("duplicate"));
    QVERIFY(open[QLatin1String("expiration")].toString().toLongLong() > drive.now.toMSecsSinceEpoch());
    drive.now = drive.now.addDays(2); // it has expired meanwhile
    drive.result(QStringLiteral("changes.watch"), {{body, channel}});
    drive.result(QStringLiteral("channels.stop"), {{body, open}});
    QCOMPARE(drive.refusal(QStringLiteral("channels.stop"), {{body, open}}), QStringLiteral("notFound"));
}

void LocalRpcTest::refusals_data() {
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
    row("files.get", R"({"fileId": "root", "fields": "id("})", 400, "invalid");
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
    row("permissions.insert", R"({"fileId": "root", "resource": {"role": "king", "type": "user"}})", 400, "invalid");
    row("permissions.insert", R"({"fileId": "root", "resource": {"role": "reader", "type": "user"}})", 400, "required");
    row("realtime.update", R"({"fileId": "root"})", 400, "required");
    row("changes.watch", R"({"resource": {"id": "c", "type": "pigeon"}})", 400, "invalid");
}

void LocalRpcTest::refusals() {
    QFETCH(QString, method);
    QFETCH(QByteArray, params);
    QFETCH(int, code);
    QFETCH(QString, reason);
    LocalDrive drive;
    const qint64 before = drive.largestChangeId();
    const QJsonValue error = drive.call(method, parse(params.constData()))[QLatin1String("error")];
    QCOMPARE(error[QLatin1String("code")].toInt(), code);
    QCOMPARE(error[QLatin1String("data")][0][QLatin1String("reason")].toString(), reason);
    QVERIFY(!error[QLatin1String("message")].toString().isEmpty());
    QCOMPARE(drive.largestChangeId(), before);
}

void LocalRpcTest::partialResponses_data() {
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

void LocalRpcTest::partialResponses() {
    QFETCH(QString, fields);
    QFETCH(QByteArray, kept);
    const auto mask = FieldMask::parse(fields);
    QCOMPARE(mask.ok(), !kept.isEmpty());
    const QJsonObject object = parse(R"({"items":[{"id":"1","l":{"s":1,"t":2}},{"id":"2"}],"token":"x"})");
    if (mask)
        QCOMPARE(mask->apply(object), QJsonDocument::fromJson(kept).object());
}

void LocalRpcTest::envelope_data() {
    QTest::addColumn<QByteArray>("request");
    QTest::addColumn<int>("status");
    QTest::addColumn<int>("code"); // 0: a result
    QTest::addColumn<QJsonValue>("id");
    const auto row = [](const char* request, int status, int code, const QJsonValue& id) {
        QTest::newRow(request) << QByteArray(request) << status << code << id;
    };
    const QJsonValue none(QJsonValue::Null);
    const QJsonValue one(QStringLiteral("gtl_1"));
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

void LocalRpcTest::envelope() {
    QFETCH(QByteArray, request);
    QFETCH(int, status);
    QFETCH(int, code);
    QFETCH(QJsonValue, id);
    LocalDrive drive;
    const RpcMethods methods(drive.store());
    const RpcReply reply = RpcEnvelope(methods).answer(request, drive.context());
    const QJsonObject answer = QJsonDocument::fromJson(reply.body).object();
    QCOMPARE(reply.status, status);
    QCOMPARE(answer[QLatin1String("error")][QLatin1String("code")].toInt(), code);
    QCOMPARE(answer.contains(QLatin1String("result")), code == 0);
    QCOMPARE(answer[QLatin1String("id")], id);
}

void LocalRpcTest::batches() {
    LocalDrive drive;
    const RpcMethods methods(drive.store());
    const QByteArray request = R"([{"method":"drive.files.insert","id":"a","params":{"resource":{"title":"t"}}},
                                   {"method":"drive.files.get","id":"b","params":{"fileId":"nowhere"}},
                                   7,
                                   {"method":"drive.files.list","id":"c"}])";
    const RpcReply reply = RpcEnvelope(methods).answer(request, drive.context());
    const QJsonArray answers = QJsonDocument::fromJson(reply.body).array();
    QCOMPARE(reply.status, 200);
    QCOMPARE(answers.size(), 4);
    QCOMPARE(answers[0][QLatin1String("id")].toString(), QStringLiteral("a"));
    QCOMPARE(answers[1][QLatin1String("error")][QLatin1String("code")].toInt(), 404);
    QCOMPARE(answers[2][QLatin1String("error")][QLatin1String("code")].toInt(), -32600);
    QCOMPARE(column(answers[3][QLatin1String("result")].toObject(), "title"), QStringList{QStringLiteral("t")});
}

void LocalRpcTest::dates_data() {
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

void LocalRpcTest::dates() {
    QFETCH(QString, text);
    QFETCH(QString, instant);
    const auto date = parsedDate(text);
    QCOMPARE(date ? dateText(*date) : QString(), instant);
}

QTEST_GUILESS_MAIN(LocalRpcTest)
#include "tst_localrpc.moc"
