// What goes wrong around the program on a desktop that has a keyring, which is locked at first: it says so, does not
// hang, and goes on as soon as the trouble is over.

#include "tests/desktop/support/AgentStage.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonObject>
#include <QProcess>
#include <QTest>

using namespace quenby::testing;

namespace {

constexpr int patience = QuenbyProcess::patience;
constexpr int aMoment = 3000; // milliseconds, after which what was typed is typed again

bool callBus(const QString& service, const QString& path, const QString& method, const QString& argument) {
    return QProcess::execute(QStringLiteral("gdbus"),
                             {QStringLiteral("call"), QStringLiteral("--session"), QStringLiteral("--dest"), service,
                              QStringLiteral("--object-path"), path, QStringLiteral("--method"), method, argument}) ==
           0;
}

bool lockKeyring() {
    return callBus(QStringLiteral("org.freedesktop.secrets"), QStringLiteral("/org/freedesktop/secrets"),
                   QStringLiteral("org.freedesktop.Secret.Service.Lock"),
                   QStringLiteral("['/org/freedesktop/secrets/collection/login']"));
}

} // namespace

class AgentTroublesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init() { stage_.skipAfterFailure(); }
    void cleanup() { stage_.afterTest(); }

    void aSignInPageThatNeverComes();
    void theKeyringIsUnlockedForTheSignIn();
    void aQuestionForThePasswordIsDismissed();
    void theDriveIsBackLater();
    void theCachesAreNoFolder();
    void damagedSettingsAreKeptAside();

private:
    // Waits for the keyring's question, and presses these keys until it has gone.
    bool answerQuestion(const std::function<void()>& keys);
    bool typePassword() {
        return answerQuestion([this] {
            stage_.input.key(QStringLiteral("ctrl+a"));
            stage_.input.type(qEnvironmentVariable("QUENBY_DESKTOP_KEYRING_PASSWORD"));
            stage_.input.key(QStringLiteral("Return"));
        });
    }
    bool hasStruck() {
        const QJsonArray faults = stage_.drive.pendingFaults();
        return faults.isEmpty() || faults[0][QStringLiteral("struck")].toInt() > 0;
    }

    const QString question_ = QStringLiteral("Unlock Login Keyring");
    AgentStage stage_;
};

void AgentTroublesTest::initTestCase() {
    // The window that asks for the password is started by the bus, which must know the screen.
    QVERIFY(callBus(QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
                    QStringLiteral("org.freedesktop.DBus.UpdateActivationEnvironment"),
                    QStringLiteral("{'DISPLAY': '%1'}").arg(qEnvironmentVariable("DISPLAY"))));
    QVERIFY2(stage_.drive.start(), stage_.drive.log().constData());
}

bool AgentTroublesTest::answerQuestion(const std::function<void()>& keys) {
    const WindowId window = stage_.input.waitForWindow(question_);
    const auto hasGone = [&] {
        stage_.input.focus(window);
        keys();
        return QTest::qWaitFor([&] { return !stage_.input.isVisible(window); }, aMoment);
    };
    return window != 0 && QTest::qWaitFor(hasGone, patience);
}

void AgentTroublesTest::aSignInPageThatNeverComes() {
    QVERIFY(stage_.drive.orderFaults(
        R"([{"match":{"pathPrefix":"/o/oauth2/auth"},"action":{"stall":{"where":"before","seconds":600}}}])"));
    QVERIFY(stage_.quenby.start());
    const WindowId dialog = stage_.input.waitForWindow(QStringLiteral("Sign In"), stage_.quenby.pid());
    QVERIFY(dialog != 0);
    QTRY_VERIFY_WITH_TIMEOUT(hasStruck(), patience);
    QVERIFY(stage_.input.activate(dialog));
    stage_.input.key(QStringLiteral("alt+c"));
    QVERIFY(stage_.input.waitUntilGone(dialog));
}

