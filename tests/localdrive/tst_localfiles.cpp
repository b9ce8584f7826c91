// Files, folders and what hangs on them, through the API's methods.
#include "localdrive/store/NativeTypes.h"
#include "localdrive/store/Text.h"
#include "tests/localdrive/LocalDrive.h"

#include <QRegularExpression>
#include <QSet>

using namespace quenby;
using namespace quenby::localdrive;

class LocalFilesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void newFile();
    void hostileTitles_data();
    void hostileTitles();
    void documentsAndFolders();
    void updatesAndRevisions();
    void datesThatClientsSet();
    void trashOfFolders();
    void deletionOfFolders();
    void folderCircles();
    void quota();
    void permissions();
    void commentsAndReplies();
    void propertiesAndRealtime();
};

void LocalFilesTest::newFile() {
    LocalDrive drive;
    const QJsonObject made =
        drive
            .callWithMedia(QStringLiteral("files.insert"), {{body, parse(R"({"title": "pic.tar.png"})")}}, "12345",
                           QStringLiteral("image/png"))[QLatin1String("result")]
            .toObject();
    const QString id = made[QLatin1String("id")].toString();
    QCOMPARE(id.size(), 44);
    const QString root = drive.result(QStringLiteral("about.get"))[QLatin1String("rootFolderId")].toString();
    const QString api = QStringLiteral("http://127.0.0.1:4711/drive/v2/files/") + id;
    const QHash<QString, QJsonValue> expected{
        {QStringLiteral("kind"), QStringLiteral("drive#file")},
        {QStringLiteral("title"), QStringLiteral("pic.tar.png")},
        {QStringLiteral("originalFilename"), QStringLiteral("pic.tar.png")},
        {QStringLiteral("fileExtension"), QStringLiteral("png")},
        {QStringLiteral("mimeType"), QStringLiteral("image/png")},
        {QStringLiteral("fileSize"), QStringLiteral("5")},
        {QStringLiteral("quotaBytesUsed"), QStringLiteral("5")},
        {QStringLiteral("md5Checksum"), QStringLiteral("827ccb0eea8a706c4c34a16891f84e7b")},
        {QStringLiteral("selfLink"), api},
        {QStringLiteral("downloadUrl"), QString(api + QStringLiteral("?alt=media"))},
        {QStringLiteral("alternateLink"), QStringLiteral("http://127.0.0.1:4711/file/d/%1/view").arg(id)},
        {QStringLiteral("iconLink"), QStringLiteral("http://127.0.0.1:4711/icons/image.png")},
        {QStringLiteral("createdDate"), dateText(drive.now.addMSecs(-1001))},
        {QStringLiteral("modifiedDate"), made[QLatin1String("createdDate")]},
        {QStringLiteral("ownerNames"), QJsonArray{drive.user.displayName}},
        {QStringLiteral("shared"), false},
        {QStringLiteral("editable"), true}};
    for (auto each = expected.cbegin(); each != expected.cend(); ++each)
        QVERIFY2(made[each.key()] == each.value(),
                 qPrintable(each.key() + QStringLiteral(" is ") + made[each.key()].toVariant().toString()));
    QVERIFY(made[QLatin1String("thumbnailLink")].toString().contains(id));
    QVERIFY(QRegularExpression(QStringLiteral("^\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3}Z$"))
                .match(made[QLatin1String("createdDate")].toString())
                .hasMatch());
    QCOMPARE(made[QLatin1String("parents")][0][QLatin1String("id")].toString(), root);
    QCOMPARE(made[QLatin1String("parents")][0][QLatin1String("isRoot")].toBool(), true);
    QCOMPARE(made[QLatin1String("owners")][0][QLatin1String("emailAddress")].toString(), drive.user.emailAddress);
    QCOMPARE(made[QLatin1String("userPermission")][QLatin1String("role")].toString(), QStringLiteral("owner"));
    QCOMPARE(made[QLatin1String("labels")][QLatin1String("trashed")].toBool(true), false);
    QCOMPARE(drive.file(id), made);

    // Without a content a file has no bytes, but is a file.
    const QJsonObject empty = drive.result(QStringLiteral("files.insert"));
    QCOMPARE(empty[QLatin1String("title")].toString(), QStringLiteral("Untitled"));
    QCOMPARE(empty[QLatin1String("fileSize")].toString(), QStringLiteral("0"));
    QCOMPARE(drive.store().content(drive.context(), empty[QLatin1String("id")].toString())->size, qint64{0});
}

