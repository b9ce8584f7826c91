// The sharing dialog's page and what its script asks for, as seen from outside.
#include "tests/localdrive/LocalClient.h"

#include <QRegularExpression>
#include <QTest>

using namespace quenby::testing;
using namespace Qt::StringLiterals;

namespace {

const QByteArray permissions = "/sharing/permissions";
const QString writer = u"writer"_s;
const QString reader = u"reader"_s;
const QString commenter = u"commenter"_s;
const QString guest = u"guest@example.com"_s;

QString dataOf(const RawReply& page, const char* name) {
    const QRegularExpression attribute(u"data-%1=\"([^\"]*)\""_s.arg(QString::fromLatin1(name)));
    return attribute.match(QString::fromUtf8(page.body)).captured(1).replace(u"&quot;"_s, u"\""_s);
}

// "ADDRESS ROLE" of everybody but the owner.
QStringList guestsIn(const QJsonObject& state) {
    QStringList guests;
    for (const QJsonValue person : state["people"_L1].toArray()) {
        if (person["role"_L1] != "owner"_L1)
            guests.append(person["email"_L1].toString() + ' '_L1 + person["role"_L1].toString());
    }
    guests.sort();
    return guests;
}

QByteArray roleBody(const QString& role) { return QJsonDocument(QJsonObject{{u"role"_s, role}}).toJson(); }
QByteArray peopleBody(const QString& people, const QString& role) {
    return QJsonDocument(QJsonObject{{u"people"_s, people}, {u"role"_s, role}}).toJson();
}

} // namespace

