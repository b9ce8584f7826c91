// The program itself, signing in and tokens.
#include "tests/localdrive/LocalClient.h"

#include <QCryptographicHash>
#include <QFile>
#include <QRegularExpression>
#include <QTest>

#include <csignal>

using namespace quenby::testing;
using namespace Qt::StringLiterals;

namespace {

const QString titleUri = u"urn:ietf:wg:oauth:2.0:oob"_s;
const QString loopbackUri = u"http://127.0.0.1:4999/done?x=1"_s;
const QString driveScope = u"https://www.googleapis.com/auth/drive "
                           "https://www.googleapis.com/auth/userinfo.email"_s;
const QByteArray formType = "Content-Type: application/x-www-form-urlencoded";
constexpr auto base64url = QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals;

using Fields = QList<QPair<QString, QString>>;

QString challengeFor(const QString& verifier) {
    return QString::fromLatin1(
        QCryptographicHash::hash(verifier.toLatin1(), QCryptographicHash::Sha256).toBase64(base64url));
}

Fields authorizationFields(const QString& redirectUri, const Fields& further = {}) {
    return Fields{{u"client_id"_s, u"client-1"_s},
                  {u"redirect_uri"_s, redirectUri},
                  {u"response_type"_s, u"code"_s},
                  {u"scope"_s, driveScope}} +
           further;
}

QString hiddenField(const RawReply& page, const QString& name) {
    const QRegularExpression field(u"name=\"%1\" value=\"([^\"]*)\""_s.arg(name));
    return field.match(QString::fromUtf8(page.body)).captured(1);
}

QByteArray titleOf(const RawReply& page) {
    const qsizetype from = page.body.indexOf("<title>") + 7;
    return page.body.mid(from, page.body.indexOf("</title>") - from);
}

} // namespace