void LocalFilesTest::hostileTitles_data() {
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("stored");
    const auto same = [](const char* tag, const QString& title) { QTest::newRow(tag) << title << title; };
    same("quotes", QStringLiteral("it's \"so\" \\ `x`"));
    same("lines", QStringLiteral("one\ntwo\r\n\tthree"));
    same("sql", QStringLiteral("'; DROP TABLE files; --"));
    same("emoji", QStringLiteral("😀 e\u0301 ﷽"));
    same("path", QStringLiteral("../../etc/passwd"));
    same("nul", QString(QStringLiteral("a") + QChar(0) + QStringLiteral("b")));
    same("long", QString(20000, QLatin1Char('x')));
    QTest::newRow("half a pair") << QString(QStringLiteral("a") + QChar(0xd83d) + QStringLiteral("b"))
                                 << QStringLiteral("a\ufffdb");
}

void LocalFilesTest::hostileTitles() {
    QFETCH(QString, title);
    QFETCH(QString, stored);
    LocalDrive drive;
    const QString id = drive.upload(title, "x");
    drive.reopen();
    QCOMPARE(drive.file(id)[QLatin1String("title")].toString(), stored);
    QString escaped = title;
    escaped.replace(QLatin1Char('\\'), QLatin1String("\\\\")).replace(QLatin1Char('\''), QLatin1String("\\'"));
    for (const char* op : {"=", "contains"})
        QCOMPARE(column(drive.result(
                     QStringLiteral("files.list"),
                     {{QStringLiteral("q"), QStringLiteral("title %1 '%2'").arg(QLatin1String(op), escaped)}})),
                 QStringList{id});
}

void LocalFilesTest::documentsAndFolders() {
    LocalDrive drive;
    QStringList types = documentTypes();
    QCOMPARE(types.size(), 4);
    for (const QString& type : types) {
        const QJsonObject made =
            drive.result(QStringLiteral("files.insert"), {{body, QJsonObject{{QStringLiteral("mimeType"), type}}}});
        const QJsonObject exports = made[QLatin1String("exportLinks")].toObject();
        QCOMPARE(exports.size(), exportTypes(type).size());
        QVERIFY(!made.contains(QLatin1String("downloadUrl")));
        QVERIFY(!made.contains(QLatin1String("md5Checksum")));
        QCOMPARE(made[QLatin1String("quotaBytesUsed")].toString(), QStringLiteral("0"));
        QCOMPARE(drive.store().content(drive.context(), made[QLatin1String("id")].toString()).error().code(),
                 qint64{400});
    }
    types.append(folderMimeType);
    for (const QString& type : types)
        QCOMPARE(LocalDrive::reasonOf(drive.callWithMedia(
                     QStringLiteral("files.insert"), {{body, QJsonObject{{QStringLiteral("mimeType"), type}}}}, "x")),
                 QStringLiteral("invalid"));
    // A file stays what it is.
    const QString file = drive.upload(QStringLiteral("f"), "x");
    QCOMPARE(drive.refusal(QStringLiteral("files.patch"),
                           {{fileId, file}, {body, QJsonObject{{QStringLiteral("mimeType"), folderMimeType}}}}),
             QStringLiteral("invalid"));
}