void AgentTroublesTest::theKeyringIsUnlockedForTheSignIn() {
    QVERIFY(stage_.input.activate(stage_.waitForWindow()));
    stage_.input.key(QStringLiteral("alt+s"));
    QVERIFY(stage_.allowSignIn());
    QVERIFY(typePassword());
    QVERIFY(stage_.quenby.waitForTrace("account"));
    QTRY_VERIFY_WITH_TIMEOUT(!stage_.keptSignIn().isEmpty(), patience);
    QCOMPARE(stage_.quenby.terminate(), 0);
}

void AgentTroublesTest::aQuestionForThePasswordIsDismissed() {
    QVERIFY(lockKeyring());
    QVERIFY(stage_.quenby.start());
    QVERIFY(answerQuestion([this] { stage_.input.key(QStringLiteral("Escape")); }));
    const WindowId window = stage_.waitForWindow();
    QTRY_VERIFY_WITH_TIMEOUT(stage_.quenby.errors().contains("locked"), patience);
    QVERIFY(stage_.input.activate(window));
    stage_.input.key(QStringLiteral("alt+a")); // "Try Again"
    QVERIFY(typePassword());
    QVERIFY(stage_.quenby.waitForTrace("account"));
    QCOMPARE(stage_.input.find(QStringLiteral("Sign In")), 0U);
    QCOMPARE(stage_.quenby.terminate(), 0);
}

// The Drive dies when the program asks for its first token, and comes back after the account could not be opened.
void AgentTroublesTest::theDriveIsBackLater() {
    QVERIFY(stage_.drive.orderFaults(
        R"([{"match":{"pathPrefix":"/o/oauth2/token"},"action":{"stall":{"where":"before","seconds":600}}}])"));
    QVERIFY(stage_.quenby.start());
    QTRY_VERIFY_WITH_TIMEOUT(hasStruck(), patience);
    stage_.drive.kill();
    QTRY_VERIFY_WITH_TIMEOUT(stage_.quenby.errors().contains("An error occurred"), patience);
    QCOMPARE(stage_.quenby.countOfTrace("account"), 0);
    QVERIFY2(stage_.drive.start(), stage_.drive.log().constData());
    QVERIFY(stage_.quenby.waitForTrace("account"));
    QCOMPARE(stage_.quenby.terminate(), 0);
}

void AgentTroublesTest::theCachesAreNoFolder() {
    QDir(stage_.home.path(QStringLiteral("cache"))).removeRecursively();
    stage_.home.makeFile(QStringLiteral("cache"), "no folder");
    QVERIFY(stage_.startSignedIn());
    QVERIFY(stage_.quenby.errors().contains("imageCache cannot be made"));
    const QString title = QStringLiteral("Without caches");
    const QString path = stage_.home.makeFile(title, "It works.");
    QVERIFY(stage_.chooseFromWindowMenu({QStringLiteral("u")}));
    QVERIFY(stage_.fillPanel(QStringLiteral("Upload File"), path));
    QTRY_COMPARE_WITH_TIMEOUT(stage_.countInDrive(title), 1, patience);
    QCOMPARE(stage_.quenby.terminate(), 0);
    QVERIFY(QFile::remove(stage_.home.path(QStringLiteral("cache"))));
}

void AgentTroublesTest::damagedSettingsAreKeptAside() {
    const QByteArray damaged("[General]\n\xff\xfe\0 no settings", 29);
    const QString name = QStringLiteral("config/quenby/quenby-local.ini");
    QCOMPARE(stage_.home.makeFile(name, damaged), stage_.home.settingsPath());
    QVERIFY(stage_.quenby.start());
    QFile aside(stage_.home.settingsPath() + QStringLiteral(".damaged-1"));
    QTRY_VERIFY_WITH_TIMEOUT(aside.exists(), patience);
    QVERIFY(aside.open(QIODevice::ReadOnly));
    QCOMPARE(aside.readAll(), damaged);
    QVERIFY(stage_.dismissAlert());
    // That somebody had signed in is one of the settings.
    QVERIFY(stage_.allowSignIn());
    QVERIFY(stage_.quenby.waitForTrace("account"));
    QCOMPARE(stage_.quenby.terminate(), 0);
    QVERIFY(QFile(stage_.home.settingsPath()).size() > 0);
}

QTEST_MAIN(AgentTroublesTest)
#include "tst_agent_troubles.moc"