class TestLocalServer final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY2(drive_.start(), drive_.log()); }

    void titleCarriesTheAnswer_data() {
        QTest::addColumn<QString>("decision");
        QTest::addColumn<QByteArray>("title");
        QTest::newRow("allowed") << u"allow"_s << QByteArray("Success code=");
        QTest::newRow("cancelled") << u"cancel"_s << QByteArray("Denied error=access_denied");
    }
    void titleCarriesTheAnswer() {
        QFETCH(QString, decision);
        QFETCH(QByteArray, title);
        const RawReply answer = decide(showPage(authorizationFields(titleUri)), decision);
        QCOMPARE(answer.status, 200);
        QVERIFY2(titleOf(answer).startsWith(title), titleOf(answer));
    }

    void redirectCarriesTheAnswer() {
        const Fields state{{u"state"_s, u"a b&c=d"_s}};
        const RawReply answer = decide(showPage(authorizationFields(loopbackUri, state)), u"allow"_s);
        QCOMPARE(answer.status, 302);
        const QUrl location = QUrl::fromEncoded(answer.header("Location"));
        const QUrlQuery query(location);
        QVERIFY(answer.header("Location").startsWith("http://127.0.0.1:4999/done?x=1&code="));
        QCOMPARE(query.queryItemValue(u"state"_s, QUrl::FullyDecoded), u"a b&c=d"_s);
        QCOMPARE(exchangeCode(query.queryItemValue(u"code"_s), loopbackUri).status, 200);
    }

    void pageRefuses_data() {
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("value");
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("error");
        const auto row = [](const char* name, const char* field, const char* value, int status, const char* error) {
            QTest::newRow(name) << QString::fromLatin1(field) << QString::fromLatin1(value) << status
                                << QByteArray(error);
        };
        row("no client", "client_id", "", 400, "");
        row("foreign redirect", "redirect_uri", "http://example.com/done", 400, "");
        row("look-alike redirect", "redirect_uri", "http://127.0.0.1.example.com/done", 400, "");
        row("other response type", "response_type", "token", 302, "unsupported_response_type");
        row("unknown scope", "scope", "everything", 302, "invalid_scope");
        row("no scope", "scope", "", 302, "invalid_scope");
        row("plain challenge", "code_challenge_method", "plain", 302, "invalid_request");
    }
    void pageRefuses() {
        QFETCH(QString, field);
        QFETCH(QString, value);
        QFETCH(int, status);
        QFETCH(QByteArray, error);
        Fields fields = authorizationFields(loopbackUri, {{u"code_challenge"_s, challengeFor(verifier_)}});
        fields.removeIf([&field](const auto& pair) { return pair.first == field; });
        fields.append({field, value});
        const RawReply reply = showPage(fields);
        QCOMPARE(reply.status, status);
        const QString named = QUrlQuery(QUrl::fromEncoded(reply.header("Location"))).queryItemValue(u"error"_s);
        QCOMPARE(named, QString::fromLatin1(error));
    }

    // Another site can make the browser send the form, but knows neither the mark nor the cookie.
    void formNeedsItsMarkAndCookie() {
        const RawReply page = showPage(authorizationFields(titleUri));
        QVERIFY(page.header("Content-Security-Policy").contains("default-src 'none'"));
        RawReply forged = page;
        forged.body.replace(hiddenField(page, u"csrf"_s).toLatin1(), "guessed");
        QCOMPARE(decide(forged, u"allow"_s).status, 403);
        RawReply withoutCookie = page;
        withoutCookie.headers.clear();
        QCOMPARE(decide(withoutCookie, u"allow"_s).status, 403);
        RawReply otherRequest = page;
        otherRequest.body.replace(hiddenField(page, u"request"_s).toLatin1(), "eyJjbGllbnQiOiJ4In0");
        QCOMPARE(decide(otherRequest, u"allow"_s).status, 403);
    }

    void codesBuyTokensOnce_data() {
        QTest::addColumn<QString>("verifier");
        QTest::addColumn<QString>("redirectUri");
        QTest::addColumn<QString>("client");
        QTest::addColumn<int>("secondsLater");
        QTest::addColumn<QString>("error");
        const QString none;
        const QString refused = u"invalid_grant"_s;
        const QString client = u"client-1"_s;
        QTest::newRow("good") << verifier_ << titleUri << client << 0 << none;
        QTest::newRow("nearly too late") << verifier_ << titleUri << client << 590 << none;
        QTest::newRow("expired") << verifier_ << titleUri << client << 610 << refused;
        QTest::newRow("wrong verifier") << verifier_ + 'x'_L1 << titleUri << client << 0 << refused;
        QTest::newRow("no verifier") << none << titleUri << client << 0 << refused;
        QTest::newRow("other redirect") << verifier_ << loopbackUri << client << 0 << refused;
        QTest::newRow("other client") << verifier_ << titleUri << u"client-2"_s << 0 << refused;
    }
    void codesBuyTokensOnce() {
        QFETCH(QString, verifier);
        QFETCH(QString, redirectUri);
        QFETCH(QString, client);
        QFETCH(int, secondsLater);
        QFETCH(QString, error);
        const QString code =
            newCode({{u"code_challenge"_s, challengeFor(verifier_)}, {u"code_challenge_method"_s, u"S256"_s}});
        QVERIFY(!code.isEmpty());
        setClock(secondsLater);
        const Fields with{{u"code_verifier"_s, verifier}};
        const RawReply reply = exchangeCode(code, redirectUri, client, with);
        setClock(0);
        const QJsonObject answer = jsonOf(reply.body);
        QCOMPARE(answer["error"_L1].toString(), error);
        QCOMPARE(reply.status, error.isEmpty() ? 200 : 400);
        if (!error.isEmpty())
            return;
        QCOMPARE(answer["token_type"_L1].toString(), u"Bearer"_s);
        QCOMPARE(answer["expires_in"_L1].toInt(), 3600);
        const QString accessToken = answer["access_token"_L1].toString();
        QCOMPARE(userInfo(accessToken).status, 200);
        // A code that comes back has leaked: what it led to ends.
        QCOMPARE(exchangeCode(code, redirectUri, client, with).status, 400);
        QCOMPARE(userInfo(accessToken).status, 401);
    }

    // A client without a secret has nothing but its challenge to prove itself by.
    void publicClientsNeedAChallenge() {
        const Fields challenge{{u"client_id"_s, u"public"_s},
                               {u"code_challenge"_s, challengeFor(verifier_)},
                               {u"code_challenge_method"_s, u"S256"_s}};
        const QString loopback = u"http://127.0.0.1:4998/"_s;
        const auto answerTo = [&](const Fields& asked, const QString& redirectUri, const Fields& with) {
            Fields fields = authorizationFields(loopback, asked);
            fields.removeFirst(); // the client is named among those
            const RawReply allowed = decide(showPage(fields), u"allow"_s);
            const QUrlQuery query(QUrl::fromEncoded(allowed.header("Location")));
            return exchangeCode(query.queryItemValue(u"code"_s), redirectUri, u"public"_s, with);
        };
        const Fields proof{{u"code_verifier"_s, verifier_}};
        QCOMPARE(answerTo(challenge, loopback, proof).status, 200);
        QCOMPARE(answerTo(challenge, u"http://127.0.0.1:4997/"_s, proof).status, 400);
        QCOMPARE(answerTo(challenge, loopback, {}).status, 400);
        QCOMPARE(answerTo({{u"client_id"_s, u"public"_s}}, loopback, proof).status, 400);
        QCOMPARE(answerTo(challenge, loopback, proof + Fields{{u"client_secret"_s, u"made up"_s}}).status, 401);
    }

    void identityTokenTellsWhoSignedIn() {
        const QJsonObject answer = jsonOf(exchangeCode(newCode(), titleUri).body);
        const QStringList parts = answer["id_token"_L1].toString().split('.'_L1);
        QCOMPARE(parts.size(), 3);
        const QJsonObject claims = jsonOf(QByteArray::fromBase64(parts[1].toLatin1(), base64url));
        const QJsonObject info = jsonOf(userInfo(answer["access_token"_L1].toString()).body);
        for (const QString& key : {u"sub"_s, u"email"_s, u"email_verified"_s}) {
            QVERIFY2(!info[key].isUndefined(), qPrintable(key));
            QCOMPARE(claims[key], info[key]);
        }
    }

    void refreshesAndRevokes_data() {
        QTest::addColumn<QString>("revoked");
        QTest::addColumn<QByteArray>("method");
        QTest::newRow("refresh token") << u"refresh_token"_s << QByteArray("POST");
        QTest::newRow("access token") << u"access_token"_s << QByteArray("GET");
    }
    void refreshesAndRevokes() {
        QFETCH(QString, revoked);
        QFETCH(QByteArray, method);
        const QJsonObject first = jsonOf(exchangeCode(newCode(), titleUri).body);
        const QString refreshToken = first["refresh_token"_L1].toString();
        const QJsonObject second = jsonOf(refresh(refreshToken).body);
        const QString accessToken = second["access_token"_L1].toString();
        QVERIFY(!second.contains("refresh_token"_L1));
        QCOMPARE(userInfo(accessToken).status, 200);
        QCOMPARE(jsonOf(refresh(u"unknown"_s).body)["error"_L1].toString(), u"invalid_grant"_s);

        const QByteArray form = formOf({{u"token"_s, first[revoked].toString()}});
        const auto revoking = method == "POST" ? RawHttp::request("POST", "/o/oauth2/revoke", {formType}, form)
                                               : RawHttp::request("GET", "/o/oauth2/revoke?" + form);
        QCOMPARE(RawHttp::exchange(drive_.url(), revoking).status, 200);
        QCOMPARE(refresh(refreshToken).status, 400);
        QCOMPARE(userInfo(accessToken).status, 401);
        QCOMPARE(RawHttp::exchange(drive_.url(), revoking).status, 400);
    }

    void tokenEndpointNamesFaults_data() {
        QTest::addColumn<Fields>("fields");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("error");
        const auto field = [](const char* name, const char* value) {
            return qMakePair(QString::fromLatin1(name), QString::fromLatin1(value));
        };
        const auto client = field("client_id", "client-1");
        const auto refresh = field("grant_type", "refresh_token");
        QTest::newRow("no grant type") << Fields{client} << 400 << u"invalid_request"_s;
        QTest::newRow("other grant type")
            << Fields{client, field("grant_type", "password")} << 400 << u"unsupported_grant_type"_s;
        QTest::newRow("no client") << Fields{refresh} << 400 << u"invalid_request"_s;
        QTest::newRow("no token") << Fields{client, refresh} << 400 << u"invalid_request"_s;
        QTest::newRow("repeated") << Fields{client, client, refresh} << 400 << u"invalid_request"_s;
        QTest::newRow("wrong secret") << Fields{field("client_id", "pinned"), field("client_secret", "no"), refresh}
                                      << 401 << u"invalid_client"_s;
    }
    void tokenEndpointNamesFaults() {
        QFETCH(Fields, fields);
        QFETCH(int, status);
        QFETCH(QString, error);
        const RawReply reply = postToken(fields);
        QCOMPARE(reply.status, status);
        QCOMPARE(jsonOf(reply.body)["error"_L1].toString(), error);
    }

    void onlyPinnedClientsWhenToldSo() {
        LocalDriveProcess strict({u"--client"_s, u"pinned:secret"_s, u"--only-clients"_s});
        QVERIFY2(strict.start(), strict.log());
        const auto answerTo = [&strict](const QString& client, const QString& secret) {
            const QByteArray form = formOf({{u"grant_type"_s, u"authorization_code"_s},
                                            {u"code"_s, u"unknown"_s},
                                            {u"redirect_uri"_s, titleUri},
                                            {u"client_id"_s, client},
                                            {u"client_secret"_s, secret}});
            const RawReply reply =
                RawHttp::exchange(strict.url(), RawHttp::request("POST", "/o/oauth2/token", {formType}, form));
            return std::pair(reply.status, jsonOf(reply.body)["error"_L1].toString());
        };
        const auto unknown = std::pair(401, u"invalid_client"_s);
        QCOMPARE(answerTo(u"client-1"_s, u"secret"_s), unknown);
        QCOMPARE(answerTo(u"pinned"_s, u"other"_s), unknown);
        QCOMPARE(answerTo(u"pinned"_s, u"secret"_s), std::pair(400, u"invalid_grant"_s));
    }

    void accountHasAFace() {
        const QJsonObject about = jsonOf(LocalClient(drive_).about().body)["result"_L1].toObject();
        const QUrl face(about["user"_L1]["picture"_L1]["url"_L1].toString());
        QCOMPARE(face.port(), drive_.url().port());
        const RawReply picture = RawHttp::exchange(drive_.url(), RawHttp::request("GET", face.path().toLatin1()));
        QCOMPARE(picture.header("Content-Type"), "image/png");
        QVERIFY(picture.body.startsWith("\x89PNG"));
    }

    void tokensSurviveAKill() {
        const QJsonObject answer = jsonOf(exchangeCode(newCode(), titleUri).body);
        const QString unusedCode = newCode();
        drive_.kill();
        QVERIFY2(drive_.start(), drive_.log());
        QCOMPARE(userInfo(answer["access_token"_L1].toString()).status, 200);
        QCOMPARE(refresh(answer["refresh_token"_L1].toString()).status, 200);
        QCOMPARE(exchangeCode(unusedCode, titleUri).status, 200);
    }

    void secondServerSaysWhereTheFirstIs() {
        QProcess second;
        second.start(LocalDriveProcess::program(), {u"--data"_s, drive_.dataFolder()});
        QVERIFY(second.waitForFinished());
        QCOMPARE(second.exitCode(), 3);
        QVERIFY(second.readAllStandardError().contains(drive_.url().toEncoded()));
    }

    void endpointFileNamesTheServer() {
        QFile file(drive_.dataFolder() + u"/endpoint.json"_s);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QJsonObject note = jsonOf(file.readAll());
        QCOMPARE(note["url"_L1].toString(), drive_.url().toString());
        QCOMPARE(::kill(static_cast<pid_t>(note["pid"_L1].toInteger()), 0), 0);
    }

    // A page of another site may point its own name at 127.0.0.1.
    void foreignHostNamesAreRefused() {
        QByteArray request = LocalClient(drive_).callRequest(u"drive.about.get"_s);
        request.replace("Host: 127.0.0.1", "Host: evil.example");
        QCOMPARE(RawHttp::exchange(drive_.url(), request).status, 403);
    }

    void compressesWhenAsked() {
        QByteArray request = LocalClient(drive_).callRequest(u"drive.about.get"_s);
        request.replace("Host:", "Accept-Encoding: gzip\r\nHost:");
        const RawReply reply = RawHttp::exchange(drive_.url(), request);
        QCOMPARE(reply.header("Content-Encoding"), "gzip");
        QVERIFY(reply.body.startsWith("\x1f\x8b"));
    }

    // Last, since it ends the server: not even an idle connection or half a request keeps it.
    void endsWhenTold() {
        RawHttp idle(drive_.url());
        RawHttp half(drive_.url());
        QVERIFY(half.send("POST /rpc HTTP/1.1\r\nContent-Length: 10\r\n\r\n"));
        QCOMPARE(drive_.terminate(), 0);
    }

