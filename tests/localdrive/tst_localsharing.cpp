// The sharing dialog's page and what its script asks for, as seen from outside.
#include "tests/localdrive/LocalClient.h"

#include <QRegularExpression>
#include <QTest>

using namespace quenby::testing;

namespace {

const QByteArray permissions = "/sharing/permissions";
const QString writer = QStringLiteral("writer");
const QString reader = QStringLiteral("reader");
const QString commenter = QStringLiteral("commenter");
const QString guest = QStringLiteral("guest@example.com");

QString dataOf(const RawReply& page, const char* name) {
    const QRegularExpression attribute(QStringLiteral("data-%1=\"([^\"]*)\"").arg(QString::fromLatin1(name)));
    return attribute.match(QString::fromUtf8(page.body))
        .captured(1)
        .replace(QStringLiteral("&quot;"), QStringLiteral("\""));
}

// "ADDRESS ROLE" of everybody but the owner.
QStringList guestsIn(const QJsonObject& state) {
    QStringList guests;
    for (const QJsonValue person : state[QLatin1String("people")].toArray()) {
        if (person[QLatin1String("role")] != QLatin1String("owner"))
            guests.append(person[QLatin1String("email")].toString() + QLatin1Char(' ') +
                          person[QLatin1String("role")].toString());
    }
    guests.sort();
    return guests;
}

QByteArray roleBody(const QString& role) { return QJsonDocument(QJsonObject{{QStringLiteral("role"), role}}).toJson(); }
QByteArray peopleBody(const QString& people, const QString& role) {
    return QJsonDocument(QJsonObject{{QStringLiteral("people"), people}, {QStringLiteral("role"), role}}).toJson();
}

} // namespace