void LocalFilesTest::updatesAndRevisions() {
    LocalDrive drive;
    const QString id = drive.upload(QStringLiteral("a"), "one");
    const QJsonObject before = drive.file(id);
    const QJsonObject starred =
        drive.result(QStringLiteral("files.patch"), {{fileId, id}, {body, parse(R"({"labels": {"starred": true}})")}});
    QCOMPARE(starred[QLatin1String("labels")][QLatin1String("starred")].toBool(), true);
    QCOMPARE(starred[QLatin1String("modifiedDate")], before[QLatin1String("modifiedDate")]); // not edited
    QVERIFY(starred[QLatin1String("etag")] != before[QLatin1String("etag")]);

    const QJsonObject renamed =
        drive.result(QStringLiteral("files.update"),
                     {{fileId, id}, {body, parse(R"({"title": "b", "description": "words", "id": "ignored"})")}});
    QVERIFY(renamed[QLatin1String("modifiedDate")].toString() > before[QLatin1String("modifiedDate")].toString());
    QCOMPARE(renamed[QLatin1String("labels")][QLatin1String("starred")].toBool(), true);
    const QJsonObject cleared =
        drive.result(QStringLiteral("files.patch"), {{fileId, id}, {body, parse(R"({"description": null})")}});
    QVERIFY(!cleared.contains(QLatin1String("description")));
    QCOMPARE(cleared[QLatin1String("title")].toString(), QStringLiteral("b"));

    drive.callWithMedia(QStringLiteral("files.update"), {{fileId, id}}, "three", QStringLiteral("text/html"));
    const QJsonObject list = drive.result(QStringLiteral("revisions.list"), {{fileId, id}});
    const QStringList revisions = column(list);
    QCOMPARE(column(list, "fileSize"), QStringList({QStringLiteral("3"), QStringLiteral("5")}));
    QCOMPARE(drive.file(id)[QLatin1String("headRevisionId")].toString(), revisions[1]);
    QCOMPARE(drive.file(id)[QLatin1String("mimeType")].toString(), QStringLiteral("text/html"));
    QCOMPARE(drive.store().content(drive.context(), id, revisions[0])->file->readAll(), QByteArray("one"));

    // A pinned revision costs quota, and the head can't be lost.
    const QString revisionId = QStringLiteral("revisionId");
    drive.result(QStringLiteral("revisions.patch"),
                 {{fileId, id}, {revisionId, revisions[0]}, {body, parse(R"({"pinned": true})")}});
    QCOMPARE(drive.file(id)[QLatin1String("quotaBytesUsed")].toString(), QStringLiteral("8"));
    drive.result(QStringLiteral("revisions.delete"), {{fileId, id}, {revisionId, revisions[1]}});
    QCOMPARE(drive.file(id)[QLatin1String("fileSize")].toString(), QStringLiteral("3"));
    QCOMPARE(drive.refusal(QStringLiteral("revisions.delete"), {{fileId, id}, {revisionId, QStringLiteral("head")}}),
             QStringLiteral("invalid"));
    for (int i = 0; i < 103; ++i)
        drive.callWithMedia(QStringLiteral("files.update"), {{fileId, id}}, QByteArray::number(i));
    QCOMPARE(column(drive.result(QStringLiteral("revisions.list"), {{fileId, id}})).size(), 101); // and the pinned one
}

void LocalFilesTest::datesThatClientsSet() {
    LocalDrive drive;
    const QString given = QStringLiteral("2011-02-03T04:05:06.007Z");
    const QJsonObject dates{{QStringLiteral("modifiedDate"), given}, {QStringLiteral("createdDate"), given}};
    const QJsonObject made = drive.result(QStringLiteral("files.insert"), {{body, dates}});
    QCOMPARE(made[QLatin1String("modifiedDate")].toString(), given);
    QCOMPARE(made[QLatin1String("createdDate")].toString(), given);
    const QString id = made[QLatin1String("id")].toString();
    const QString other = QStringLiteral("2012-02-03T04:05:06.007Z");
    QJsonObject change{{QStringLiteral("modifiedDate"), other}, {QStringLiteral("title"), QStringLiteral("x")}};
    const QJsonObject unasked = drive.result(QStringLiteral("files.patch"), {{fileId, id}, {body, change}});
    QVERIFY(unasked[QLatin1String("modifiedDate")].toString() > other);
    change.insert(QStringLiteral("title"), QStringLiteral("y"));
    const QJsonObject asked = drive.result(QStringLiteral("files.patch"),
                                           {{fileId, id}, {body, change}, {QStringLiteral("setModifiedDate"), true}});
    QCOMPARE(asked[QLatin1String("modifiedDate")].toString(), other);
    const QJsonObject touched = drive.result(QStringLiteral("files.touch"), {{fileId, id}});
    QVERIFY(touched[QLatin1String("modifiedDate")].toString() > unasked[QLatin1String("modifiedDate")].toString());
}