class TestLocalSharing final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        QVERIFY2(drive_.start(), drive_.log());
        client_ = std::make_unique<LocalClient>(drive_);
        refreshToken_ = drive_.grant()["refresh_token"_L1].toString();
    }
    void init() { file_ = newFile(u"<Plan> & \"more\""_s); }
    // The address with its token and the dialogs' keys stay out of the log.
    void cleanupTestCase() {
        const QByteArray log = drive_.log();
        for (const QString& secret : drive_.secrets())
            QVERIFY(!log.contains(secret.toLatin1()));
    }

    void dialogShowsTheFile() {
        const RawReply page = show(refreshToken_);
        QCOMPARE(page.status, 200);
        const QByteArray policy = page.header("Content-Security-Policy");
        QVERIFY(policy.contains("default-src 'none'") && policy.contains("script-src 'self'"));
        QVERIFY(!policy.contains("unsafe") && policy.contains("frame-ancestors 'self'"));
        QVERIFY(!QRegularExpression(u"<script(?! src)|\\son\\w+=|\\sstyle="_s)
                     .match(QString::fromUtf8(page.body))
                     .hasMatch());
        QVERIFY(page.body.contains("Share “&lt;Plan&gt; &amp; &quot;more&quot;”"));
        QCOMPARE(page.header("Referrer-Policy"), "no-referrer");
        QVERIFY(page.header("Set-Cookie").isEmpty());
        QVERIFY2(!page.body.contains(refreshToken_.toLatin1()), "the token came back in the page");
        const QJsonObject state = QJsonDocument::fromJson(dataOf(page, "state").toUtf8()).object();
        QCOMPARE(state["linkRole"_L1].toString(), u"off"_s);
        QVERIFY(state["canShare"_L1].toBool());
        QVERIFY(state["people"_L1][0]["isYou"_L1].toBool());
    }

    void whoMayOpenIt_data() {
        QTest::addColumn<QString>("token");
        QTest::addColumn<bool>("knownFile");
        QTest::addColumn<int>("status");
        const QString other = drive_.grant(u"stranger@example.com"_s)["refresh_token"_L1].toString();
        QTest::newRow("refresh token") << refreshToken_ << true << 200;
        QTest::newRow("access token") << QString::fromLatin1(drive_.newAccessToken()) << true << 200;
        QTest::newRow("wrong token") << u"wrong"_s << true << 403;
        QTest::newRow("no token and no cookie") << QString() << true << 403;
        QTest::newRow("somebody who can't see the file") << other << true << 404;
        QTest::newRow("no such file") << refreshToken_ << false << 404;
    }
    void whoMayOpenIt() {
        QFETCH(QString, token);
        QFETCH(bool, knownFile);
        QFETCH(int, status);
        const RawReply page = show(token, knownFile ? file_ : u"nonesuch"_s);
        QCOMPARE(page.status, status);
        QCOMPARE(dataOf(page, "key").isEmpty(), status != 200);
        QVERIFY2(page.body.contains("class=\"dialog"), "even a refusal is a dialog that can be measured and closed");
    }

    // What the dialog changes is what the API lists, and a change that others are told of.
    void changesAreTheApis() {
        const QByteArray key = open();
        const qint64 before = largestChange();
        const QString both = guest + u", second@example.com"_s;
        QCOMPARE(guestsIn(ask(key, "POST", permissions, peopleBody(both, writer))),
                 (QStringList{guest + u" writer"_s, u"second@example.com writer"_s}));
        const QString guestId = permissionIdOf(guest);
        QVERIFY(!guestId.isEmpty());
        QCOMPARE(guestsIn(ask(key, "PUT", one(guestId), roleBody(commenter))).first(), guest + u" commenter"_s);
        QVERIFY(!guestsIn(ask(key, "DELETE", one(guestId), {})).join(' '_L1).contains(guest));
        QCOMPARE(permissionIdOf(guest), QString());
        QVERIFY(!permissionIdOf(u"second@example.com"_s).isEmpty());
        QVERIFY(largestChange() >= before + 4);
    }

    void linkIsSwitched() {
        const QByteArray key = open();
        const QString stranger = drive_.grant(u"stranger@example.com"_s)["refresh_token"_L1].toString();
        for (const QString& role : {reader, writer}) {
            const QJsonObject state = ask(key, "PUT", one(u"anyoneWithLink"_s), roleBody(role));
            QCOMPARE(state["linkRole"_L1].toString(), role);
            QCOMPARE(guestsIn(state), QStringList());
            QCOMPARE(show(stranger).status, 200);
        }
        const QJsonObject off = ask(key, "DELETE", one(u"anyoneWithLink"_s), {});
        QCOMPARE(off["linkRole"_L1].toString(), u"off"_s);
        QCOMPARE(show(stranger).status, 404);
    }

    void wishesAreRefused_data() {
        QTest::addColumn<QByteArray>("method");
        QTest::addColumn<QString>("permission");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<int>("status");
        const QString owner = u"owner"_s;
        const QByteArray good = peopleBody(guest, reader);
        QTest::newRow("nobody") << QByteArray("POST") << QString() << peopleBody(u" ,"_s, reader) << 400;
        QTest::newRow("one bad address of two")
            << QByteArray("POST") << QString() << peopleBody(guest + u" nonsense"_s, reader) << 400;
        QTest::newRow("an owner") << QByteArray("POST") << QString() << peopleBody(guest, owner) << 400;
        QTest::newRow("less for the owner") << QByteArray("PUT") << owner << roleBody(reader) << 403;
        QTest::newRow("without the owner") << QByteArray("DELETE") << owner << QByteArray() << 403;
        QTest::newRow("no such permission") << QByteArray("PUT") << u"17"_s << roleBody(reader) << 404;
        QTest::newRow("no JSON") << QByteArray("POST") << QString() << QByteArray("people=x") << 400;
    }
    void wishesAreRefused() {
        QFETCH(QByteArray, method);
        QFETCH(QString, permission);
        QFETCH(QByteArray, body);
        QFETCH(int, status);
        if (permission == "owner"_L1)
            permission = permissionIdOf(u"robin.hale@example.com"_s);
        const RawReply reply =
            askRaw(headersFor(open()), method, permission.isEmpty() ? permissions : one(permission), body);
        QCOMPARE(reply.status, status);
        QVERIFY(!jsonOf(reply.body)["error"_L1]["message"_L1].toString().isEmpty());
        QCOMPARE(permissionIdOf(guest), QString());
    }

    void onlyTheDialogMayAsk_data() {
        QTest::addColumn<QByteArrayList>("headers");
        QTest::addColumn<int>("status");
        QTest::newRow("no key") << QByteArrayList() << 401;
        QTest::newRow("wrong key") << QByteArrayList{"X-Share-Key: wrong"} << 401;
        QTest::newRow("a token in place of the key")
            << QByteArrayList{"X-Share-Key: " + refreshToken_.toLatin1()} << 401;
        QTest::newRow("another site") << headersFor(open()) + QByteArrayList{"Origin: http://evil.example"} << 403;
        QTest::newRow("another port") << headersFor(open()) + QByteArrayList{"Origin: http://127.0.0.1:1"} << 403;
    }
    void onlyTheDialogMayAsk() {
        QFETCH(QByteArrayList, headers);
        QFETCH(int, status);
        QCOMPARE(askRaw(headers, "POST", permissions, peopleBody(guest, reader)).status, status);
        QCOMPARE(permissionIdOf(guest), QString());
    }

    // A key is good for its file and no longer than the sign-in.
    void keyEndsWithTheSignIn() {
        const QString mine = drive_.grant()["refresh_token"_L1].toString();
        const QByteArray key = dataOf(show(mine), "key").toLatin1();
        QCOMPARE(askRaw(headersFor(key), "GET", permissions, {}).status, 200);
        RawHttp::exchange(drive_.url(), RawHttp::request("GET", "/o/oauth2/revoke?token=" + mine.toLatin1()));
        QCOMPARE(askRaw(headersFor(key), "GET", permissions, {}).status, 401);
        QCOMPARE(show(mine).status, 403);
    }

    void readersOnlyLook() {
        ask(open(), "POST", permissions, peopleBody(guest, reader));
        const RawReply page = show(drive_.grant(guest)["refresh_token"_L1].toString());
        QVERIFY(dataOf(page, "state").contains(u"\"canShare\":false"_s));
        const RawReply reply = askRaw(headersFor(dataOf(page, "key").toLatin1()), "POST", permissions,
                                      peopleBody(u"third@example.com"_s, reader));
        QCOMPARE(reply.status, 403);
    }