class TestLocalSharing final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        QVERIFY2(drive_.start(), drive_.log());
        client_ = std::make_unique<LocalClient>(drive_);
        refreshToken_ = drive_.grant()[QLatin1String("refresh_token")].toString();
    }
    void init() { file_ = newFile(QStringLiteral("<Plan> & \"more\"")); }
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
        QVERIFY(!policy.contains("unsafe") && policy.contains("frame-ancestors 'none'"));
        QVERIFY(!QRegularExpression(QStringLiteral("<script(?! src)|\\son\\w+=|\\sstyle="))
                     .match(QString::fromUtf8(page.body))
                     .hasMatch());
        QVERIFY(page.body.contains("Share “&lt;Plan&gt; &amp; &quot;more&quot;”"));
        QCOMPARE(page.header("Referrer-Policy"), "no-referrer");
        QVERIFY(page.header("Set-Cookie").isEmpty());
        QVERIFY2(!page.body.contains(refreshToken_.toLatin1()), "the token came back in the page");
        const QJsonObject state = QJsonDocument::fromJson(dataOf(page, "state").toUtf8()).object();
        QCOMPARE(state[QLatin1String("linkRole")].toString(), QStringLiteral("off"));
        QVERIFY(state[QLatin1String("canShare")].toBool());
        QVERIFY(state[QLatin1String("people")][0][QLatin1String("isYou")].toBool());
    }

    void whoMayOpenIt_data() {
        QTest::addColumn<QString>("token");
        QTest::addColumn<bool>("knownFile");
        QTest::addColumn<int>("status");
        const QString other =
            drive_.grant(QStringLiteral("stranger@example.com"))[QLatin1String("refresh_token")].toString();
        QTest::newRow("refresh token") << refreshToken_ << true << 200;
        QTest::newRow("access token") << QString::fromLatin1(drive_.newAccessToken()) << true << 200;
        QTest::newRow("wrong token") << QStringLiteral("wrong") << true << 403;
        QTest::newRow("no token and no cookie") << QString() << true << 403;
        QTest::newRow("somebody who can't see the file") << other << true << 404;
        QTest::newRow("no such file") << refreshToken_ << false << 404;
    }
    void whoMayOpenIt() {
        QFETCH(QString, token);
        QFETCH(bool, knownFile);
        QFETCH(int, status);
        const RawReply page = show(token, knownFile ? file_ : QStringLiteral("nonesuch"));
        QCOMPARE(page.status, status);
        QCOMPARE(dataOf(page, "key").isEmpty(), status != 200);
        QVERIFY2(page.body.contains("class=\"dialog"), "even a refusal is a dialog that can be measured and closed");
    }

    // What the dialog changes is what the API lists, and a change that others are told of.
    void changesAreTheApis() {
        const QByteArray key = open();
        const qint64 before = largestChange();
        const QString both = guest + QStringLiteral(", second@example.com");
        QCOMPARE(guestsIn(ask(key, "POST", permissions, peopleBody(both, writer))),
                 (QStringList{guest + QStringLiteral(" writer"), QStringLiteral("second@example.com writer")}));
        const QString guestId = permissionIdOf(guest);
        QVERIFY(!guestId.isEmpty());
        QCOMPARE(guestsIn(ask(key, "PUT", one(guestId), roleBody(commenter))).first(),
                 guest + QStringLiteral(" commenter"));
        QVERIFY(!guestsIn(ask(key, "DELETE", one(guestId), {})).join(QLatin1Char(' ')).contains(guest));
        QCOMPARE(permissionIdOf(guest), QString());
        QVERIFY(!permissionIdOf(QStringLiteral("second@example.com")).isEmpty());
        QVERIFY(largestChange() >= before + 4);
    }

    void linkIsSwitched() {
        const QByteArray key = open();
        const QString stranger =
            drive_.grant(QStringLiteral("stranger@example.com"))[QLatin1String("refresh_token")].toString();
        for (const QString& role : {reader, writer}) {
            const QJsonObject state = ask(key, "PUT", one(QStringLiteral("anyoneWithLink")), roleBody(role));
            QCOMPARE(state[QLatin1String("linkRole")].toString(), role);
            QCOMPARE(guestsIn(state), QStringList());
            QCOMPARE(show(stranger).status, 200);
        }
        const QJsonObject off = ask(key, "DELETE", one(QStringLiteral("anyoneWithLink")), {});
        QCOMPARE(off[QLatin1String("linkRole")].toString(), QStringLiteral("off"));
        QCOMPARE(show(stranger).status, 404);
    }

    void wishesAreRefused_data() {
        QTest::addColumn<QByteArray>("method");
        QTest::addColumn<QString>("permission");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<int>("status");
        const QString owner = QStringLiteral("owner");
        const QByteArray good = peopleBody(guest, reader);
        QTest::newRow("nobody") << QByteArray("POST") << QString() << peopleBody(QStringLiteral(" ,"), reader) << 400;
        QTest::newRow("one bad address of two")
            << QByteArray("POST") << QString() << peopleBody(guest + QStringLiteral(" nonsense"), reader) << 400;
        QTest::newRow("an owner") << QByteArray("POST") << QString() << peopleBody(guest, owner) << 400;
        QTest::newRow("less for the owner") << QByteArray("PUT") << owner << roleBody(reader) << 403;
        QTest::newRow("without the owner") << QByteArray("DELETE") << owner << QByteArray() << 403;
        QTest::newRow("no such permission") << QByteArray("PUT") << QStringLiteral("17") << roleBody(reader) << 404;
        QTest::newRow("no JSON") << QByteArray("POST") << QString() << QByteArray("people=x") << 400;
    }
    void wishesAreRefused() {
        QFETCH(QByteArray, method);
        QFETCH(QString, permission);
        QFETCH(QByteArray, body);
        QFETCH(int, status);
        if (permission == QLatin1String("owner"))
            permission = permissionIdOf(QStringLiteral("robin.hale@example.com"));
        const RawReply reply =
            askRaw(headersFor(open()), method, permission.isEmpty() ? permissions : one(permission), body);
        QCOMPARE(reply.status, status);
        QVERIFY(!jsonOf(reply.body)[QLatin1String("error")][QLatin1String("message")].toString().isEmpty());
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
        const QString mine = drive_.grant()[QLatin1String("refresh_token")].toString();
        const QByteArray key = dataOf(show(mine), "key").toLatin1();
        QCOMPARE(askRaw(headersFor(key), "GET", permissions, {}).status, 200);
        RawHttp::exchange(drive_.url(), RawHttp::request("GET", "/o/oauth2/revoke?token=" + mine.toLatin1()));
        QCOMPARE(askRaw(headersFor(key), "GET", permissions, {}).status, 401);
        QCOMPARE(show(mine).status, 403);
    }

    void readersOnlyLook() {
        ask(open(), "POST", permissions, peopleBody(guest, reader));
        const RawReply page = show(drive_.grant(guest)[QLatin1String("refresh_token")].toString());
        QVERIFY(dataOf(page, "state").contains(QStringLiteral("\"canShare\":false")));
        const RawReply reply = askRaw(headersFor(dataOf(page, "key").toLatin1()), "POST", permissions,
                                      peopleBody(QStringLiteral("third@example.com"), reader));
        QCOMPARE(reply.status, 403);
    }

private:
    QString newFile(const QString& title) {
        const QJsonObject resource{{QStringLiteral("title"), title}};
        const RawReply reply =
            client_->call(QStringLiteral("drive.files.insert"), {{QStringLiteral("resource"), resource}});
        return jsonOf(reply.body)[QLatin1String("result")][QLatin1String("id")].toString();
    }
    QString permissionIdOf(const QString& email) {
        const RawReply reply =
            client_->call(QStringLiteral("drive.permissions.list"), {{QStringLiteral("fileId"), file_}});
        for (const QJsonValue item : jsonOf(reply.body)[QLatin1String("result")][QLatin1String("items")].toArray())
            if (item[QLatin1String("emailAddress")].toString() == email)
                return item[QLatin1String("id")].toString();
        return {};
    }
    qint64 largestChange() {
        const QJsonObject about = jsonOf(client_->about().body);
        return about[QLatin1String("result")][QLatin1String("largestChangeId")].toString().toLongLong();
    }

    RawReply show(const QString& token) { return show(token, file_); }
    RawReply show(const QString& token, const QString& file) {
        const QByteArray query = formOf({{QStringLiteral("shareUiType"), QStringLiteral("default")},
                                         {QStringLiteral("access_token"), token},
                                         {QStringLiteral("command"), QStringLiteral("settings")},
                                         {QStringLiteral("id"), file}});
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

    LocalDriveProcess drive_;
    std::unique_ptr<LocalClient> client_;
    QString refreshToken_;
    QString file_;
};

QTEST_GUILESS_MAIN(TestLocalSharing)
#include "tst_localsharing.moc"
