// Native documents: their pages, exports, downloads and archives, as a browser sees them.
#include "tests/localdrive/LocalClient.h"
#include "tests/localdrive/Unzipped.h"

#include <QImage>
#include <QRegularExpression>
#include <QTest>
#include <QXmlStreamReader>

using namespace quenby::testing;
using namespace Qt::StringLiterals;

namespace {

const QString words = u"Grüße <b> & 漢字"_s;
const QByteArrayList fromPage{"Sec-Fetch-Site: same-origin", "Sec-Fetch-Mode: navigate"};

QString dataOf(const QByteArray& page, const char* name) {
    const QRegularExpression attribute(u"data-%1=\"([^\"]*)\""_s.arg(QString::fromLatin1(name)));
    QString value = attribute.match(QString::fromUtf8(page)).captured(1);
    return value.replace(u"&quot;"_s, u"\""_s)
        .replace(u"&lt;"_s, u"<"_s)
        .replace(u"&gt;"_s, u">"_s)
        .replace(u"&amp;"_s, u"&"_s);
}

// All text of a well-formed document; null when it is not.
QString textOfXml(const QByteArray& xml) {
    QXmlStreamReader reader(xml);
    QString text = u""_s;
    while (!reader.atEnd())
        if (reader.readNext() == QXmlStreamReader::Characters)
            text += reader.text();
    return reader.hasError() ? QString() : text;
}

// The text in all of an office document's parts; null when one of them is broken.
QString textOfPackage(const QByteArray& archive) {
    QString text = u""_s;
    const auto parts = unzipped(archive);
    for (auto part = parts.begin(); part != parts.end(); ++part) {
        if (part.key() == "mimetype"_L1)
            continue;
        const QString partText = textOfXml(*part);
        if (partText.isNull())
            return {};
        text += partText;
    }
    return parts.isEmpty() ? QString() : text;
}

int darkPixels(const QImage& image) {
    int dark = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            dark += qGray(image.pixel(x, y)) < 80;
    return dark;
}

QByteArray dechunked(const QByteArray& body) {
    QByteArray whole;
    qsizetype at = 0;
    for (qsizetype length = -1; length != 0;) {
        const qsizetype lineEnd = body.indexOf("\r\n", at);
        length = body.mid(at, lineEnd - at).toLongLong(nullptr, 16);
        if (lineEnd < 0)
            return {};
        whole += body.mid(lineEnd + 2, length);
        at = lineEnd + 2 + length + 2;
    }
    return whole;
}

QByteArray json(const QJsonObject& object) { return QJsonDocument(object).toJson(QJsonDocument::Compact); }

// Two sections, or two rows.
QJsonObject contentFor(const QString& kind) {
    if (kind == "spreadsheets"_L1)
        return {{u"rows"_s, QJsonArray{QJsonArray{words, u"a,\"b\""_s}, QJsonArray{u"two\nlines"_s}}}};
    const QJsonObject second{{u"title"_s, u"Second"_s}, {u"text"_s, u"last words"_s}};
    QJsonArray sections{QJsonObject{{u"title"_s, words}, {u"text"_s, u"one\n  two\tthree"_s}}};
    if (kind == "presentation"_L1)
        sections.append(second);
    return {{u"sections"_s, sections}};
}

} // namespace

