// The sign-in by the browser at an OAuth server that is not ours, and whose authors know nothing of us: what both take
// for granted is what the standards say.

#include "app/account/DriveConnection.h"
#include "oauth2/GTMOAuth2Authentication.h"
#include "oauth2/browser/BrowserSignIn.h"
#include "tests/oauth2/browser/PlayedBrowser.h"
#include "tests/platform/fakes/FakeOpener.h"

#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QTest>
#include <QUrlQuery>

using namespace quenby;
using namespace quenby::testing;
using namespace Qt::StringLiterals;

namespace {

constexpr int patiently = 60'000; // ms; only a hang takes so long

QString item(const QUrl& url, const QString& name) { return QUrlQuery(url).queryItemValue(name, QUrl::FullyDecoded); }

} // namespace

class OIDCSignInTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init() {
        browser_ = std::make_unique<PlayedBrowser>();
        drive_ = std::make_unique<DriveConnection>(endpoints_, ClientIdentity{u"installed-program"_s, {}},
                                                   makeSystemTimeSource(), nullptr);
        authentication_ = drive_->makeAuthentication();
        authentication_->setScope(u"openid email"_s);
        opener_.emplace();
        outcome_.reset();
        signIn_ = std::make_unique<BrowserSignIn>(authentication_, endpoints_.authorizationURL, *opener_,
                                                  SignInEnvironment{endpoints_, makeSystemTimeSource(), nullptr});
        signIn_->signIn(this, [this](const auto&, const MaybeError& error) { outcome_ = error; });
        QCOMPARE(opener_->opened().size(), 1);
        page_ = opener_->opened().first();
    }
    void cleanup() { signIn_.reset(); }
    void cleanupTestCase() {
        server_.closeWriteChannel();
        QVERIFY(server_.waitForFinished());
    }

    void signsInAndRenews() {
        const QUrl answer = allowed(page_);
        QVERIFY2(!item(answer, u"code"_s).isEmpty(), qPrintable(answer.toString()));
        QCOMPARE(browser_->get(answer).status, 200);
        QTRY_VERIFY_WITH_TIMEOUT(outcome_, patiently);
        QVERIFY2(!*outcome_, qPrintable(*outcome_ ? (*outcome_)->description() : QString()));
        QCOMPARE(authentication_->userEmail(), u"ann@example.com"_s);

        const QString first = authentication_->accessToken();
        QVERIFY(!first.isEmpty() && !authentication_->refreshToken().isEmpty());
        authentication_->setExpirationDate(QDateTime::currentDateTimeUtc().addSecs(-1));
        std::optional<MaybeError> renewed;
        authentication_->authorizeRequest(URLRequest(endpoints_.userInfoURL), this,
                                          [&](const URLRequest&, const MaybeError& error) { renewed = error; });
        QTRY_VERIFY_WITH_TIMEOUT(renewed, patiently);
        QVERIFY2(!*renewed, qPrintable(*renewed ? (*renewed)->description() : QString()));
        QVERIFY(authentication_->accessToken() != first);
    }

    // Whoever sees the code on its way has nothing of it.
    void exchange_data() {
        QTest::addColumn<QString>("verifier"); // "own": the sign-in's
        QTest::addColumn<int>("portOffset");   // of the redirect URI, which must be the same byte for byte
        QTest::addColumn<int>("status");
        QTest::newRow("everything right") << u"own"_s << 0 << 200;
        QTest::newRow("without the verifier") << QString() << 0 << 400;
        QTest::newRow("another verifier") << QString(43, u'A') << 0 << 400;
        QTest::newRow("another port") << u"own"_s << 1 << 400;
    }
    void exchange() {
        QFETCH(QString, verifier);
        QFETCH(int, portOffset);
        QFETCH(int, status);
        const auto own = authentication_->additionalGrantTypeRequestParameters()[u"authorization_code"_s];
        QUrl redirect(item(page_, u"redirect_uri"_s));
        redirect.setPort(redirect.port() + portOffset);
        QUrlQuery form{{u"grant_type"_s, u"authorization_code"_s},
                       {u"client_id"_s, u"installed-program"_s},
                       {u"redirect_uri"_s, redirect.toString()},
                       {u"code"_s, item(allowed(page_), u"code"_s)}};
        if (!verifier.isEmpty())
            form.addQueryItem(u"code_verifier"_s, verifier == u"own"_s ? own[u"code_verifier"_s] : verifier);
        const PlayedPage reply = browser_->post(endpoints_.tokenURL, form.toString(QUrl::FullyEncoded).toUtf8());
        QCOMPARE(reply.status, status);
        QCOMPARE(QJsonDocument::fromJson(reply.body).object()[u"error"_s].toString(),
                 status == 200 ? QString() : u"invalid_grant"_s);
    }

    void answerWithAnotherState() {
        QUrl answer = allowed(page_);
        QUrlQuery query(answer);
        query.removeQueryItem(u"state"_s);
        query.addQueryItem(u"state"_s, QString(43, u'A'));
        QUrl forged = answer;
        forged.setQuery(query);
        QCOMPARE(browser_->get(forged).status, 400);
        QCOMPARE(browser_->get(answer).status, 200);
        QTRY_VERIFY_WITH_TIMEOUT(outcome_, patiently);
        QVERIFY(!*outcome_);
    }

    // The page's address with something changed in it, as by a page that wants the code for itself.
    void changedAddress_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("value"); // empty: left out
        QTest::newRow("another path") << u"redirect_uri"_s << u"http://127.0.0.1:4711/elsewhere"_s;
        QTest::newRow("another host") << u"redirect_uri"_s << u"http://192.0.2.1:4711"_s;
        QTest::newRow("no proof key") << u"code_challenge"_s << QString();
    }
    void changedAddress() {
        QFETCH(QString, name);
        QFETCH(QString, value);
        QUrlQuery query(page_);
        query.removeQueryItem(name);
        if (!value.isEmpty())
            query.addQueryItem(name, value);
        QUrl changed = page_;
        changed.setQuery(query);
        const PlayedPage refusal = followed(browser_->get(changed));
        QVERIFY(item(refusal.location, u"code"_s).isEmpty());
        QVERIFY2(refusal.status == 400 || item(refusal.location, u"error"_s) == u"invalid_request"_s,
                 refusal.body.constData());
    }

