// Which client the program signs in as: what the settings and the environment decide, and what a token server says of
// a client that is tried.
#include "app/account/DriveConnection.h"
#include "app/preferences/AccessChoice.h"
#include "app/preferences/ClientChoice.h"
#include "app/session/AccountSession.h"
#include "core/DefaultsKeys.h"
#include "http/FetchLog.h"
#include "oauth2/GTMOAuth2Authentication.h"
#include "oauth2/HostReachability.h"
#include "tests/app/session/KeptGrant.h"
#include "tests/platform/fakes/FakeDefaults.h"
#include "tests/platform/fakes/FakeKeyring.h"
#include "tests/platform/fakes/FakeOpener.h"
#include "tests/platform/fakes/FakeWebViews.h"
#include "tests/support/ScriptedServer.h"

#include <QDirIterator>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace quenby;
using namespace quenby::testing;
using namespace Qt::StringLiterals;

namespace {

constexpr int patiently = 60000; // ms; only a hang takes so long
const OwnClient known{u"known"_s, u"hush-hush"_s};

// A choice with everything around it.
struct Desk {
    FakeDefaults defaults;
    FakeKeyring keyring;
    FakeWebViews webViews;
    FakeOpener opener;
    DriveConnection drive;
    AccountSession session;
    ClientChoice choice;
    QSignalSpy changed;

    explicit Desk(const Endpoints& endpoints, std::shared_ptr<FetchLogger> log = nullptr)
        : drive(endpoints, ClientIdentity::ofTheProgram(), makeSystemTimeSource(), std::move(log))
        , session({drive, keyring, defaults, webViews, opener, nullptr})
        , choice(drive, session, defaults)
        , changed(&choice, &ClientChoice::clientChanged) {}

    // What is told of the client; empty when it is known.
    QString trouble(const OwnClient& client) {
        std::optional<QString> told;
        choice.tryClient(client, &choice, [&told](const MaybeError& error) {
            told = error ? error->detail(errorKey::reason).toString() : QString();
        });
        return QTest::qWaitFor([&] { return told.has_value(); }, patiently) ? *told : u"no answer"_s;
    }
};

} // namespace

class ClientChoiceTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY2(local_.start(), local_.log().constData()); }
    void cleanup() { qunsetenv("QUENBY_CLIENT_ID"); }

    void localDriveTellsWhomItKnows() {
        const QTemporaryDir logs;
        {
            const auto log = std::make_shared<FetchLog>(logs.path(), u"test"_s, u"now"_s);
            Desk desk(Endpoints::localDrive(local_.url()), log);
            QCOMPARE(desk.trouble(known), QString());
            for (const OwnClient& stranger : {OwnClient{u"known"_s, u"hush-no"_s}, OwnClient{u"unknown"_s, u"hush"_s}})
                QVERIFY(desk.trouble(stranger).contains("does not know"_L1));
            local_.kill();
            const QString gone = desk.trouble(known);
            QVERIFY2(gone.contains("could not be reached"_L1) && gone.contains("try again"_L1), qPrintable(gone));
            QVERIFY(local_.start());
        }
        int files = 0;
        for (QDirIterator log(logs.path(), QDir::Files, QDirIterator::Subdirectories); log.hasNext(); ++files) {
            QFile file(log.next());
            QVERIFY(file.open(QIODevice::ReadOnly));
            QVERIFY(!file.readAll().contains("hush"));
        }
        QVERIFY(files > 0);
    }

    void serversAnswerInManyWays_data() {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("told");
        const auto row = [](const char* name, int status, const char* body, const char* told) {
            QTest::newRow(name) << status << QByteArray(body).replace('\'', '"') << QString::fromLatin1(told);
        };
        row("the code is wrong", 400, "{'error':'invalid_grant','error_description':'hush'}", "");
        row("not for this client", 401, "{'error':'unauthorized_client'}", "does not know");
        row("deleted", 401, "{'error':'deleted_client'}", "was deleted");
        row("another kind", 400, "{'error':'redirect_uri_mismatch'}", "Desktop app");
        row("something new", 400, "{'error':'odd_client'}", "odd_client");
        row("not a name", 400, "{'error':'<b>hush</b>'}", "says nothing");
        row("out of order", 503, "{'error':'invalid_grant'}", "says nothing");
        row("a page", 400, "<html>hush", "says nothing");
        row("a success", 200, "{'access_token':'hush'}", "says nothing");
    }
    void serversAnswerInManyWays() {
        QFETCH(int, status);
        QFETCH(QByteArray, body);
        QFETCH(QString, told);
        ScriptedServer server;
        server.setHandler([&](const ReceivedRequest&) {
            return Answer::with(status, body, {{"Content-Type", "application/json"}});
        });
        Desk desk(Endpoints::localDrive(server.url(QString())));
        const QString trouble = desk.trouble(known);
        QVERIFY2(told.isEmpty() ? trouble.isEmpty() : trouble.contains(told), qPrintable(trouble));
        QVERIFY(!trouble.contains("hush"_L1));
        QCOMPARE(server.requests().size(), 1U);
        const ReceivedRequest& asked = server.requests().front();
        QVERIFY(asked.body.contains("grant_type=authorization_code") && asked.body.contains("client_secret=hush-hush"));
        QVERIFY(asked.body.contains("redirect_uri=http%3A%2F%2F127.0.0.1")); // as a sign-in in the browser has it
        QVERIFY(asked.header("Authorization").isNull());
    }

    void followsTheSettings() {
        Desk desk(Endpoints::provider());
        QVERIFY(desk.choice.isProgramsOwn() && desk.choice.decidedElsewhere().isEmpty());
        desk.choice.use(known);
        QCOMPARE(desk.choice.clientID(), known.clientID);
        QTRY_COMPARE(desk.changed.size(), 1);
        QCOMPARE(desk.drive.identity(), (ClientIdentity{known.clientID, known.clientSecret}));
        QCOMPARE(desk.drive.makeAuthentication()->clientID(), known.clientID);
        desk.choice.use(known);
        desk.choice.use(OwnClient{u"without"_s, {}}); // a client without a secret
        QTRY_COMPARE(desk.changed.size(), 2);
        QCOMPARE(desk.drive.identity(), (ClientIdentity{u"without"_s, {}}));
        desk.choice.use(std::nullopt);
        QTRY_COMPARE(desk.changed.size(), 3);
        QVERIFY(desk.choice.isProgramsOwn() && desk.defaults.keys().isEmpty());
        QCOMPARE(desk.drive.identity(), ClientIdentity::ofTheProgram());
        // Another program writes them, and something else.
        desk.defaults.setValueForKey(defaultsKey::proxy, u"none"_s);
        desk.defaults.setValueForKey(defaultsKey::clientSecret, u"s"_s);
        desk.defaults.setValueForKey(defaultsKey::clientID, u"i"_s);
        QTRY_COMPARE(desk.changed.size(), 4);
        desk.defaults.setValueForKey(defaultsKey::clientID, u"j"_s);
        desk.defaults.setValueForKey(defaultsKey::clientID, u"i"_s); // and back
        QCoreApplication::processEvents();
        QCOMPARE(desk.changed.size(), 4);
    }

    // It goes on as the former client, or ends, but never something in between.
    void whoIsSignedInIsAskedFirst() {
        Desk desk(ofAProvider());
        desk.keyring.setItem(itemOf(desk.drive.endpoints()), keptGrant(local_, u"ann@example.com"_s));
        desk.defaults.setValueForKey(KeychainPersistence::prefsKeyForName(desk.drive.endpoints().keychainItemName),
                                     true);
        desk.session.loginCheck(&desk.choice, [](const MaybeError&) {});
        QTRY_VERIFY_WITH_TIMEOUT(desk.session.UserLogin(), patiently);
        const ClientIdentity former = desk.drive.identity();
        desk.choice.use(known);
        QTRY_COMPARE(desk.changed.size(), 1);
        QCOMPARE(desk.drive.identity(), former);
        desk.choice.keepFormer();
        QCoreApplication::processEvents();
        QVERIFY(desk.choice.isProgramsOwn() && !desk.defaults.contains(defaultsKey::clientSecret));
        QCOMPARE(desk.changed.size(), 1);
        desk.choice.use(known);
        QTRY_COMPARE(desk.changed.size(), 2);
        desk.choice.take();
        QCOMPARE(desk.drive.identity(), (ClientIdentity{known.clientID, known.clientSecret}));
        desk.choice.keepFormer(); // too late
        QCOMPARE(desk.choice.clientID(), known.clientID);
    }

    void accessFollowsTheSettings() {
        Desk desk(ofAProvider());
        AccessChoice access(desk.drive, desk.defaults);
        const Endpoints& endpoints = desk.drive.endpoints();
        const auto scope = [&desk] { return desk.drive.makeAuthentication()->scope(); };
        QCOMPARE(scope(), endpoints.driveScope);
        access.choose(DriveAccess::ownFiles);
        QCOMPARE(scope(), endpoints.driveFileScope);
        desk.defaults.setValueForKey(defaultsKey::driveAccess, u"perhaps"_s); // by another program
        QCOMPARE(scope(), endpoints.driveScope);
        access.choose(DriveAccess::ownFiles);
        access.choose(DriveAccess::everything);
        QVERIFY(!desk.defaults.contains(defaultsKey::driveAccess));
        // What was granted is told by the sign-in, not by the settings.
        const QString mail = endpoints.emailScope + ' '_L1;
        QCOMPARE(desk.drive.accessIn(mail + endpoints.driveScope), DriveAccess::everything);
        QCOMPARE(desk.drive.accessIn(mail + endpoints.driveFileScope), DriveAccess::ownFiles);
        QCOMPARE(desk.drive.accessIn(mail), std::nullopt);

        Desk local(Endpoints::localDrive(local_.url()));
        AccessChoice none(local.drive, local.defaults);
        none.choose(DriveAccess::ownFiles);
        QVERIFY(!none.isOffered() && none.access() == DriveAccess::everything);
    }

    void othersDecide_data() {
        QTest::addColumn<bool>("isLocal");
        QTest::addColumn<QString>("clientID");
        QTest::newRow("the environment") << false << u"from-outside"_s;
        QTest::newRow("the Drive on this computer") << true << ClientIdentity::ofTheProgram().clientID;
    }
    void othersDecide() {
        QFETCH(bool, isLocal);
        QFETCH(QString, clientID);
        Desk desk(isLocal ? Endpoints::localDrive(local_.url()) : Endpoints::provider());
        if (!isLocal)
            qputenv("QUENBY_CLIENT_ID", "from-outside");
        QVERIFY(!desk.choice.decidedElsewhere().isEmpty());
        desk.defaults.setValueForKey(defaultsKey::clientID, u"i"_s);
        QCoreApplication::processEvents();
        QCOMPARE(desk.choice.clientID(), clientID);
        QVERIFY(desk.drive.identity().clientID != u"i"_s);
    }

    // A refresh token is good for the client alone that it was given to.
    void whoIsSignedInStaysSoAsTheFormerClient() {
        DriveConnection drive(Endpoints::localDrive(local_.url()), grantedClient(), makeSystemTimeSource(), nullptr);
        const auto authorizer = [&drive, this] {
            const auto made = drive.makeAuthentication();
            made->setKeysForResponseString(QString::fromUtf8(keptGrant(local_, u"ann@example.com"_s)));
            made->setAccessToken({});
            return made;
        };
        const auto isAuthorized = [this](GTMOAuth2Authentication& authentication) {
            std::optional<bool> isGood;
            authentication.authorizeRequest(URLRequest(Endpoints::localDrive(local_.url()).rpcURL), this,
                                            [&isGood](const URLRequest&, const MaybeError& error) { isGood = !error; });
            return QTest::qWaitFor([&] { return isGood.has_value(); }, patiently) && *isGood;
        };
        const auto before = authorizer();
        drive.setIdentity({known.clientID, known.clientSecret});
        QVERIFY(isAuthorized(*before));
        QVERIFY(!isAuthorized(*authorizer()));
    }

private:
    // The Drive of this computer, as if clients were registered there.
    Endpoints ofAProvider() const {
        Endpoints endpoints = Endpoints::localDrive(local_.url());
        endpoints.clientConsoleURL = Endpoints::provider().clientConsoleURL;
        return endpoints;
    }

    LocalDriveProcess local_{{u"--only-clients"_s, u"--client"_s, u"known:hush-hush"_s, u"--client"_s,
                              grantedClient().clientID + ':'_L1 + grantedClient().clientSecret}};
};

QTEST_GUILESS_MAIN(ClientChoiceTest)
#include "tst_clientchoice.moc"