void LocalFilesTest::trashOfFolders() {
    LocalDrive drive;
    const QString outer = drive.makeFolder(QStringLiteral("outer"));
    const QString inner = drive.makeFolder(QStringLiteral("inner"), outer);
    const QString deep = drive.upload(QStringLiteral("deep"), "1", inner);
    const QString twice = drive.upload(QStringLiteral("twice"), "2", inner);
    drive.result(QStringLiteral("parents.insert"), {{fileId, twice}, {body, parse(R"({"id": "root"})")}});
    const auto state = [&drive](const QString& id) {
        const QJsonObject file = drive.file(id);
        return std::pair(file[QLatin1String("labels")][QLatin1String("trashed")].toBool(),
                         file[QLatin1String("explicitlyTrashed")].toBool());
    };
    using State = std::pair<bool, bool>;
    drive.result(QStringLiteral("files.trash"), {{fileId, outer}});
    QVERIFY(state(outer) == State(true, true));
    QVERIFY(state(inner) == State(true, false));
    QVERIFY(state(deep) == State(true, false));
    QVERIFY(state(twice) == State(false, false)); // still in the root folder

    drive.result(QStringLiteral("files.trash"), {{fileId, deep}});
    drive.result(QStringLiteral("files.untrash"), {{fileId, outer}});
    QVERIFY(state(inner) == State(false, false));
    QVERIFY(state(deep) == State(true, true)); // put there by itself

    // What goes into a trashed folder is in the trash, and back out when it is moved on.
    drive.result(QStringLiteral("files.trash"), {{fileId, inner}});
    const QString late = drive.upload(QStringLiteral("late"), "3", inner);
    QVERIFY(state(late) == State(true, false));
    drive.result(QStringLiteral("files.patch"), {{fileId, late},
                                                 {QStringLiteral("addParents"), QStringLiteral("root")},
                                                 {QStringLiteral("removeParents"), inner}});
    QVERIFY(state(late) == State(false, false));

    drive.result(QStringLiteral("files.emptyTrash"));
    QCOMPARE(drive.refusal(QStringLiteral("files.get"), {{fileId, inner}}), QStringLiteral("notFound"));
    QCOMPARE(drive.refusal(QStringLiteral("files.get"), {{fileId, deep}}), QStringLiteral("notFound"));
    QVERIFY(state(twice) == State(false, false));
    QVERIFY(state(outer) == State(false, false));
}

void LocalFilesTest::deletionOfFolders() {
    LocalDrive drive;
    const QString outer = drive.makeFolder(QStringLiteral("outer"));
    const QString inner = drive.makeFolder(QStringLiteral("inner"), outer);
    const QString deep = drive.upload(QStringLiteral("deep"), "1", inner);
    const QString twice = drive.upload(QStringLiteral("twice"), "2", inner);
    drive.result(QStringLiteral("children.insert"), {{QStringLiteral("folderId"), QStringLiteral("root")},
                                                     {body, QJsonObject{{QStringLiteral("id"), twice}}}});
    const qint64 before = drive.largestChangeId();
    drive.result(QStringLiteral("files.delete"), {{fileId, outer}});
    const QJsonObject changes = drive.result(QStringLiteral("changes.list"),
                                             {{QStringLiteral("startChangeId"), static_cast<double>(before + 1)}});
    QSet<QString> deleted;
    for (const QJsonValue change : changes[QLatin1String("items")].toArray())
        if (change[QLatin1String("deleted")].toBool())
            deleted.insert(change[QLatin1String("fileId")].toString());
    QCOMPARE(deleted, QSet<QString>({outer, inner, deep}));
    QCOMPARE(column(drive.result(QStringLiteral("parents.list"), {{fileId, twice}})).size(), 1);
    QCOMPARE(column(drive.result(QStringLiteral("files.list"))), QStringList{twice});
}

