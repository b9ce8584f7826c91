// The web application's pages and what their scripts ask for, as a browser sees them.
#include "tests/localdrive/LocalClient.h"

#include <QDir>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTest>

using namespace quenby::testing;
using namespace Qt::StringLiterals;

namespace {

const QString hostile = u"<img src=x onerror=alert(1)>\"' & {{key}}.txt"_s;
const QString escaped = u"&lt;img src=x onerror=alert(1)&gt;&quot;"_s;

QByteArray encoded(const QString& text) { return QUrl::toPercentEncoding(text); }
QByteArray idsBody(const QString& id) { return QJsonDocument(QJsonObject{{u"ids"_s, QJsonArray{id}}}).toJson(); }

// One browser: its cookie, and the key of the pages that it was shown.
class Browser {
public:
    Browser(const QUrl& server, const QString& email = u"robin.hale@example.com"_s)
        : server_(server) {
        const RawReply form = RawHttp::exchange(server_, RawHttp::request("GET", "/signin"));
        const auto mark = QRegularExpression(u"name=\"csrf\" value=\"([^\"]*)\""_s).match(QString::fromUtf8(form.body));
        const RawReply reply = RawHttp::exchange(
            server_,
            RawHttp::request("POST", "/signin",
                             {"Content-Type: application/x-www-form-urlencoded",
                              "Cookie: " + form.header("Set-Cookie").split(';').first()},
                             formOf({{u"email"_s, email}, {u"continue"_s, u"/"_s}, {u"csrf"_s, mark.captured(1)}})));
        cookie = "Cookie: " + reply.header("Set-Cookie").split(';').first();
        const QString page = QString::fromUtf8(get("/").body);
        key = "X-Web-Key: " + attribute(page, "data-key").toLatin1();
        root = attribute(page, "data-folder");
    }

    static QString attribute(const QString& page, const char* name) {
        return QRegularExpression(QLatin1String(name) + u"=\"([^\"]*)\""_s).match(page).captured(1);
    }
    RawReply get(const QByteArray& target, const QList<QByteArray>& headers = {}) const {
        return RawHttp::exchange(server_, RawHttp::request("GET", target, headers + QList{cookie}));
    }
    RawReply post(const QByteArray& target, const QByteArray& content) const {
        return RawHttp::exchange(server_, RawHttp::request("POST", target, {cookie, key}, content));
    }
    QJsonObject answer(const QByteArray& target, const QJsonObject& asked) const {
        return jsonOf(post(target, QJsonDocument(asked).toJson()).body);
    }
    // Both return the new file's id.
    QString upload(const QString& title, const QByteArray& content) const {
        return jsonOf(post(uploadTarget(title), content).body)["id"_L1].toString();
    }
    QString makeFolder(const QString& title, const QString& parent) const {
        return answer("/web/folder", {{u"title"_s, title}, {u"parent"_s, parent}})["id"_L1].toString();
    }
    QByteArray uploadTarget(const QString& title) const {
        return "/web/upload?folder=" + root.toLatin1() + "&title=" + encoded(title);
    }
    // The titles in a list's rows, in their order, as they stand in the page.
    QStringList titles(const QByteArray& target) const {
        static const QRegularExpression row(u"class=\"file\".*?<a [^>]*>([^<]*)</a>"_s);
        QStringList found;
        for (auto match = row.globalMatch(QString::fromUtf8(get(target).body)); match.hasNext();)
            found.append(match.next().captured(1));
        return found;
    }

    QByteArray cookie;
    QByteArray key;
    QString root; // id of the root folder

private:
    const QUrl server_;
};

} // namespace