class TestLocalDocuments final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        QVERIFY2(drive_.start(), drive_.log());
        client_ = std::make_unique<LocalClient>(drive_);
        owner_ = signIn(u"robin.hale@example.com"_s);
        stranger_ = signIn(u"stranger@example.com"_s);
        QVERIFY(owner_.contains("quenby_session=") && stranger_.contains("quenby_session="));
    }

    void createdWhereAsked_data() {
        QTest::addColumn<QString>("type");
        QTest::addColumn<QString>("title");
        QTest::newRow("document") << u"document"_s << u"Untitled document - Google Docs"_s;
        QTest::newRow("presentation") << u"presentation"_s << u"Untitled presentation - Google Docs"_s;
        QTest::newRow("spreadsheets") << u"spreadsheet"_s << u"Untitled spreadsheet - Google Sheets"_s;
        QTest::newRow("forms") << u"form"_s << u"Untitled form - Google Forms"_s;
        QTest::newRow("drawings") << u"drawing"_s << u"Untitled drawing - Google Drawings"_s;
    }
    void createdWhereAsked() {
        QFETCH(QString, type);
        QFETCH(QString, title);
        const QByteArray kind = QTest::currentDataTag();
        const QString folder = newFile({{u"mimeType"_s, u"application/vnd.google-apps.folder"_s}});
        const QByteArray link = "/docs/" + kind + "/create?usp=drive_web&folder=" + folder.toLatin1();
        const QString id = idIn(get(link, owner_, fromPage));
        const QJsonObject file = resource(id);
        QCOMPARE(file["mimeType"_L1].toString(), u"application/vnd.google-apps."_s + type);
        QCOMPARE(file["parents"_L1][0]["id"_L1].toString(), folder);
        QCOMPARE(file["alternateLink"_L1].toString(),
                 drive_.url().toString() + u"/docs/%1/d/%2/edit"_s.arg(QString::fromLatin1(kind), id));
        const RawReply page = get("/docs/" + kind + "/d/" + id.toLatin1() + "/edit", owner_);
        QVERIFY(page.body.contains(QByteArray("<title>" + title.toUtf8() + "</title>")));
        const QByteArray policy = page.header("Content-Security-Policy");
        QVERIFY(policy.contains("default-src 'none'") && policy.contains("script-src 'self'"));
        QVERIFY(!policy.contains("unsafe"));

        // Nobody else makes the browser create a file, nor does looking ahead.
        for (const char* header : {"Sec-Fetch-Site: cross-site", "Sec-Fetch-Mode: no-cors", "Sec-Fetch-Dest: iframe",
                                   "Sec-Purpose: prefetch"}) {
            const RawReply reply = get(link, owner_, {header});
            QCOMPARE(reply.status, 200);
            QVERIFY(reply.body.contains("Create a new "));
        }
        ask("HEAD", link, owner_, {"Connection: close"});
        QCOMPARE(get(link).status, 302); // to the sign-in
        QCOMPARE(childrenOf(folder), QStringList{id});
        const QString elsewhere = idIn(get("/docs/" + kind + "/create?folder=nonesuch", owner_));
        QVERIFY(resource(elsewhere)["parents"_L1][0]["isRoot"_L1].toBool());
    }

    void exportsHoldTheContent_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("format");
        QTest::addColumn<QByteArray>("type");
        const std::pair<const char*, QByteArrayList> all[] = {
            {"document", {"docx", "odt", "txt", "pdf", "zip"}},
            {"presentation", {"txt", "pptx", "jpeg", "png", "pdf", "svg"}},
            {"spreadsheets", {"xlsx", "ods", "pdf", "csv", "tsv", "zip"}},
            {"drawings", {"pdf", "svg", "png", "jpeg"}}};
        const QHash<QByteArray, QByteArray> types{
            {"docx", "application/vnd.openxmlformats-officedocument.wordprocessingml.document"},
            {"xlsx", "application/vnd.openxmlformats-officedocument.spreadsheetml.sheet"},
            {"pptx", "application/vnd.openxmlformats-officedocument.presentationml.presentation"},
            {"odt", "application/vnd.oasis.opendocument.text"},
            {"ods", "application/x-vnd.oasis.opendocument.spreadsheet"},
            {"txt", "text/plain; charset=utf-8"},
            {"csv", "text/csv; charset=utf-8"},
            {"tsv", "text/tab-separated-values; charset=utf-8"},
            {"pdf", "application/pdf"},
            {"zip", "application/zip"},
            {"jpeg", "image/jpeg"},
            {"png", "image/png"},
            {"svg", "image/svg+xml"}};
        for (const auto& [kind, formats] : all)
            for (const QByteArray& format : formats)
                QTest::addRow("%s as %s", kind, format.constData())
                    << QString::fromLatin1(kind) << QString::fromLatin1(format) << types[format];
    }
    void exportsHoldTheContent() {
        QFETCH(QString, kind);
        QFETCH(QString, format);
        QFETCH(QByteArray, type);
        const QString id = newDocument(kind);
        const QByteArray link = exportAddress(kind, id, format);
        const QByteArray blank = get(link, owner_).body;
        write(kind, id, contentFor(kind));
        const RawReply reply = get(link, owner_);
        QCOMPARE(reply.status, 200);
        QCOMPARE(reply.header("Content-Type"), type);
        QVERIFY(reply.header("Content-Disposition").startsWith("attachment; filename=\"Untitled "));
        QVERIFY(reply.header("Content-Disposition").contains(QByteArray('.' + format.toLatin1() + '"')));
        QVERIFY(reply.body != blank);
        check(kind, format, reply.body);
        // As the resource says, at the address that it once had, and with a token.
        QVERIFY2(resource(id)["exportLinks"_L1].toObject().toVariantMap().values().contains(
                     QString(drive_.url().toString() + QString::fromLatin1(link))),
                 link);
        const QByteArray former = kind == "spreadsheets"_L1
                                      ? "/spreadsheets/export?format=" + format.toLatin1() + "&id=" + id.toLatin1()
                                      : link.mid(5);
        const RawReply again = get(former, client_->authorization());
        QCOMPARE(again.status, 200);
        QCOMPARE(again.body.size(), reply.body.size());
        QCOMPARE(get(link).status, 401);
        QCOMPARE(get(link, stranger_).status, 404);
    }

    void documentsNobodyWroteToHoldTheirTitle() {
        const QString id = newFile({{u"mimeType"_s, u"application/vnd.google-apps.document"_s}, {u"title"_s, words}});
        QCOMPARE(get(exportAddress(u"document"_s, id, u"txt"_s), owner_).body, words.toUtf8() + '\n');
        QCOMPARE(get(exportAddress(u"document"_s, id, u"pptx"_s), owner_).status, 400);
    }

    // Only the page may, only its user, and only from what it has seen.
    void writing() {
        const QString kind = u"document"_s;
        const QString id = newDocument(kind);
        const QByteArray link = "/docs/files/" + id.toLatin1() + "/content";
        const QByteArray key = keyOf(kind, id, owner_);
        const QByteArray body = json({{u"revision"_s, 1}, {u"content"_s, contentFor(kind)}});
        QCOMPARE(ask("PUT", link, owner_, {}, body).status, 403);
        QCOMPARE(ask("PUT", link, owner_, {"X-Web-Key: " + key, "Origin: http://evil.example"}, body).status, 403);
        QCOMPARE(ask("PUT", link, stranger_, {"X-Web-Key: " + key}, body).status, 403);
        const QByteArray strangersKey = keyOf(kind, newDocument(kind, stranger_), stranger_);
        QCOMPARE(ask("PUT", link, stranger_, {"X-Web-Key: " + strangersKey}, body).status, 404);
        share(id, u"stranger@example.com"_s);
        QCOMPARE(get(exportAddress(kind, id, u"txt"_s), stranger_).status, 200);
        QCOMPARE(ask("PUT", link, stranger_, {"X-Web-Key: " + strangersKey}, body).status, 403);
        QCOMPARE(dataOf(get("/docs/document/d/" + id.toLatin1() + "/edit", stranger_).body, "state")
                     .count(u"\"canEdit\":false"_s),
                 1);

        const RawReply written = ask("PUT", link, owner_, {"X-Web-Key: " + key}, body);
        QCOMPARE(jsonOf(written.body)["revision"_L1].toInt(), 2);
        QCOMPARE(ask("PUT", link, owner_, {"X-Web-Key: " + key}, body).status, 412);
        const QJsonObject wrong{{u"sections"_s, QJsonArray{QJsonObject{{u"text"_s, 7}}}}};
        QCOMPARE(
            ask("PUT", link, owner_, {"X-Web-Key: " + key}, json({{u"revision"_s, 2}, {u"content"_s, wrong}})).status,
            400);
        drive_.kill();
        QVERIFY2(drive_.start(), drive_.log());
        QCOMPARE(stateOf(kind, id)["content"_L1].toObject(), contentFor(kind));
    }

    void copiesAndTrash() {
        const QString kind = u"presentation"_s;
        const QString id = newDocument(kind);
        write(kind, id, contentFor(kind));
        const QByteArray folder = "/docs/files/" + id.toLatin1() + '/';
        const QByteArrayList headers{"X-Web-Key: " + keyOf(kind, id, owner_)};
        const QJsonObject copy = jsonOf(ask("POST", folder + "copy", owner_, headers).body);
        const QString copyId = copy["link"_L1].toString().section('/'_L1, 4, 4);
        QCOMPARE(stateOf(kind, copyId)["content"_L1].toObject(), contentFor(kind));
        QCOMPARE(ask("PUT", folder + "title", owner_, headers, json({{u"title"_s, u"New </title>"_s}})).status, 200);
        QVERIFY(get("/docs/presentation/d/" + id.toLatin1() + "/edit", owner_)
                    .body.contains("<title>New &lt;/title&gt; - Google Docs</title>"));
        QVERIFY(jsonOf(ask("POST", folder + "trash", owner_, headers).body)["trashed"_L1].toBool());
        QVERIFY(resource(id)["labels"_L1]["trashed"_L1].toBool());
        ask("POST", folder + "untrash", owner_, headers);
        QVERIFY(!resource(id)["labels"_L1]["trashed"_L1].toBool());
    }

    void printsOnceLoaded() {
        const QString kind = u"document"_s;
        const QString id = newDocument(kind);
        write(kind, id, contentFor(kind));
        const QByteArray link = "/viewer/" + id.toLatin1();
        const RawReply page = get(link + "?print=true", owner_);
        QVERIFY(page.body.contains("docsprint.js"));
        QVERIFY(page.body.contains(words.toHtmlEscaped().toUtf8()));
        QVERIFY(page.header("Content-Security-Policy").contains("default-src 'none'"));
        QVERIFY(!get(link, owner_).body.contains("docsprint.js"));
        QCOMPARE(get(link + "?print=true", stranger_).status, 404);
    }

    void hostileNames_data() {
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("name");
        QTest::newRow("header") << u"x\"\r\nSet-Cookie: a=b; y"_s << u"x___Set-Cookie_ a=b; y"_s;
        QTest::newRow("path") << u"../../etc/passwd"_s << u".._.._etc_passwd"_s;
        QTest::newRow("up") << u".."_s << u"Untitled"_s;
        QTest::newRow("turned around") << u"exe\u202egpj.txt"_s << u"exe_gpj.txt"_s;
        QTest::newRow("letters") << u"Ünï😀.txt"_s << u"Ünï😀.txt"_s;
        QTest::newRow("long") << u"ü"_s.repeated(300) + u".jpg"_s << u"ü"_s.repeated(98) + u".jpg"_s;
    }
    void hostileNames() {
        QFETCH(QString, title);
        QFETCH(QString, name);
        const QString id = upload(title, "content");
        const QByteArray signedLink = get("/uc?export=download&id=" + id.toLatin1(), owner_).header("Location");
        const RawReply reply = get(signedLink, owner_);
        QCOMPARE(reply.body, "content");
        QVERIFY(reply.header("Set-Cookie").isEmpty());
        const QByteArray disposition = reply.header("Content-Disposition");
        const QByteArray encoded = disposition.mid(disposition.indexOf("UTF-8''") + 7);
        QCOMPARE(QString::fromUtf8(QByteArray::fromPercentEncoding(encoded)), name);
        QCOMPARE(disposition.count('"'), 2);
        QCOMPARE(archiveOf({id}).keys(), QStringList{name});
    }

    void signedDownloads() {
        const QByteArray content = QByteArray("0123456789").repeated(100'000);
        const QString id = upload(u"numbers.bin"_s, content);
        const QByteArray start = "/uc?export=download&id=" + id.toLatin1();
        const RawReply lead = get(start, owner_);
        QCOMPARE(lead.status, 302);
        const QByteArray link = lead.header("Location");
        QVERIFY2(link.startsWith("/usercontent/docs/securesc/") && link.endsWith("/numbers.bin"), link);
        const RawReply whole = get(link, owner_);
        QCOMPARE(whole.status, 200);
        QVERIFY(whole.body == content);
        const RawReply part = get(link, owner_, {"Range: bytes=10-19"});
        QCOMPARE(part.status, 206);
        QCOMPARE(part.body, "0123456789");
        QCOMPARE(get(link, owner_, {"If-None-Match: " + whole.header("ETag")}).status, 304);

        QCOMPARE(get(start).status, 302); // to the sign-in
        QCOMPARE(get(start, stranger_).status, 404);
        QCOMPARE(get(link).status, 401);
        QCOMPARE(get(link, stranger_).status, 403);
        QCOMPARE(get(link, client_->authorization()).status, 403);
        const QByteArrayList pieces = link.split('/')[4].split('.');
        QCOMPARE(pieces.size(), 3);
        const QByteArray later = QByteArray::number(pieces[0].toLongLong() + 1000);
        const QByteArray other = upload(u"other"_s, "x").toLatin1();
        QByteArray mark = pieces[2];
        mark[5] = mark[5] == 'A' ? 'B' : 'A';
        for (const QByteArrayList& changed :
             {QByteArrayList{later, pieces[1], pieces[2]}, QByteArrayList{pieces[0], other, pieces[2]},
              QByteArrayList{pieces[0], pieces[1], mark}, QByteArrayList{pieces[0], pieces[1]}})
            QCOMPARE(get("/usercontent/docs/securesc/" + changed.join('.') + "/numbers.bin", owner_).status, 403);
        setClock(290);
        QCOMPARE(get(link, owner_).status, 200);
        setClock(310);
        QCOMPARE(get(link, owner_).status, 403);
        setClock(0);
    }

    void archives() {
        const QByteArray large = QByteArray("All work and no play. ").repeated(100'000);
        const auto folderIn = [this](const QString& title, const QString& parent) {
            return newFile({{u"title"_s, title}, {u"mimeType"_s, u"application/vnd.google-apps.folder"_s}}, parent);
        };
        const QString top = folderIn(u"Top"_s, u"root"_s);
        const QString inner = folderIn(u"a/b"_s, top);
        folderIn(u"Empty"_s, inner);
        upload(u"same.txt"_s, large, top);
        upload(u"Same.txt"_s, "small", top);
        upload(u"nothing"_s, "", inner);
        const QString letter =
            newFile({{u"title"_s, words}, {u"mimeType"_s, u"application/vnd.google-apps.document"_s}}, inner);
        const QString gone = upload(u"gone.txt"_s, "gone", top);
        client_->call(u"drive.files.trash"_s, {{u"fileId"_s, gone}});
        const QString single = upload(u"photo.jpg"_s, large.first(300'000));

        const auto members = archiveOf({top, single, top});
        QStringList names = members.keys();
        names.replaceInStrings(u"Same"_s, u"same"_s);
        names.sort();
        QCOMPARE(names, (QStringList{u"Top/"_s, u"Top/a_b/"_s, u"Top/a_b/Empty/"_s, u"Top/a_b/Grüße _b_ & 漢字.docx"_s,
                                     u"Top/a_b/nothing"_s, u"Top/same (1).txt"_s, u"Top/same.txt"_s, u"photo.jpg"_s}));
        QList<qsizetype> sizes;
        for (auto member = members.begin(); member != members.end(); ++member)
            if (member.key().startsWith("Top/same"_L1, Qt::CaseInsensitive))
                sizes.append(member->size());
        std::sort(sizes.begin(), sizes.end());
        QCOMPARE(sizes, (QList<qsizetype>{5, large.size()}));
        QVERIFY(members[u"photo.jpg"_s] == large.first(300'000));
        QCOMPARE(textOfPackage(members[u"Top/a_b/Grüße _b_ & 漢字.docx"_s]), words);
        QCOMPARE(resource(letter)["title"_L1].toString(), words);

        const QByteArray body = json({{u"ids"_s, QJsonArray{single}}});
        const QByteArrayList keyed{"X-Web-Key: " + anyKey()};
        QCOMPARE(ask("POST", "/web/archive", owner_, {}, body).status, 403);
        QCOMPARE(ask("POST", "/web/archive", owner_, keyed, json({{u"ids"_s, QJsonArray{}}})).status, 400);
        QCOMPARE(ask("POST", "/web/archive", owner_, keyed, json({{u"ids"_s, QJsonArray{u"nonesuch"_s}}})).status, 404);
        const QByteArray id =
            jsonOf(ask("POST", "/web/archive", owner_, keyed, body).body)["archiveId"_L1].toString().toLatin1();
        QCOMPARE(get("/e/export-result?authuser=0&archiveId=" + id, stranger_).status, 404);
    }

private:
    RawReply ask(const QByteArray& method, const QByteArray& target, const QByteArray& credential,
                 QByteArrayList headers = {}, const QByteArray& body = {}) {
        if (!credential.isEmpty())
            headers.append(credential);
        return RawHttp::exchange(drive_.url(), RawHttp::request(method, target, headers, body));
    }
    RawReply get(const QByteArray& target, const QByteArray& credential = {}, const QByteArrayList& headers = {}) {
        return ask("GET", target, credential, headers);
    }

    // The cookie of a browser in which that person signed in.
    QByteArray signIn(const QString& email) {
        const RawReply page = get("/signin");
        const QRegularExpression mark(u"name=\"csrf\" value=\"([^\"]*)\""_s);
        const QString csrf = mark.match(QString::fromUtf8(page.body)).captured(1);
        const RawReply reply = ask("POST", "/signin", "Cookie: " + page.header("Set-Cookie").split(';').first(),
                                   {"Content-Type: application/x-www-form-urlencoded"},
                                   formOf({{u"email"_s, email}, {u"continue"_s, u"/"_s}, {u"csrf"_s, csrf}}));
        return "Cookie: " + reply.header("Set-Cookie").split(';').first();
    }

    QString newFile(QJsonObject resource, const QString& parent = u"root"_s) {
        resource.insert(u"parents"_s, QJsonArray{QJsonObject{{u"id"_s, parent}}});
        const RawReply reply = client_->call(u"drive.files.insert"_s, {{u"resource"_s, resource}});
        return jsonOf(reply.body)["result"_L1]["id"_L1].toString();
    }
    QString upload(const QString& title, const QByteArray& content, const QString& parent = u"root"_s) {
        const QString id = newFile(
            {{u"title"_s, title}, {u"mimeType"_s, title.endsWith(".jpg"_L1) ? u"image/jpeg"_s : u"text/plain"_s}},
            parent);
        if (content.isEmpty())
            return id;
        const RawReply announced = RawHttp::exchange(
            drive_.url(), RawHttp::request("POST", "/upload/rpc?uploadType=resumable",
                                           {client_->authorization(),
                                            "X-Upload-Content-Length: " + QByteArray::number(content.size()),
                                            "X-Upload-Content-Type: application/x-test"},
                                           LocalClient::callBody(u"drive.files.update"_s, {{u"fileId"_s, id}})));
        if (client_->put(LocalClient::targetOf(announced), content, 0, content.size()).status != 200)
            QTest::qFail("the upload failed", __FILE__, __LINE__);
        return id;
    }
    QJsonObject resource(const QString& id) {
        return jsonOf(client_->call(u"drive.files.get"_s, {{u"fileId"_s, id}}).body)["result"_L1].toObject();
    }
    QStringList childrenOf(const QString& folder) {
        const QJsonObject list = jsonOf(client_->call(u"drive.children.list"_s, {{u"folderId"_s, folder}}).body);
        QStringList ids;
        for (const QJsonValue item : list["result"_L1]["items"_L1].toArray())
            ids.append(item["id"_L1].toString());
        return ids;
    }
    void share(const QString& id, const QString& email) {
        const QJsonObject permission{{u"role"_s, u"reader"_s}, {u"type"_s, u"user"_s}, {u"value"_s, email}};
        client_->call(u"drive.permissions.insert"_s, {{u"fileId"_s, id}, {u"resource"_s, permission}});
    }

    // The file that a reply leads to.
    QString idIn(const RawReply& reply) {
        const QRegularExpression link(u"^/docs/\\w+/d/([\\w-]+)/edit$"_s);
        const QString id = link.match(QString::fromLatin1(reply.header("Location"))).captured(1);
        if (reply.status != 302 || id.isEmpty())
            QTest::qFail("nothing was created", __FILE__, __LINE__);
        return id;
    }
    QString newDocument(const QString& kind) { return newDocument(kind, owner_); }
    QString newDocument(const QString& kind, const QByteArray& person) {
        return idIn(get("/docs/" + kind.toLatin1() + "/create?usp=drive_web", person));
    }
    QByteArray editPage(const QString& kind, const QString& id, const QByteArray& person) {
        return get("/docs/" + kind.toLatin1() + "/d/" + id.toLatin1() + "/edit", person).body;
    }
    QByteArray keyOf(const QString& kind, const QString& id, const QByteArray& person) {
        return dataOf(editPage(kind, id, person), "key").toLatin1();
    }
    QByteArray anyKey() { return keyOf(u"forms"_s, newDocument(u"forms"_s), owner_); }
    QJsonObject stateOf(const QString& kind, const QString& id) {
        return jsonOf(dataOf(editPage(kind, id, owner_), "state").toUtf8());
    }
    void write(const QString& kind, const QString& id, const QJsonObject& content) {
        const QByteArray body = json({{u"revision"_s, 1}, {u"content"_s, content}});
        const RawReply reply = ask("PUT", "/docs/files/" + id.toLatin1() + "/content", owner_,
                                   {"X-Web-Key: " + keyOf(kind, id, owner_)}, body);
        QCOMPARE(reply.status, 200);
    }

    static QByteArray exportAddress(const QString& kind, const QString& id, const QString& format) {
        if (kind == "document"_L1)
            return u"/docs/document/export?format=%1&id=%2"_s.arg(format, id).toLatin1();
        if (kind == "spreadsheets"_L1)
            return u"/docs/spreadsheets/d/%2/export?format=%1&id=%2"_s.arg(format, id).toLatin1();
        return u"/docs/%3/d/%2/export/%1?id=%2"_s.arg(format, id, kind).toLatin1();
    }

    // Whether it is a file of the format that holds what contentFor() gave it.
    static void check(const QString& kind, const QString& format, const QByteArray& bytes) {
        const bool isSheet = kind == "spreadsheets"_L1;
        const int pages = kind == "presentation"_L1 ? 2 : 1;
        const QString last = isSheet ? u"lines"_s : pages == 2 ? u"last words"_s : u"three"_s;
        if (format == "txt"_L1) {
            QVERIFY(bytes.startsWith(QByteArray(words.toUtf8() + "\none\n  two\tthree\n")));
            QCOMPARE(bytes.endsWith("\n\nSecond\nlast words\n"), pages == 2);
        } else if (format == "csv"_L1) {
            QCOMPARE(QString::fromUtf8(bytes), words + u",\"a,\"\"b\"\"\"\r\n\"two\nlines\",\r\n"_s);
        } else if (format == "tsv"_L1) {
            QCOMPARE(QString::fromUtf8(bytes), words + u"\ta,\"b\"\ntwo lines\t\n"_s);
        } else if (format == "zip"_L1) {
            const auto members = unzipped(bytes);
            QCOMPARE(members.size(), 1);
            QVERIFY(members.firstKey().endsWith(".html"_L1));
            QVERIFY(members.first().contains(words.toHtmlEscaped().toUtf8()));
            QVERIFY(members.first().contains(last.toUtf8()));
        } else if (format == "pdf"_L1) {
            QVERIFY(bytes.startsWith("%PDF-1.") && bytes.trimmed().endsWith("%%EOF"));
            QCOMPARE(bytes.count("/Type /Page\n"), pages);
            QVERIFY2(bytes.contains("/FontFile"), "the letters are in the file");
        } else if (format == "png"_L1 || format == "jpeg"_L1) {
            QImage image;
            QVERIFY(image.loadFromData(bytes, format.toLatin1().constData()));
            QCOMPARE(image.size(), QSize(960, pages == 2 ? 2 * 540 + 12 : 540));
            QVERIFY2(darkPixels(image.copy(50, 0, 900, 540)) > 500, "there are letters on it");
        } else {
            const QString text = format == "svg"_L1 ? textOfXml(bytes) : textOfPackage(bytes);
            QVERIFY2(text.contains(words) && text.contains(last), qPrintable(text));
            QCOMPARE(bytes.startsWith("PK\x03\x04"), format != "svg"_L1);
        }
    }

    // Sets the server's clock so far ahead of this computer's.
    void setClock(int seconds) {
        QVERIFY(drive_.orderFaults("[{\"match\":{\"pathPrefix\":\"/icons\"},\"action\":{\"clockSkewSeconds\":" +
                                   QByteArray::number(seconds) + "}}]"));
        get("/icons/folder.png");
    }

    // The members of an archive of these files, as it came over the wire.
    QMap<QString, QByteArray> archiveOf(const QStringList& ids) {
        const RawReply noted = ask("POST", "/web/archive", owner_, {"X-Web-Key: " + anyKey()},
                                   json({{u"ids"_s, QJsonArray::fromStringList(ids)}}));
        const QByteArray id = jsonOf(noted.body)["archiveId"_L1].toString().toLatin1();
        RawHttp connection(drive_.url());
        connection.send(
            RawHttp::request("GET", "/e/export-result?authuser=0&archiveId=" + id, {owner_, "Connection: close"}));
        const QByteArray reply = connection.readToEnd();
        const qsizetype body = reply.indexOf("\r\n\r\n") + 4;
        return reply.startsWith("HTTP/1.1 200") ? unzipped(dechunked(reply.mid(body))) : QMap<QString, QByteArray>();
    }

    LocalDriveProcess drive_{{u"--with-rpc"_s, u"--with-change-ids"_s}};
    std::unique_ptr<LocalClient> client_;
    QByteArray owner_; // cookies
    QByteArray stranger_;
};

QTEST_GUILESS_MAIN(TestLocalDocuments)
#include "tst_localdocuments.moc"