void LocalFilesTest::folderCircles() {
    LocalDrive drive;
    const QString a = drive.makeFolder(QStringLiteral("a"));
    const QString b = drive.makeFolder(QStringLiteral("b"), a);
    const QString c = drive.makeFolder(QStringLiteral("c"), b);
    const QString file = drive.upload(QStringLiteral("f"), "x");
    const auto put = [&drive](const QString& id, const QString& into) {
        return drive.refusal(QStringLiteral("parents.insert"),
                             {{fileId, id}, {body, QJsonObject{{QStringLiteral("id"), into}}}});
    };
    QCOMPARE(put(a, c), QStringLiteral("invalid"));
    QCOMPARE(put(a, a), QStringLiteral("invalid"));
    QCOMPARE(put(c, file), QStringLiteral("invalid")); // no folder
    QCOMPARE(put(c, QStringLiteral("nowhere")), QStringLiteral("notFound"));
    QVERIFY(!put(QStringLiteral("root"), a).isEmpty());
    QCOMPARE(put(c, a), QString()); // two ways down are no circle
    QCOMPARE(column(drive.result(QStringLiteral("parents.list"), {{fileId, c}})).size(), 2);
}

void LocalFilesTest::quota() {
    LocalDrive drive(100);
    const auto about = [&drive](const char* key) {
        return drive.result(QStringLiteral("about.get"))[QLatin1String(key)].toString();
    };
    QCOMPARE(about("quotaBytesTotal"), QStringLiteral("100"));
    const QString first = drive.upload(QStringLiteral("a"), QByteArray(60, 'x'));
    const QJsonObject refused = drive.callWithMedia(QStringLiteral("files.insert"), {}, QByteArray(41, 'x'));
    QCOMPARE(LocalDrive::reasonOf(refused), QStringLiteral("quotaExceeded"));
    QCOMPARE(refused[QLatin1String("error")][QLatin1String("code")].toInt(), 403);
    QCOMPARE(drive.refusal(QStringLiteral("files.copy"), {{fileId, first}}), QStringLiteral("quotaExceeded"));
    drive.upload(QStringLiteral("b"), QByteArray(40, 'x')); // exactly full
    QCOMPARE(about("quotaBytesUsed"), QStringLiteral("100"));
    // A new content instead of an old one only needs the difference.
    drive.callWithMedia(QStringLiteral("files.update"), {{fileId, first}}, QByteArray(50, 'y'));
    QCOMPARE(about("quotaBytesUsed"), QStringLiteral("90"));
    drive.result(QStringLiteral("files.trash"), {{fileId, first}});
    QCOMPARE(about("quotaBytesUsed"), QStringLiteral("90"));
    QCOMPARE(about("quotaBytesUsedInTrash"), QStringLiteral("50"));
    drive.result(QStringLiteral("files.emptyTrash"));
    QCOMPARE(about("quotaBytesUsed"), QStringLiteral("40"));
    const QJsonArray services =
        drive.result(QStringLiteral("about.get"))[QLatin1String("quotaBytesByService")].toArray();
    QCOMPARE(services[0][QLatin1String("bytesUsed")].toString(), QStringLiteral("40"));
}