class TestLocalPages final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        QVERIFY2(drive_.start(), drive_.log());
        me_ = std::make_unique<Browser>(drive_.url());
        QVERIFY(!me_->root.isEmpty());
        hostile_ = me_->upload(hostile, "</pre><script>alert(2)</script>");
        QVERIFY(!hostile_.isEmpty());
    }

    void pagesAreGuardedAndEscaped_data() {
        QTest::addColumn<QByteArray>("target");
        QTest::addColumn<QString>("title");
        QTest::addColumn<bool>("showsTheFile");
        const auto row = [](const char* name, const QByteArray& target, const QString& title, bool showsTheFile) {
            QTest::newRow(name) << target << title << showsTheFile;
        };
        const QString folder = me_->makeFolder(u"<b>Folder"_s, me_->root);
        row("My Drive", "/", u"My Drive"_s, true);
        row("as a grid, sorted by whatever", "/?view=grid&sort=%22%3E%3Cb%3E", u"My Drive"_s, true);
        row("folder", "/drive/folders/" + folder.toLatin1(), u"&lt;b&gt;Folder"_s, false);
        row("recent", "/drive/recent", u"Recent"_s, true);
        row("shared", "/drive/shared", u"Shared with me"_s, false);
        row("trash", "/drive/trash", u"Trash"_s, false);
        row("search", "/drive/search?q=" + encoded(u"<img \"'"_s), u"Search results"_s, true);
        row("file", "/file/d/" + hostile_.toLatin1() + "/view", hostile.toHtmlEscaped(), true);
        row("storage", "/www/settings/storage", u"Storage"_s, true);
        row("application", "/drive/app", u"Quenby for this computer"_s, false);
    }
    void pagesAreGuardedAndEscaped() {
        QFETCH(QByteArray, target);
        QFETCH(QString, title);
        QFETCH(bool, showsTheFile);
        const RawReply page = me_->get(target);
        QCOMPARE(page.status, 200);
        const QByteArray policy = page.header("Content-Security-Policy");
        for (const char* part :
             {"default-src 'none'", "script-src 'self'", "frame-ancestors 'self'", "base-uri 'none'"})
            QVERIFY2(policy.contains(part), part);
        QVERIFY(!policy.contains("unsafe") && !policy.contains('*'));
        const QString body = QString::fromUtf8(page.body);
        QVERIFY2(body.contains(u"<title>%1 - Google Drive</title>"_s.arg(title)), page.body.left(2000));
        static const QRegularExpression inlined(
            u"<script(?![^>]* src)|<[^>\"]*(\"[^\"]*\"[^>\"]*)*\\s(on\\w+|style)="_s);
        const auto match = inlined.match(body);
        QVERIFY2(!match.hasMatch(), qPrintable(match.captured()));
        QVERIFY(!body.contains("<img src=x"_L1) && !body.contains("<script>"_L1) && !body.contains("<b>"_L1));
        QCOMPARE(body.contains(escaped), showsTheFile);
        QVERIFY(body.contains("class=\"a-Yygnk-ee-Qe Vb-Ma-wc\""_L1) || target.startsWith("/file/"));
    }

    void everythingIsShownWhereItBelongs() {
        const QString folder = me_->makeFolder(u"outer"_s, me_->root);
        me_->makeFolder(u"inner"_s, folder);
        const QJsonObject resource{{u"mimeType"_s, u"application/vnd.google-apps.document"_s}};
        const QJsonObject made =
            jsonOf(LocalClient(drive_).call(u"drive.files.insert"_s, {{u"resource"_s, resource}}).body);
        const QByteArray document = made["result"_L1]["id"_L1].toString().toLatin1();
        const QByteArray list = "/drive/folders/" + folder.toLatin1();
        const QByteArray view = "/file/d/" + hostile_.toLatin1() + "/view";
        QCOMPARE(me_->get("/file/d/" + folder.toLatin1() + "/view").header("Location"), list);
        QCOMPARE(me_->get("/drive/folders/" + hostile_.toLatin1()).header("Location"), view);
        QCOMPARE(me_->get("/file/d/" + document + "/view").header("Location"),
                 "/docs/document/d/" + document + "/edit");
        QCOMPARE(me_->get("/drive/folders/nonesuch").status, 404);
        // What is in a folder goes into the trash with it, and is still to be seen there.
        me_->post("/web/trash", idsBody(folder));
        QCOMPARE(me_->titles(list), QStringList{u"inner"_s});
        QVERIFY(me_->get(list).body.contains("This is in the trash."));
        QVERIFY(!me_->titles("/drive/trash").contains(u"inner"_s));
    }

    void textIsShownUpToALimit() {
        const QByteArray line = QByteArray(1023, 'a') + '\n';
        const QString id = me_->upload(u"long.log"_s, line.repeated(300) + "the end");
        const RawReply page = me_->get("/file/d/" + id.toLatin1() + "/view");
        QCOMPARE(page.body.count(line), 256);
        QVERIFY(!page.body.contains("the end"));
        QVERIFY(page.body.contains("Only the first"));
    }

    void assetsAreKeptByTheirMark() {
        const QString page = QString::fromUtf8(me_->get("/").body);
        const QByteArray script =
            QRegularExpression(u"src=\"(/pages/drive.js\\?v=\\w+)\""_s).match(page).captured(1).toLatin1();
        QVERIFY2(!script.isEmpty(), "a script without a mark");
        const RawReply marked = me_->get(script);
        QVERIFY(marked.header("Cache-Control").contains("immutable"));
        QVERIFY(marked.header("Content-Type").startsWith("text/javascript"));
        QVERIFY(marked.body.contains("from '/pages/actions.js?v="));
        const RawReply unmarked = me_->get("/pages/drive.js");
        QCOMPARE(unmarked.header("Cache-Control"), "no-cache");
        QCOMPARE(me_->get("/pages/drive.js", {"If-None-Match: " + unmarked.header("ETag")}).status, 304);
        QCOMPARE(me_->get("/pages/icons/folder.svg").header("Content-Type"), "image/svg+xml");
        for (const char* none : {"/pages/drive.html", "/pages/../drive.js", "/pages/", "/pages/icons"})
            QCOMPARE(me_->get(none).status, 404);
    }

    // Whoever is not signed in comes to the page after signing in, with all that was asked for.
    void strangersSignInFirst() {
        const RawReply reply = RawHttp::exchange(drive_.url(), RawHttp::request("GET", "/drive/search?q=a%26b"));
        QCOMPARE(reply.status, 302);
        QCOMPARE(reply.header("Location"), "/signin?continue=%2Fdrive%2Fsearch%3Fq%3Da%2526b");
    }

    void callsAreRefused_data() {
        QTest::addColumn<QList<QByteArray>>("headers");
        QTest::addColumn<int>("status");
        const Browser other(drive_.url());
        const QByteArray here = "Origin: http://127.0.0.1"; // as the requests name the host
        QTest::newRow("accepted with all of it")
            << QList{me_->cookie, me_->key, here, QByteArray("Sec-Fetch-Site: same-origin")} << 200;
        QTest::newRow("no key") << QList{me_->cookie, here} << 403;
        QTest::newRow("another session's key") << QList{me_->cookie, other.key, here} << 403;
        QTest::newRow("foreign origin") << QList{me_->cookie, me_->key, QByteArray("Origin: http://evil.example")}
                                        << 403;
        QTest::newRow("no origin to speak of") << QList{me_->cookie, me_->key, QByteArray("Origin: null")} << 403;
        QTest::newRow("another site by its metadata")
            << QList{me_->cookie, me_->key, QByteArray("Sec-Fetch-Site: same-site")} << 403;
        QTest::newRow("no cookie") << QList{me_->key, here} << 401;
    }
    void callsAreRefused() {
        QFETCH(QList<QByteArray>, headers);
        QFETCH(int, status);
        const QString id = me_->upload(u"wanted.txt"_s, "1");
        const QString sent = u"sent with "_s + QString::fromLatin1(QTest::currentDataTag());
        const auto send = [&](const QByteArray& target, const QByteArray& body) {
            const RawReply reply = RawHttp::exchange(drive_.url(), RawHttp::request("POST", target, headers, body));
            QVERIFY(reply.header("Content-Security-Policy").contains("default-src 'none'"));
            QCOMPARE(reply.status, status);
        };
        send(me_->uploadTarget(sent), QByteArray(100'000, 'x'));
        send("/web/trash", idsBody(id));
        const bool isDone = status == 200;
        QCOMPARE(me_->titles("/").contains(sent), isDone);
        QCOMPARE(me_->titles("/drive/trash").contains(u"wanted.txt"_s), isDone);
        QVERIFY(me_->get("/web/state", {me_->key}).status == 200);
        QCOMPARE(RawHttp::exchange(drive_.url(), RawHttp::request("GET", "/web/state", headers)).status, status);
        QVERIFY(me_->post("/web/delete", idsBody(id)).status == 200);
        QVERIFY(me_->post("/web/empty-trash", "{}").status == 200);
    }

    void uploadsKeepTheirBytes() {
        QByteArray bytes(3'000'001, 'x');
        QRandomGenerator::global()->fillRange(reinterpret_cast<quint32*>(bytes.data()), bytes.size() / 4);
        for (const QByteArray& content : {bytes, QByteArray()}) {
            const QString id = me_->upload(u"Größe & mehr.png"_s, content);
            const QByteArray file = "/drive/v2/files/" + id.toLatin1();
            QVERIFY(me_->get(file + "?alt=media").body == content);
            const QJsonObject resource = jsonOf(me_->get(file).body);
            QCOMPARE(resource["title"_L1].toString(), u"Größe & mehr.png"_s);
            QCOMPARE(resource["mimeType"_L1].toString(), u"image/png"_s);
            QCOMPARE(resource["parents"_L1][0]["id"_L1].toString(), me_->root);
        }
        QVERIFY(me_->post("/web/upload?folder=nowhere&title=x", "bytes").status == 404);
    }

    // Whatever becomes of the connection, half a file is none, and leaves nothing behind.
    void brokenUploadsLeaveNothing() {
        QByteArray whole = RawHttp::request("POST", me_->uploadTarget(u"half.bin"_s), {me_->cookie, me_->key},
                                            QByteArray(2'000'000, 'x'));
        RawHttp connection(drive_.url());
        QVERIFY(connection.send(whole.chopped(1'000'000)));
        const QDir incoming(drive_.dataFolder() + u"/incoming"_s);
        QTRY_VERIFY(!incoming.isEmpty());
        connection.close();
        QTRY_VERIFY(incoming.isEmpty());
        QCOMPARE(me_->titles("/drive/search?q=half.bin"), QStringList());
    }

    void fullDriveSaysSo() {
        LocalDriveProcess small({u"--quota"_s, u"1000"_s});
        QVERIFY2(small.start(), small.log());
        const Browser browser(small.url());
        const RawReply refused = browser.post(browser.uploadTarget(u"large"_s), QByteArray(400'000, 'x'));
        QCOMPARE(refused.status, 403);
        QVERIFY(jsonOf(refused.body)["error"_L1]["message"_L1].toString().contains("full"_L1));
        QVERIFY(!browser.upload(u"fits"_s, QByteArray(1000, 'x')).isEmpty());
        QCOMPARE(browser.titles("/"), QStringList{u"fits"_s});
    }

    void filesMoveThroughTheirLife() {
        const QString id = me_->upload(u"first name.txt"_s, "1");
        QCOMPARE(me_->answer("/web/rename", {{u"id"_s, id}, {u"title"_s, u" second name.txt "_s}})["id"_L1], id);
        QVERIFY(me_->titles("/").contains(u"second name.txt"_s) && !me_->titles("/").contains(u"first name.txt"_s));
        QCOMPARE(me_->post("/web/rename", "{\"id\": \"" + id.toLatin1() + "\", \"title\": \" \"}").status, 400);
        const QJsonObject both{{u"ids"_s, QJsonArray{id, u"nonesuch"_s}}};
        const QJsonObject trashed = me_->answer("/web/trash", both);
        QCOMPARE(trashed["done"_L1].toInt(), 1);
        QCOMPARE(trashed["failed"_L1][0]["id"_L1].toString(), u"nonesuch"_s);
        QVERIFY(me_->titles("/drive/trash").contains(u"second name.txt"_s));
        QVERIFY(!me_->titles("/").contains(u"second name.txt"_s));
        me_->post("/web/restore", idsBody(id));
        QVERIFY(me_->titles("/").contains(u"second name.txt"_s));
        QVERIFY2(me_->makeFolder(u"inside"_s, id).isEmpty(), "a folder was made inside a file");
        me_->post("/web/delete", idsBody(id));
        QCOMPARE(me_->get("/file/d/" + id.toLatin1() + "/view").status, 404);
    }

    void listsAreSortedAndPaged() {
        const QString folder = me_->makeFolder(u"many"_s, me_->root);
        const QByteArray list = "/drive/folders/" + folder.toLatin1();
        me_->makeFolder(u"zz folder"_s, folder);
        LocalClient client(drive_);
        const QJsonArray parents{QJsonObject{{u"id"_s, folder}}};
        for (int i = 0; i < 205; ++i) {
            const QJsonObject resource{{u"title"_s, u"File %1"_s.arg(i, 3, 10, '0'_L1)}, {u"parents"_s, parents}};
            client.call(u"drive.files.insert"_s, {{u"resource"_s, resource}});
        }
        const RawReply first = me_->get(list + "?sort=name");
        QVERIFY(first.header("Set-Cookie").startsWith("quenby_sort=name"));
        QVERIFY(first.body.contains("href=\"?from=200\""));
        QStringList titles = me_->titles(list);
        QCOMPARE(titles.size(), 200);
        QCOMPARE(titles[0], u"zz folder"_s);
        QCOMPARE(titles[1], u"File 000"_s);
        titles += me_->titles(list + "?from=200");
        QCOMPARE(titles.size(), 206);
        QCOMPARE(titles.last(), u"File 204"_s);
        QCOMPARE(QSet<QString>(titles.begin(), titles.end()).size(), 206);
        const QStringList newestFirst = me_->titles(list + "?sort=-modified&count=1000");
        QCOMPARE(newestFirst.size(), 206);
        QCOMPARE(newestFirst.mid(0, 2), (QStringList{u"zz folder"_s, u"File 204"_s}));
    }

    void guestsSeeWhatIsShared() {
        const Browser guest(drive_.url(), u"guest@example.com"_s);
        const QString shown = me_->upload(u"for guests.txt"_s, "1");
        const QString kept = me_->upload(u"for me.txt"_s, "1");
        const QJsonObject permission{
            {u"role"_s, u"reader"_s}, {u"type"_s, u"user"_s}, {u"value"_s, u"guest@example.com"_s}};
        LocalClient(drive_).call(u"drive.permissions.insert"_s, {{u"fileId"_s, shown}, {u"resource"_s, permission}});
        QCOMPARE(guest.titles("/drive/shared"), QStringList{u"for guests.txt"_s});
        QCOMPARE(guest.titles("/drive/search?q=for"), QStringList{u"for guests.txt"_s});
        QCOMPARE(guest.get("/file/d/" + kept.toLatin1() + "/view").status, 404);
        QVERIFY(!guest.get("/www/settings/storage").body.contains("for me.txt"));
        QCOMPARE(guest.answer("/web/trash", {{u"ids"_s, QJsonArray{shown}}})["failed"_L1].toArray().size(), 1);
        QCOMPARE(guest.post(me_->uploadTarget(u"intruder"_s), "x").status, 404);
        QVERIFY(me_->titles("/").contains(u"for guests.txt"_s));
    }

    void pagesSurviveARestart() {
        drive_.kill();
        QVERIFY2(drive_.start(), drive_.log());
        QCOMPARE(me_->get("/web/state", {me_->key}).status, 200);
    }

    void signsOutAtTheAccountsAddress() {
        const Browser leaving(drive_.url());
        const RawReply reply = leaving.get("/accounts/Logout?service=wise");
        QCOMPARE(reply.status, 200);
        QVERIFY(reply.header("Set-Cookie").startsWith("quenby_session=;"));
        QCOMPARE(leaving.get("/").status, 302);
        QCOMPARE(leaving.post("/web/empty-trash", "{}").status, 401);
        QCOMPARE(me_->get("/").status, 200);
    }

private:
    LocalDriveProcess drive_;
    std::unique_ptr<Browser> me_;
    QString hostile_; // a file
};

QTEST_GUILESS_MAIN(TestLocalPages)
#include "tst_localpages.moc"
