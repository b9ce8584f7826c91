// Files, folders and what hangs on them, through the API's methods.
#include "localdrive/store/NativeTypes.h"
#include "localdrive/store/Text.h"
#include "tests/localdrive/LocalDrive.h"

#include <QSet>

using namespace quenby;
using namespace quenby::localdrive;
using namespace Qt::StringLiterals;

class LocalFilesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void newFile() {
        LocalDrive drive;
        const QJsonObject resource = parse(R"({"title": "pic.tar.png"})");
        const QJsonObject reply = drive.callWithMedia(u"files.insert"_s, {{body, resource}}, "12345", u"image/png"_s);
        const QJsonObject made = reply["result"_L1].toObject();
        const QString id = made["id"_L1].toString();
        QCOMPARE(id.size(), 44);
        const QString root = drive.result(u"about.get"_s)["rootFolderId"_L1].toString();
        const QString api = u"http://127.0.0.1:4711/drive/v2/files/"_s + id;
        QJsonObject expected = parse(
            R"({"title": "pic.tar.png", "originalFilename": "pic.tar.png", "fileExtension": "png", "shared": false, )"
            R"("mimeType": "image/png", "fileSize": "5", "quotaBytesUsed": "5", "editable": true, )"
            R"("md5Checksum": "827ccb0eea8a706c4c34a16891f84e7b"})");
        expected.insert(u"kind"_s, u"drive#file"_s);
        expected.insert(u"iconLink"_s, u"http://127.0.0.1:4711/icons/image.png"_s);
        expected.insert(u"selfLink"_s, api);
        expected.insert(u"downloadUrl"_s, QString(api + u"?alt=media"_s));
        expected.insert(u"alternateLink"_s, u"http://127.0.0.1:4711/file/d/%1/view"_s.arg(id));
        expected.insert(u"createdDate"_s, dateText(drive.now.addMSecs(-1001)));
        expected.insert(u"modifiedDate"_s, made["createdDate"_L1]);
        expected.insert(u"ownerNames"_s, QJsonArray{drive.user.displayName});
        for (auto each = expected.constBegin(); each != expected.constEnd(); ++each)
            QVERIFY2(made[each.key()] == each.value(),
                     qPrintable(each.key() + u" is "_s + made[each.key()].toVariant().toString()));
        QVERIFY(made["thumbnailLink"_L1].toString().contains(id));
        QCOMPARE(made["parents"_L1][0]["id"_L1].toString(), root);
        QCOMPARE(made["parents"_L1][0]["isRoot"_L1].toBool(), true);
        QCOMPARE(made["owners"_L1][0]["emailAddress"_L1].toString(), drive.user.emailAddress);
        QCOMPARE(made["userPermission"_L1]["role"_L1].toString(), u"owner"_s);
        QCOMPARE(made["labels"_L1]["trashed"_L1].toBool(true), false);
        QCOMPARE(drive.file(id), made);

