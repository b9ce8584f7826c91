// The program itself, signing in and tokens.
#include "tests/localdrive/LocalClient.h"

#include <QCryptographicHash>
#include <QFile>
#include <QRegularExpression>
#include <QTest>

#include <csignal>

using namespace quenby::testing;

namespace {

const QString titleUri = QStringLiteral("urn:ietf:wg:oauth:2.0:oob");
const QString loopbackUri = QStringLiteral("http://127.0.0.1:4999/done?x=1");
const QString driveScope = QStringLiteral("https://www.googleapis.com/auth/drive "
                                          "https://www.googleapis.com/auth/userinfo.email");
const QByteArray formType = "Content-Type: application/x-www-form-urlencoded";
constexpr auto base64url = QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals;

using Fields = QList<QPair<QString, QString>>;

QString challengeFor(const QString& verifier) {
    return QString::fromLatin1(
        QCryptographicHash::hash(verifier.toLatin1(), QCryptographicHash::Sha256).toBase64(base64url));
}

Fields authorizationFields(const QString& redirectUri, const Fields& further = {}) {
    return Fields{{QStringLiteral("client_id"), QStringLiteral("client-1")},
                  {QStringLiteral("redirect_uri"), redirectUri},
                  {QStringLiteral("response_type"), QStringLiteral("code")},
                  {QStringLiteral("scope"), driveScope}} +
           further;
}

QString hiddenField(const RawReply& page, const QString& name) {
    const QRegularExpression field(QStringLiteral("name=\"%1\" value=\"([^\"]*)\"").arg(name));
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
        QTest::newRow("allowed") << QStringLiteral("allow") << QByteArray("Success code=");
        QTest::newRow("cancelled") << QStringLiteral("cancel") << QByteArray("Denied error=access_denied");
    }
    void titleCarriesTheAnswer() {
        QFETCH(QString, decision);
        QFETCH(QByteArray, title);
        const RawReply answer = decide(showPage(authorizationFields(titleUri)), decision);
        QCOMPARE(answer.status, 200);
        QVERIFY2(titleOf(answer).startsWith(title), titleOf(answer));
    }

    void redirectCarriesTheAnswer() {
        const Fields state{{QStringLiteral("state"), QStringLiteral("a b&c=d")}};
        const RawReply answer = decide(showPage(authorizationFields(loopbackUri, state)), QStringLiteral("allow"));
        QCOMPARE(answer.status, 302);
        const QUrl location = QUrl::fromEncoded(answer.header("Location"));
        const QUrlQuery query(location);
        QVERIFY(answer.header("Location").startsWith("http://127.0.0.1:4999/done?x=1&code="));
        QCOMPARE(query.queryItemValue(QStringLiteral("state"), QUrl::FullyDecoded), QStringLiteral("a b&c=d"));
        QCOMPARE(exchangeCode(query.queryItemValue(QStringLiteral("code")), loopbackUri).status, 200);
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
        Fields fields = authorizationFields(loopbackUri, {{QStringLiteral("code_challenge"), challengeFor(verifier_)}});
        fields.removeIf([&field](const auto& pair) { return pair.first == field; });
        fields.append({field, value});
        const RawReply reply = showPage(fields);
        QCOMPARE(reply.status, status);
        const QString named =
            QUrlQuery(QUrl::fromEncoded(reply.header("Location"))).queryItemValue(QStringLiteral("error"));
        QCOMPARE(named, QString::fromLatin1(error));
    }

    // Another site can make the browser send the form, but knows neither the mark nor the cookie.
    void formNeedsItsMarkAndCookie() {
        const RawReply page = showPage(authorizationFields(titleUri));
        QVERIFY(page.header("Content-Security-Policy").contains("default-src 'none'"));
        RawReply forged = page;
        forged.body.replace(hiddenField(page, QStringLiteral("csrf")).toLatin1(), "guessed");
        QCOMPARE(decide(forged, QStringLiteral("allow")).status, 403);
        RawReply withoutCookie = page;
        withoutCookie.headers.clear();
        QCOMPARE(decide(withoutCookie, QStringLiteral("allow")).status, 403);
        RawReply otherRequest = page;
        otherRequest.body.replace(hiddenField(page, QStringLiteral("request")).toLatin1(), "eyJjbGllbnQiOiJ4In0");
        QCOMPARE(decide(otherRequest, QStringLiteral("allow")).status, 403);
    }