void LocalFilesTest::permissions() {
    LocalDrive drive;
    const QString id = drive.upload(QStringLiteral("a"), "x");
    const Account owner = drive.user;
    const Account guest{QStringLiteral("Kim"), QStringLiteral("kim@example.org")};
    const auto as = [&drive](const Account& who, const QString& method, const QJsonObject& params) {
        const Account before = std::exchange(drive.user, who);
        const QString refusal = drive.refusal(method, params);
        drive.user = before;
        return refusal;
    };
    const QJsonObject on{{fileId, id}};
    const QString denied = QStringLiteral("insufficientFilePermissions");
    QCOMPARE(as(guest, QStringLiteral("files.get"), on), QStringLiteral("notFound"));
    const QString guestId = drive
                                .result(QStringLiteral("permissions.getIdForEmail"),
                                        {{QStringLiteral("email"), QStringLiteral("KIM@example.org")}})
                                .value(QLatin1String("id"))
                                .toString();
    const QJsonObject shared = drive.result(
        QStringLiteral("permissions.insert"),
        {{fileId, id}, {body, parse(R"({"role": "reader", "type": "user", "value": "kim@example.org"})")}});
    QCOMPARE(shared[QLatin1String("id")].toString(), guestId);
    QCOMPARE(as(guest, QStringLiteral("files.get"), on), QString());
    QCOMPARE(as(guest, QStringLiteral("files.touch"), on), denied);
    QVERIFY(drive.file(id)[QLatin1String("shared")].toBool());

    QJsonObject change{{fileId, id}, {QStringLiteral("permissionId"), guestId}, {body, parse(R"({"role": "writer"})")}};
    drive.result(QStringLiteral("permissions.update"), change);
    QCOMPARE(as(guest, QStringLiteral("files.touch"), on), QString());
    QCOMPARE(as(guest, QStringLiteral("files.trash"), on), denied);
    QCOMPARE(as(guest, QStringLiteral("files.delete"), on), denied);
    // Ownership only goes when that is meant.
    change.insert(body, parse(R"({"role": "owner"})"));
    QCOMPARE(drive.refusal(QStringLiteral("permissions.update"), change), denied);
    change.insert(QStringLiteral("transferOwnership"), true);
    QCOMPARE(as(guest, QStringLiteral("permissions.update"), change), denied);
    drive.result(QStringLiteral("permissions.update"), change);
    QCOMPARE(as(owner, QStringLiteral("files.delete"), on), denied);
    QCOMPARE(as(owner, QStringLiteral("permissions.delete"), {{fileId, id}, {QStringLiteral("permissionId"), guestId}}),
             denied);
    QCOMPARE(
        column(drive.result(QStringLiteral("files.list"), {{QStringLiteral("q"), QStringLiteral("'me' in owners")}})),
        QStringList());
    // Who leaves sees the file as deleted.
    drive.result(QStringLiteral("permissions.delete"),
                 {{fileId, id}, {QStringLiteral("permissionId"), QStringLiteral("me")}});
    const QJsonObject changes = drive.result(QStringLiteral("changes.list"));
    QCOMPARE(changes[QLatin1String("items")][0][QLatin1String("deleted")].toBool(), true);
    QCOMPARE(column(drive.result(QStringLiteral("files.list"))), QStringList());
}