        // Without a content a file has no bytes, but is a file.
        const QJsonObject empty = drive.result(u"files.insert"_s);
        QCOMPARE(empty["title"_L1].toString(), u"Untitled"_s);
        QCOMPARE(empty["fileSize"_L1].toString(), u"0"_s);
        QCOMPARE(drive.store().content(drive.context(), empty["id"_L1].toString())->size, qint64{0});
    }

    void hostileTitles_data() {
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("stored");
        const auto same = [](const char* tag, const QString& title) { QTest::newRow(tag) << title << title; };
        same("quotes", u"it's \"so\" \\ `x`"_s);
        same("lines", u"one\ntwo\r\n\tthree"_s);
        same("sql", u"'; DROP TABLE files; --"_s);
        same("emoji", u"😀 e\u0301 ﷽"_s);
        same("path", u"../../etc/passwd"_s);
        same("nul", QString(u"a"_s + QChar(0) + u"b"_s));
        same("long", QString(20000, 'x'_L1));
        QTest::newRow("half a pair") << QString(u"a"_s + QChar(0xd83d) + u"b"_s) << u"a\ufffdb"_s;
    }
    void hostileTitles() {
        QFETCH(QString, title);
        LocalDrive drive;
        const QString id = drive.upload(title, "x");
        drive.reopen();
        QTEST(drive.file(id)["title"_L1].toString(), "stored");
        QString escaped = title;
        escaped.replace('\\'_L1, "\\\\"_L1).replace('\''_L1, "\\'"_L1);
        for (const char* op : {"=", "contains"})
            QCOMPARE(
                column(drive.result(u"files.list"_s, {{u"q"_s, u"title %1 '%2'"_s.arg(QLatin1String(op), escaped)}})),
                QStringList{id});
    }

    void documentsAndFolders() {
        LocalDrive drive;
        QStringList types = documentTypes();
        QCOMPARE(types.size(), 4);
        for (const QString& type : types) {
            const QJsonObject made = drive.result(u"files.insert"_s, {{body, QJsonObject{{u"mimeType"_s, type}}}});
            const QJsonObject exports = made["exportLinks"_L1].toObject();
            QCOMPARE(exports.size(), exportTypes(type).size());
            QVERIFY(!made.contains("downloadUrl"_L1));
            QVERIFY(!made.contains("md5Checksum"_L1));
            QCOMPARE(made["quotaBytesUsed"_L1].toString(), u"0"_s);
            QCOMPARE(drive.store().content(drive.context(), made["id"_L1].toString()).error().code(), qint64{400});
        }
        types.append(folderMimeType);
        for (const QString& type : types)
            QCOMPARE(LocalDrive::reasonOf(
                         drive.callWithMedia(u"files.insert"_s, {{body, QJsonObject{{u"mimeType"_s, type}}}}, "x")),
                     u"invalid"_s);
        // A file stays what it is.
        const QString file = drive.upload(u"f"_s, "x");
        QCOMPARE(
            drive.refusal(u"files.patch"_s, {{fileId, file}, {body, QJsonObject{{u"mimeType"_s, folderMimeType}}}}),
            u"invalid"_s);
    }

    void updatesAndRevisions() {
        LocalDrive drive;
        const QString id = drive.upload(u"a"_s, "one");
        const QJsonObject before = drive.file(id);
        const QJsonObject starred = drive.result(u"files.patch"_s, onFile(id, R"({"labels": {"starred": true}})"));
        QCOMPARE(starred["labels"_L1]["starred"_L1].toBool(), true);
        QCOMPARE(starred["modifiedDate"_L1], before["modifiedDate"_L1]); // not edited
        QVERIFY(starred["etag"_L1] != before["etag"_L1]);

        const QJsonObject renamed =
            drive.result(u"files.update"_s, onFile(id, R"({"title": "b", "description": "words", "id": "ignored"})"));
        QVERIFY(renamed["modifiedDate"_L1].toString() > before["modifiedDate"_L1].toString());
        QCOMPARE(renamed["labels"_L1]["starred"_L1].toBool(), true);
        const QJsonObject cleared = drive.result(u"files.patch"_s, onFile(id, R"({"description": null})"));
        QVERIFY(!cleared.contains("description"_L1));
        QCOMPARE(cleared["title"_L1].toString(), u"b"_s);

        drive.callWithMedia(u"files.update"_s, {{fileId, id}}, "three", u"text/html"_s);
        const QJsonObject list = drive.result(u"revisions.list"_s, {{fileId, id}});
        const QStringList revisions = column(list);
        QCOMPARE(column(list, "fileSize"), QStringList({u"3"_s, u"5"_s}));
        QCOMPARE(drive.file(id)["headRevisionId"_L1].toString(), revisions[1]);
        QCOMPARE(drive.file(id)["mimeType"_L1].toString(), u"text/html"_s);
        QCOMPARE(drive.store().content(drive.context(), id, revisions[0])->file->readAll(), "one");

        // A pinned revision costs quota, and the head can't be lost.
        const QString revisionId = u"revisionId"_s;
        drive.result(u"revisions.patch"_s,
                     {{fileId, id}, {revisionId, revisions[0]}, {body, parse(R"({"pinned": true})")}});
        QCOMPARE(drive.file(id)["quotaBytesUsed"_L1].toString(), u"8"_s);
        drive.result(u"revisions.delete"_s, {{fileId, id}, {revisionId, revisions[1]}});
        QCOMPARE(drive.file(id)["fileSize"_L1].toString(), u"3"_s);
        QCOMPARE(drive.refusal(u"revisions.delete"_s, {{fileId, id}, {revisionId, u"head"_s}}), u"invalid"_s);
        for (int i = 0; i < 103; ++i)
            drive.callWithMedia(u"files.update"_s, {{fileId, id}}, QByteArray::number(i));
        QCOMPARE(column(drive.result(u"revisions.list"_s, {{fileId, id}})).size(), 101); // and the pinned one
    }

    void datesThatClientsSet() {
        LocalDrive drive;
        const QString given = u"2011-02-03T04:05:06.007Z"_s;
        const QJsonObject dates{{u"modifiedDate"_s, given}, {u"createdDate"_s, given}};
        const QJsonObject made = drive.result(u"files.insert"_s, {{body, dates}});
        QCOMPARE(made["modifiedDate"_L1].toString(), given);
        QCOMPARE(made["createdDate"_L1].toString(), given);
        const QString id = made["id"_L1].toString();
        const QString other = u"2012-02-03T04:05:06.007Z"_s;
        QJsonObject change{{u"modifiedDate"_s, other}, {u"title"_s, u"x"_s}};
        const QJsonObject unasked = drive.result(u"files.patch"_s, {{fileId, id}, {body, change}});
        QVERIFY(unasked["modifiedDate"_L1].toString() > other);
        change.insert(u"title"_s, u"y"_s);
        const QJsonObject asked =
            drive.result(u"files.patch"_s, {{fileId, id}, {body, change}, {u"setModifiedDate"_s, true}});
        QCOMPARE(asked["modifiedDate"_L1].toString(), other);
        const QJsonObject touched = drive.result(u"files.touch"_s, {{fileId, id}});
        QVERIFY(touched["modifiedDate"_L1].toString() > unasked["modifiedDate"_L1].toString());
    }

    void trashOfFolders() {
        LocalDrive drive;
        const QString outer = drive.makeFolder(u"outer"_s);
        const QString inner = drive.makeFolder(u"inner"_s, outer);
        const QString deep = drive.upload(u"deep"_s, "1", inner);
        const QString twice = drive.upload(u"twice"_s, "2", inner);
        drive.result(u"parents.insert"_s, onFile(twice, R"({"id": "root"})"));
        const auto state = [&drive](const QString& id) {
            const QJsonObject file = drive.file(id);
            return std::pair(file["labels"_L1]["trashed"_L1].toBool(), file["explicitlyTrashed"_L1].toBool());
        };
        drive.result(u"files.trash"_s, {{fileId, outer}});
        QVERIFY(state(outer) == std::pair(true, true));
        QVERIFY(state(inner) == std::pair(true, false));
        QVERIFY(state(deep) == std::pair(true, false));
        QVERIFY(state(twice) == std::pair(false, false)); // still in the root folder

        drive.result(u"files.trash"_s, {{fileId, deep}});
        drive.result(u"files.untrash"_s, {{fileId, outer}});
        QVERIFY(state(inner) == std::pair(false, false));
        QVERIFY(state(deep) == std::pair(true, true)); // put there by itself

        // What goes into a trashed folder is in the trash, and back out when it is moved on.
        drive.result(u"files.trash"_s, {{fileId, inner}});
        const QString late = drive.upload(u"late"_s, "3", inner);
        QVERIFY(state(late) == std::pair(true, false));
        drive.result(u"files.patch"_s, {{fileId, late}, {u"addParents"_s, u"root"_s}, {u"removeParents"_s, inner}});
        QVERIFY(state(late) == std::pair(false, false));

        drive.result(u"files.emptyTrash"_s);
        QCOMPARE(drive.refusal(u"files.get"_s, {{fileId, inner}}), u"notFound"_s);
        QCOMPARE(drive.refusal(u"files.get"_s, {{fileId, deep}}), u"notFound"_s);
        QVERIFY(state(twice) == std::pair(false, false));
        QVERIFY(state(outer) == std::pair(false, false));
    }

    void deletionOfFolders() {
        LocalDrive drive;
        const QString outer = drive.makeFolder(u"outer"_s);
        const QString inner = drive.makeFolder(u"inner"_s, outer);
        const QString deep = drive.upload(u"deep"_s, "1", inner);
        const QString twice = drive.upload(u"twice"_s, "2", inner);
        drive.result(u"children.insert"_s, {{u"folderId"_s, u"root"_s}, {body, QJsonObject{{u"id"_s, twice}}}});
        const qint64 before = drive.largestChangeId();
        drive.result(u"files.delete"_s, {{fileId, outer}});
        const QJsonObject changes =
            drive.result(u"changes.list"_s, {{u"startChangeId"_s, static_cast<double>(before + 1)}});
        QSet<QString> deleted;
        for (const QJsonValue change : changes["items"_L1].toArray())
            if (change["deleted"_L1].toBool())
                deleted.insert(change["fileId"_L1].toString());
        QCOMPARE(deleted, QSet<QString>({outer, inner, deep}));
        QCOMPARE(column(drive.result(u"parents.list"_s, {{fileId, twice}})).size(), 1);
        QCOMPARE(column(drive.result(u"files.list"_s)), QStringList{twice});
    }

    void folderCircles() {
        LocalDrive drive;
        const QString a = drive.makeFolder(u"a"_s);
        const QString b = drive.makeFolder(u"b"_s, a);
        const QString c = drive.makeFolder(u"c"_s, b);
        const QString file = drive.upload(u"f"_s, "x");
        const auto put = [&drive](const QString& id, const QString& into) {
            return drive.refusal(u"parents.insert"_s, {{fileId, id}, {body, QJsonObject{{u"id"_s, into}}}});
        };
        QCOMPARE(put(a, c), u"invalid"_s);
        QCOMPARE(put(a, a), u"invalid"_s);
        QCOMPARE(put(c, file), u"invalid"_s); // no folder
        QCOMPARE(put(c, u"nowhere"_s), u"notFound"_s);
        QVERIFY(!put(u"root"_s, a).isEmpty());
        QCOMPARE(put(c, a), QString()); // two ways down are no circle
        QCOMPARE(column(drive.result(u"parents.list"_s, {{fileId, c}})).size(), 2);
    }

    void quota() {
        LocalDrive drive(100);
        const auto about = [&drive](const char* key) {
            return drive.result(u"about.get"_s)[QLatin1String(key)].toString();
        };
        QCOMPARE(about("quotaBytesTotal"), u"100"_s);
        const QString first = drive.upload(u"a"_s, QByteArray(60, 'x'));
        const QJsonObject refused = drive.callWithMedia(u"files.insert"_s, {}, QByteArray(41, 'x'));
        QCOMPARE(LocalDrive::reasonOf(refused), u"quotaExceeded"_s);
        QCOMPARE(refused["error"_L1]["code"_L1].toInt(), 403);
        QCOMPARE(drive.refusal(u"files.copy"_s, {{fileId, first}}), u"quotaExceeded"_s);
        drive.upload(u"b"_s, QByteArray(40, 'x')); // exactly full
        QCOMPARE(about("quotaBytesUsed"), u"100"_s);
        // A new content instead of an old one only needs the difference.
        drive.callWithMedia(u"files.update"_s, {{fileId, first}}, QByteArray(50, 'y'));
        QCOMPARE(about("quotaBytesUsed"), u"90"_s);
        drive.result(u"files.trash"_s, {{fileId, first}});
        QCOMPARE(about("quotaBytesUsed"), u"90"_s);
        QCOMPARE(about("quotaBytesUsedInTrash"), u"50"_s);
        drive.result(u"files.emptyTrash"_s);
        QCOMPARE(about("quotaBytesUsed"), u"40"_s);
        const QJsonArray services = drive.result(u"about.get"_s)["quotaBytesByService"_L1].toArray();
        QCOMPARE(services[0]["bytesUsed"_L1].toString(), u"40"_s);
    }

    void permissions() {
        LocalDrive drive;
        const QString id = drive.upload(u"a"_s, "x");
        const Account owner = drive.user;
        const Account guest{u"Kim"_s, u"kim@example.org"_s};
        const auto as = [&drive](const Account& who, const QString& method, const QJsonObject& params) {
            const Account before = std::exchange(drive.user, who);
            const QString refusal = drive.refusal(method, params);
            drive.user = before;
            return refusal;
        };
        const QJsonObject on{{fileId, id}};
        const QString denied = u"insufficientFilePermissions"_s;
        QCOMPARE(as(guest, u"files.get"_s, on), u"notFound"_s);
        const QString guestId = drive.result(u"permissions.getIdForEmail"_s, {{u"email"_s, u"KIM@example.org"_s}})
                                    .value("id"_L1)
                                    .toString();
        const QJsonObject shared = drive.result(
            u"permissions.insert"_s, onFile(id, R"({"role": "reader", "type": "user", "value": "kim@example.org"})"));
        QCOMPARE(shared["id"_L1].toString(), guestId);
        QCOMPARE(as(guest, u"files.get"_s, on), QString());
        QCOMPARE(as(guest, u"files.touch"_s, on), denied);
        QVERIFY(drive.file(id)["shared"_L1].toBool());

        QJsonObject change{{fileId, id}, {u"permissionId"_s, guestId}, {body, parse(R"({"role": "writer"})")}};
        drive.result(u"permissions.update"_s, change);
        QCOMPARE(as(guest, u"files.touch"_s, on), QString());
        QCOMPARE(as(guest, u"files.trash"_s, on), denied);
        QCOMPARE(as(guest, u"files.delete"_s, on), denied);
        // Ownership only goes when that is meant.
        change.insert(body, parse(R"({"role": "owner"})"));
        QCOMPARE(drive.refusal(u"permissions.update"_s, change), denied);
        change.insert(u"transferOwnership"_s, true);
        QCOMPARE(as(guest, u"permissions.update"_s, change), denied);
        drive.result(u"permissions.update"_s, change);
        QCOMPARE(as(owner, u"files.delete"_s, on), denied);
        QCOMPARE(as(owner, u"permissions.delete"_s, {{fileId, id}, {u"permissionId"_s, guestId}}), denied);
        QCOMPARE(column(drive.result(u"files.list"_s, {{u"q"_s, u"'me' in owners"_s}})), QStringList());
        // Who leaves sees the file as deleted.
        drive.result(u"permissions.delete"_s, {{fileId, id}, {u"permissionId"_s, u"me"_s}});
        const QJsonObject changes = drive.result(u"changes.list"_s);
        QCOMPARE(changes["items"_L1][0]["deleted"_L1].toBool(), true);
        QCOMPARE(column(drive.result(u"files.list"_s)), QStringList());
    }

    void commentsAndReplies() {
        LocalDrive drive;
        const QString id = drive.upload(u"a"_s, "x");
        const QJsonObject made =
            drive.result(u"comments.insert"_s, onFile(id, R"({"content": "<b>", "anchor": "p1"})"));
        QCOMPARE(made["htmlContent"_L1].toString(), u"&lt;b&gt;"_s);
        const QString comment = made["commentId"_L1].toString();
        QJsonObject on{{fileId, id}, {u"commentId"_s, comment}};
        const auto with = [&on](const char* json) {
            QJsonObject params = on;
            params.insert(body, parse(json));
            return params;
        };
        const QString reply =
            drive.result(u"replies.insert"_s, with(R"({"content": "yes"})")).value("replyId"_L1).toString();
        drive.result(u"replies.insert"_s, with(R"({"verb": "resolve"})"));
        QCOMPARE(drive.refusal(u"replies.insert"_s, with(R"({"verb": "burn"})")), u"invalid"_s);
        QJsonObject now = drive.result(u"comments.get"_s, on);
        QCOMPARE(now["status"_L1].toString(), u"resolved"_s);
        QCOMPARE(now["replies"_L1].toArray().size(), 2);
        QVERIFY(now["modifiedDate"_L1].toString() > now["createdDate"_L1].toString());

        // Nobody else may change what somebody said.
        const Account writer{u"Kim"_s, u"kim@example.org"_s};
        drive.result(u"permissions.insert"_s,
                     onFile(id, R"({"role": "writer", "type": "user", "value": "kim@example.org"})"));
        const Account author = std::exchange(drive.user, writer);
        QCOMPARE(drive.refusal(u"comments.update"_s, with(R"({"content": "mine"})")), u"insufficientFilePermissions"_s);
        drive.user = author;

        QJsonObject replyParams = on;
        replyParams.insert(u"replyId"_s, reply);
        drive.result(u"replies.delete"_s, replyParams);
        QCOMPARE(drive.refusal(u"replies.get"_s, replyParams), u"notFound"_s);
        drive.result(u"comments.delete"_s, on);
        QCOMPARE(drive.refusal(u"comments.get"_s, on), u"notFound"_s);
        on.insert(u"includeDeleted"_s, true);
        now = drive.result(u"comments.get"_s, on);
        QCOMPARE(now["deleted"_L1].toBool(), true);
        QVERIFY(!now.contains("content"_L1));
    }

    void propertiesAndRealtime() {
        LocalDrive drive;
        const QString id = drive.upload(u"a"_s, "x");
        QJsonObject on{{fileId, id}, {u"propertyKey"_s, u"k"_s}};
        drive.result(u"properties.insert"_s, onFile(id, R"({"key": "k", "value": "private"})"));
        drive.result(u"properties.insert"_s, onFile(id, R"({"key": "k", "value": "public", "visibility": "PUBLIC"})"));
        QCOMPARE(column(drive.result(u"properties.list"_s, {{fileId, id}}), "value").size(), 2);
        QCOMPARE(drive.result(u"properties.get"_s, on)["value"_L1].toString(), u"private"_s);
        drive.result(u"properties.delete"_s, on);
        QCOMPARE(drive.refusal(u"properties.delete"_s, on), u"notFound"_s);
        QCOMPARE(drive.file(id)["properties"_L1].toArray().size(), 1);

        const auto put = [&](const QByteArray& document, const QString& base) {
            return drive.callWithMedia(u"realtime.update"_s, {{fileId, id}, {u"baseRevision"_s, base}}, document);
        };
        QVERIFY(put(R"({"a": 1})", QString()).contains("result"_L1));
        const QJsonObject lost = put(R"({"a": 2})", u"0"_s);
        QCOMPARE(lost["error"_L1]["code"_L1].toInt(), 412);
        QVERIFY(put(R"({"a": 3})", u"1"_s).contains("result"_L1));
        QCOMPARE(LocalDrive::reasonOf(put("no JSON", QString())), u"invalid"_s);
        const QJsonObject document = drive.result(u"realtime.get"_s, {{fileId, id}});
        QCOMPARE(document["revision"_L1].toInt(), 2);
        QCOMPARE(document["data"_L1]["a"_L1].toInt(), 3);
    }
};

QTEST_GUILESS_MAIN(LocalFilesTest)
#include "tst_localfiles.moc"