    void codesBuyTokensOnce_data() {
        QTest::addColumn<QString>("verifier");
        QTest::addColumn<QString>("redirectUri");
        QTest::addColumn<QString>("client");
        QTest::addColumn<int>("secondsLater");
        QTest::addColumn<QString>("error");
        const QString none;
        const QString refused = QStringLiteral("invalid_grant");
        const QString client = QStringLiteral("client-1");
        QTest::newRow("good") << verifier_ << titleUri << client << 0 << none;
        QTest::newRow("nearly too late") << verifier_ << titleUri << client << 590 << none;
        QTest::newRow("expired") << verifier_ << titleUri << client << 610 << refused;
        QTest::newRow("wrong verifier") << verifier_ + QLatin1Char('x') << titleUri << client << 0 << refused;
        QTest::newRow("no verifier") << none << titleUri << client << 0 << refused;
        QTest::newRow("other redirect") << verifier_ << loopbackUri << client << 0 << refused;
        QTest::newRow("other client") << verifier_ << titleUri << QStringLiteral("client-2") << 0 << refused;
    }
    void codesBuyTokensOnce() {
        QFETCH(QString, verifier);
        QFETCH(QString, redirectUri);
        QFETCH(QString, client);
        QFETCH(int, secondsLater);
        QFETCH(QString, error);
        const QString code = newCode({{QStringLiteral("code_challenge"), challengeFor(verifier_)},
                                      {QStringLiteral("code_challenge_method"), QStringLiteral("S256")}});
        QVERIFY(!code.isEmpty());
        setClock(secondsLater);
        const Fields with{{QStringLiteral("code_verifier"), verifier}};
        const RawReply reply = exchangeCode(code, redirectUri, client, with);
        setClock(0);
        const QJsonObject answer = jsonOf(reply.body);
        QCOMPARE(answer[QLatin1String("error")].toString(), error);
        QCOMPARE(reply.status, error.isEmpty() ? 200 : 400);
        if (!error.isEmpty())
            return;
        QCOMPARE(answer[QLatin1String("token_type")].toString(), QStringLiteral("Bearer"));
        QCOMPARE(answer[QLatin1String("expires_in")].toInt(), 3600);
        const QString accessToken = answer[QLatin1String("access_token")].toString();
        QCOMPARE(userInfo(accessToken).status, 200);
        // A code that comes back has leaked: what it led to ends.
        QCOMPARE(exchangeCode(code, redirectUri, client, with).status, 400);
        QCOMPARE(userInfo(accessToken).status, 401);
    }

    void identityTokenTellsWhoSignedIn() {
        const QJsonObject answer = jsonOf(exchangeCode(newCode(), titleUri).body);
        const QStringList parts = answer[QLatin1String("id_token")].toString().split(QLatin1Char('.'));
        QCOMPARE(parts.size(), 3);
        const QJsonObject claims = jsonOf(QByteArray::fromBase64(parts[1].toLatin1(), base64url));
        const QJsonObject info = jsonOf(userInfo(answer[QLatin1String("access_token")].toString()).body);
        for (const QString& key : {QStringLiteral("sub"), QStringLiteral("email"), QStringLiteral("email_verified")}) {
            QVERIFY2(!info[key].isUndefined(), qPrintable(key));
            QCOMPARE(claims[key], info[key]);
        }
    }

    void refreshesAndRevokes_data() {
        QTest::addColumn<QString>("revoked");
        QTest::addColumn<QByteArray>("method");
        QTest::newRow("refresh token") << QStringLiteral("refresh_token") << QByteArray("POST");
        QTest::newRow("access token") << QStringLiteral("access_token") << QByteArray("GET");
    }
    void refreshesAndRevokes() {
        QFETCH(QString, revoked);
        QFETCH(QByteArray, method);
        const QJsonObject first = jsonOf(exchangeCode(newCode(), titleUri).body);
        const QString refreshToken = first[QLatin1String("refresh_token")].toString();
        const QJsonObject second = jsonOf(refresh(refreshToken).body);
        const QString accessToken = second[QLatin1String("access_token")].toString();
        QVERIFY(!second.contains(QLatin1String("refresh_token")));
        QCOMPARE(userInfo(accessToken).status, 200);
        QCOMPARE(jsonOf(refresh(QStringLiteral("unknown")).body)[QLatin1String("error")].toString(),
                 QStringLiteral("invalid_grant"));

        const QByteArray form = formOf({{QStringLiteral("token"), first[revoked].toString()}});
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
        QTest::newRow("no grant type") << Fields{client} << 400 << QStringLiteral("invalid_request");
        QTest::newRow("other grant type")
            << Fields{client, field("grant_type", "password")} << 400 << QStringLiteral("unsupported_grant_type");
        QTest::newRow("no client") << Fields{refresh} << 400 << QStringLiteral("invalid_request");
        QTest::newRow("no token") << Fields{client, refresh} << 400 << QStringLiteral("invalid_request");
        QTest::newRow("repeated") << Fields{client, client, refresh} << 400 << QStringLiteral("invalid_request");
        QTest::newRow("wrong secret") << Fields{field("client_id", "pinned"), field("client_secret", "no"), refresh}
                                      << 401 << QStringLiteral("invalid_client");
    }
    void tokenEndpointNamesFaults() {
        QFETCH(Fields, fields);
        QFETCH(int, status);
        QFETCH(QString, error);
        const RawReply reply = postToken(fields);
        QCOMPARE(reply.status, status);
        QCOMPARE(jsonOf(reply.body)[QLatin1String("error")].toString(), error);
    }