private:
    QString newFile(const QString& title) {
        const QJsonObject resource{{u"title"_s, title}};
        const RawReply reply = client_->call(u"drive.files.insert"_s, {{u"resource"_s, resource}});
        return jsonOf(reply.body)["result"_L1]["id"_L1].toString();
    }
    QString permissionIdOf(const QString& email) {
        const RawReply reply = client_->call(u"drive.permissions.list"_s, {{u"fileId"_s, file_}});
        for (const QJsonValue item : jsonOf(reply.body)["result"_L1]["items"_L1].toArray())
            if (item["emailAddress"_L1].toString() == email)
                return item["id"_L1].toString();
        return {};
    }
    qint64 largestChange() {
        const QJsonObject about = jsonOf(client_->about().body);
        return about["result"_L1]["largestChangeId"_L1].toString().toLongLong();
    }

    RawReply show(const QString& token) { return show(token, file_); }
    RawReply show(const QString& token, const QString& file) {
        const QByteArray query = formOf({{u"shareUiType"_s, u"default"_s},
                                         {u"access_token"_s, token},
                                         {u"command"_s, u"settings"_s},
                                         {u"id"_s, file}});
        return RawHttp::exchange(drive_.url(), RawHttp::request("GET", "/sharing/share?" + query));
    }
    QByteArray open() { return dataOf(show(refreshToken_, file_), "key").toLatin1(); }

    static QByteArray one(const QString& permission) { return permissions + '/' + permission.toLatin1(); }
    static QByteArrayList headersFor(const QByteArray& key) {
        return {"X-Share-Key: " + key, "Content-Type: application/json"};
    }
    RawReply askRaw(const QByteArrayList& headers, const QByteArray& method, const QByteArray& target,
                    const QByteArray& body) {
        return RawHttp::exchange(drive_.url(), RawHttp::request(method, target, headers, body));
    }
    // The state afterwards.
    QJsonObject ask(const QByteArray& key, const QByteArray& method, const QByteArray& target, const QByteArray& body) {
        const RawReply reply = askRaw(headersFor(key), method, target, body);
        if (reply.status != 200)
            QTest::qFail(reply.body, __FILE__, __LINE__);
        return jsonOf(reply.body);
    }

    LocalDriveProcess drive_{{u"--with-rpc"_s, u"--with-change-ids"_s}};
    std::unique_ptr<LocalClient> client_;
    QString refreshToken_;
    QString file_;
};

QTEST_GUILESS_MAIN(TestLocalSharing)
#include "tst_localsharing.moc"