private:
    RawReply showPage(const Fields& fields) {
        return RawHttp::exchange(drive_.url(), RawHttp::request("GET", "/o/oauth2/auth?" + formOf(fields)));
    }

    // What a browser sends when a button of the page is pressed.
    RawReply decide(const RawReply& page, const QString& decision) {
        const Fields fields{{u"decision"_s, decision},
                            {u"email"_s, u"robin.hale@example.com"_s},
                            {u"request"_s, hiddenField(page, u"request"_s)},
                            {u"csrf"_s, hiddenField(page, u"csrf"_s)}};
        const QByteArray cookie = "Cookie: " + page.header("Set-Cookie").split(';').first();
        return RawHttp::exchange(drive_.url(),
                                 RawHttp::request("POST", "/o/oauth2/approve", {formType, cookie}, formOf(fields)));
    }

    QString newCode(const Fields& further = {}) {
        const RawReply page = showPage(authorizationFields(titleUri, further));
        return QString::fromLatin1(titleOf(decide(page, u"allow"_s))).section('='_L1, 1);
    }

    RawReply postToken(const Fields& fields) {
        return RawHttp::exchange(drive_.url(), RawHttp::request("POST", "/o/oauth2/token", {formType}, formOf(fields)));
    }
    RawReply exchangeCode(const QString& code, const QString& redirectUri, const QString& client = u"client-1"_s,
                          const Fields& further = {}) {
        return postToken(Fields{{u"grant_type"_s, u"authorization_code"_s},
                                {u"client_id"_s, client},
                                {u"code"_s, code},
                                {u"redirect_uri"_s, redirectUri}} +
                         further);
    }
    RawReply refresh(const QString& refreshToken) {
        return postToken({{u"grant_type"_s, u"refresh_token"_s},
                          {u"client_id"_s, u"client-1"_s},
                          {u"refresh_token"_s, refreshToken}});
    }
    RawReply userInfo(const QString& accessToken) {
        return RawHttp::exchange(drive_.url(), RawHttp::request("GET", "/oauth2/v3/userinfo",
                                                                {"Authorization: Bearer " + accessToken.toLatin1()}));
    }

    // Sets the server's clock so far ahead of this computer's.
    void setClock(int seconds) {
        QVERIFY(drive_.orderFaults("[{\"match\":{\"pathPrefix\":\"/icons\"},\"action\":{\"clockSkewSeconds\":" +
                                   QByteArray::number(seconds) + "}}]"));
        RawHttp::exchange(drive_.url(), RawHttp::request("GET", "/icons/folder.png"));
    }

    LocalDriveProcess drive_{{u"--client"_s, u"pinned:secret"_s, u"--client"_s, u"public"_s}};
    const QString verifier_ = u"0123456789abcdefghijklmnopqrstuvwxyzABCDEFG"_s;
};

QTEST_GUILESS_MAIN(TestLocalServer)
#include "tst_localserver.moc"