void LocalFilesTest::commentsAndReplies() {
    LocalDrive drive;
    const QString id = drive.upload(QStringLiteral("a"), "x");
    const QJsonObject made = drive.result(QStringLiteral("comments.insert"),
                                          {{fileId, id}, {body, parse(R"({"content": "<b>", "anchor": "p1"})")}});
    QCOMPARE(made[QLatin1String("htmlContent")].toString(), QStringLiteral("&lt;b&gt;"));
    const QString comment = made[QLatin1String("commentId")].toString();
    QJsonObject on{{fileId, id}, {QStringLiteral("commentId"), comment}};
    const auto with = [&on](const char* json) {
        QJsonObject params = on;
        params.insert(body, parse(json));
        return params;
    };
    const QString reply = drive.result(QStringLiteral("replies.insert"), with(R"({"content": "yes"})"))
                              .value(QLatin1String("replyId"))
                              .toString();
    drive.result(QStringLiteral("replies.insert"), with(R"({"verb": "resolve"})"));
    QCOMPARE(drive.refusal(QStringLiteral("replies.insert"), with(R"({"verb": "burn"})")), QStringLiteral("invalid"));
    QJsonObject now = drive.result(QStringLiteral("comments.get"), on);
    QCOMPARE(now[QLatin1String("status")].toString(), QStringLiteral("resolved"));
    QCOMPARE(now[QLatin1String("replies")].toArray().size(), 2);
    QVERIFY(now[QLatin1String("modifiedDate")].toString() > now[QLatin1String("createdDate")].toString());

    // Nobody else may change what somebody said.
    const Account writer{QStringLiteral("Kim"), QStringLiteral("kim@example.org")};
    drive.result(QStringLiteral("permissions.insert"),
                 {{fileId, id}, {body, parse(R"({"role": "writer", "type": "user", "value": "kim@example.org"})")}});
    const Account author = std::exchange(drive.user, writer);
    QCOMPARE(drive.refusal(QStringLiteral("comments.update"), with(R"({"content": "mine"})")),
             QStringLiteral("insufficientFilePermissions"));
    drive.user = author;

    QJsonObject replyParams = on;
    replyParams.insert(QStringLiteral("replyId"), reply);
    drive.result(QStringLiteral("replies.delete"), replyParams);
    QCOMPARE(drive.refusal(QStringLiteral("replies.get"), replyParams), QStringLiteral("notFound"));
    drive.result(QStringLiteral("comments.delete"), on);
    QCOMPARE(drive.refusal(QStringLiteral("comments.get"), on), QStringLiteral("notFound"));
    on.insert(QStringLiteral("includeDeleted"), true);
    now = drive.result(QStringLiteral("comments.get"), on);
    QCOMPARE(now[QLatin1String("deleted")].toBool(), true);
    QVERIFY(!now.contains(QLatin1String("content")));
}

void LocalFilesTest::propertiesAndRealtime() {
    LocalDrive drive;
    const QString id = drive.upload(QStringLiteral("a"), "x");
    QJsonObject on{{fileId, id}, {QStringLiteral("propertyKey"), QStringLiteral("k")}};
    drive.result(QStringLiteral("properties.insert"),
                 {{fileId, id}, {body, parse(R"({"key": "k", "value": "private"})")}});
    drive.result(QStringLiteral("properties.insert"),
                 {{fileId, id}, {body, parse(R"({"key": "k", "value": "public", "visibility": "PUBLIC"})")}});
    QCOMPARE(column(drive.result(QStringLiteral("properties.list"), {{fileId, id}}), "value").size(), 2);
    QCOMPARE(drive.result(QStringLiteral("properties.get"), on)[QLatin1String("value")].toString(),
             QStringLiteral("private"));
    drive.result(QStringLiteral("properties.delete"), on);
    QCOMPARE(drive.refusal(QStringLiteral("properties.delete"), on), QStringLiteral("notFound"));
    QCOMPARE(drive.file(id)[QLatin1String("properties")].toArray().size(), 1);

    const auto put = [&](const QByteArray& document, const QString& base) {
        return drive.callWithMedia(QStringLiteral("realtime.update"),
                                   {{fileId, id}, {QStringLiteral("baseRevision"), base}}, document);
    };
    QVERIFY(put(R"({"a": 1})", QString()).contains(QLatin1String("result")));
    const QJsonObject lost = put(R"({"a": 2})", QStringLiteral("0"));
    QCOMPARE(lost[QLatin1String("error")][QLatin1String("code")].toInt(), 412);
    QVERIFY(put(R"({"a": 3})", QStringLiteral("1")).contains(QLatin1String("result")));
    QCOMPARE(LocalDrive::reasonOf(put("no JSON", QString())), QStringLiteral("invalid"));
    const QJsonObject document = drive.result(QStringLiteral("realtime.get"), {{fileId, id}});
    QCOMPARE(document[QLatin1String("revision")].toInt(), 2);
    QCOMPARE(document[QLatin1String("data")][QLatin1String("a")].toInt(), 3);
}

QTEST_GUILESS_MAIN(LocalFilesTest)
#include "tst_localfiles.moc"