private:
    // Follows redirects within the server; the first page, or the redirect that leads out of it.
    PlayedPage followed(PlayedPage page) {
        while (page.location.port() == endpoints_.tokenURL.port())
            page = browser_->get(page.location);
        return page;
    }
    PlayedPage shownPage(const QUrl& address) { return followed(browser_->get(address)); }
    // Signs in and allows everything; where the browser is sent then.
    QUrl allowed(const QUrl& address) {
        static const QRegularExpression form(u"action=\"([^\"]+)\""_s);
        PlayedPage page = shownPage(address);
        for (const char* filledIn : {"prompt=login&login=ann&password=any", "prompt=consent"}) {
            const QUrl action(form.match(QString::fromUtf8(page.body)).captured(1));
            page = followed(browser_->post(page.url.resolved(action), filledIn));
        }
        return page.location;
    }

    QProcess server_;
    Endpoints endpoints_;
    std::unique_ptr<PlayedBrowser> browser_;
    std::unique_ptr<DriveConnection> drive_;
    std::shared_ptr<GTMOAuth2Authentication> authentication_;
    std::optional<FakeOpener> opener_;
    QUrl page_;
    std::unique_ptr<BrowserSignIn> signIn_;
    std::optional<MaybeError> outcome_;
};

void OIDCSignInTest::initTestCase() {
    const QString modules = QStringLiteral(QUENBY_OIDC_MODULES);
    QVERIFY2(QFileInfo::exists(modules + u"/oidc-provider"_s),
             "The OAuth server is not installed. Run scripts/oidc.sh, which needs node and npm.");
    server_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    server_.start(u"node"_s, {QStringLiteral(QUENBY_OIDC_SERVER), modules});
    QByteArray said;
    while (!said.contains('\n') && server_.waitForReadyRead())
        said += server_.readAllStandardOutput();
    QVERIFY2(said.startsWith("ready "), said.constData());
    const QUrl base(u"http://127.0.0.1:"_s + QString::fromLatin1(said.sliced(6).trimmed()));
    const auto under = [&base](const QString& path) { return base.resolved(QUrl(path)); };
    endpoints_.authorizationURL = under(u"/auth"_s);
    endpoints_.tokenURL = under(u"/token"_s);
    endpoints_.userInfoURL = under(u"/me"_s);
    endpoints_.providerDomain = base.host();
    endpoints_.emailScope = u"email"_s;
    endpoints_.isLocal = true;
}

QTEST_GUILESS_MAIN(OIDCSignInTest)
#include "tst_oidcsignin.moc"