    void tokensSurviveAKill() {
        const QJsonObject answer = jsonOf(exchangeCode(newCode(), titleUri).body);
        const QString unusedCode = newCode();
        drive_.kill();
        QVERIFY2(drive_.start(), drive_.log());
        QCOMPARE(userInfo(answer[QLatin1String("access_token")].toString()).status, 200);
        QCOMPARE(refresh(answer[QLatin1String("refresh_token")].toString()).status, 200);
        QCOMPARE(exchangeCode(unusedCode, titleUri).status, 200);
    }

    void secondServerSaysWhereTheFirstIs() {
        QProcess second;
        second.start(LocalDriveProcess::program(), {QStringLiteral("--data"), drive_.dataFolder()});
        QVERIFY(second.waitForFinished());
        QCOMPARE(second.exitCode(), 3);
        QVERIFY(second.readAllStandardError().contains(drive_.url().toEncoded()));
    }

    void endpointFileNamesTheServer() {
        QFile file(drive_.dataFolder() + QStringLiteral("/endpoint.json"));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QJsonObject note = jsonOf(file.readAll());
        QCOMPARE(note[QLatin1String("url")].toString(), drive_.url().toString());
        QCOMPARE(::kill(static_cast<pid_t>(note[QLatin1String("pid")].toInteger()), 0), 0);
    }

    // A page of another site may point its own name at 127.0.0.1.
    void foreignHostNamesAreRefused() {
        QByteArray request = LocalClient(drive_).callRequest(QStringLiteral("drive.about.get"));
        request.replace("Host: 127.0.0.1", "Host: evil.example");
        QCOMPARE(RawHttp::exchange(drive_.url(), request).status, 403);
    }

    void compressesWhenAsked() {
        QByteArray request = LocalClient(drive_).callRequest(QStringLiteral("drive.about.get"));
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
        const Fields fields{{QStringLiteral("decision"), decision},
                            {QStringLiteral("email"), QStringLiteral("robin.hale@example.com")},
                            {QStringLiteral("request"), hiddenField(page, QStringLiteral("request"))},
                            {QStringLiteral("csrf"), hiddenField(page, QStringLiteral("csrf"))}};
        const QByteArray cookie = "Cookie: " + page.header("Set-Cookie").split(';').first();
        return RawHttp::exchange(drive_.url(),
                                 RawHttp::request("POST", "/o/oauth2/approve", {formType, cookie}, formOf(fields)));
    }

    QString newCode(const Fields& further = {}) {
        const RawReply page = showPage(authorizationFields(titleUri, further));
        return QString::fromLatin1(titleOf(decide(page, QStringLiteral("allow")))).section(QLatin1Char('='), 1);
    }

    RawReply postToken(const Fields& fields) {
        return RawHttp::exchange(drive_.url(), RawHttp::request("POST", "/o/oauth2/token", {formType}, formOf(fields)));
    }
    RawReply exchangeCode(const QString& code, const QString& redirectUri,
                          const QString& client = QStringLiteral("client-1"), const Fields& further = {}) {
        return postToken(Fields{{QStringLiteral("grant_type"), QStringLiteral("authorization_code")},
                                {QStringLiteral("client_id"), client},
                                {QStringLiteral("code"), code},
                                {QStringLiteral("redirect_uri"), redirectUri}} +
                         further);
    }
    RawReply refresh(const QString& refreshToken) {
        return postToken({{QStringLiteral("grant_type"), QStringLiteral("refresh_token")},
                          {QStringLiteral("client_id"), QStringLiteral("client-1")},
                          {QStringLiteral("refresh_token"), refreshToken}});
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

    LocalDriveProcess drive_{{QStringLiteral("--client"), QStringLiteral("pinned:secret")}};
    const QString verifier_ = QStringLiteral("0123456789abcdefghijklmnopqrstuvwxyzABCDEFG");
};

QTEST_GUILESS_MAIN(TestLocalServer)
#include "tst_localserver.moc"
