// One program after the other in the same home, on a real keyring and bus: signing in and out, starting again, a second
// start, and the ways in which the program ends.

#include "tests/desktop/support/AgentStage.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonObject>
#include <QTest>

#include <csignal>

using namespace quenby::testing;

namespace {

constexpr int patience = QuenbyProcess::patience;

} // namespace

class AgentLifeTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY2(stage_.drive.start(), stage_.drive.log().constData()); }
    void init() { stage_.skipAfterFailure(); }
    void cleanup() { stage_.afterTest(); }

    void aSignalEndsItUnderneathTheSignIn();
    void aFileWaitsForTheSignIn();
    void terminationCleansUp();
    void theSignInIsFoundAgain();
    void aSecondStartTakesOver();
    void signOutAndInAgain();
    void aKilledProgramLosesNoSetting();

private:
    QString makeFile(const QString& title) const { return stage_.home.makeFile(title, title.toUtf8()); }
    QDir caches() const { return QDir(stage_.home.path(QStringLiteral("cache/quenby-local"))); }
    int struckFaults() {
        int struck = 0;
        for (const QJsonValue fault : stage_.drive.pendingFaults())
            struck += fault[QStringLiteral("struck")].toInt();
        return struck;
    }

    AgentStage stage_;
};

void AgentLifeTest::aSignalEndsItUnderneathTheSignIn() {
    QVERIFY(stage_.quenby.start());
    QVERIFY(stage_.waitForSignInPage() != 0);
    QCOMPARE(stage_.quenby.terminate(), 0);
}

void AgentLifeTest::aFileWaitsForTheSignIn() {
    const QString title = QStringLiteral("Before the sign-in");
    QVERIFY(stage_.quenby.start({makeFile(title)}));
    QVERIFY(stage_.dismissAlert()); // "No login"
    QVERIFY(stage_.allowSignIn());
    QTRY_COMPARE_WITH_TIMEOUT(stage_.countInDrive(title), 1, patience);
    QTRY_VERIFY_WITH_TIMEOUT(!stage_.keptSignIn().isEmpty(), patience);
}

void AgentLifeTest::terminationCleansUp() {
    QVERIFY(caches().exists(QStringLiteral("imageCache")));
    for (const char* name : {"ScreenShotCaches", "ScreenCastCache", "imageCache"})
        stage_.home.makeFile(QStringLiteral("cache/quenby-local/") + QString::fromLatin1(name) + QStringLiteral("/a/b"),
                             "c");
    QCOMPARE(stage_.quenby.terminate(), 0);
    for (const char* name : {"ScreenShotCaches", "ScreenCastCache", "imageCache"})
        QVERIFY2(!caches().exists(QString::fromLatin1(name)), name);
}

void AgentLifeTest::theSignInIsFoundAgain() {
    const int pages = stage_.answeredPages();
    QVERIFY(stage_.startSignedIn());
    QCOMPARE(stage_.input.find(QStringLiteral("Sign In")), 0U);
    QCOMPARE(stage_.answeredPages(), pages);
    QCOMPARE(stage_.quenby.terminate(), 0);
}

// Four uploads hang before their first byte, two wait behind them; the newcomer does all six, and a file of its own.
void AgentLifeTest::aSecondStartTakesOver() {
    QVERIFY(stage_.drive.orderFaults(
        R"([{"match":{"pathPrefix":"/upload/rpc","times":-1},"action":{"stall":{"where":"before","seconds":600}}}])"));
    QuenbyProcess older(stage_.home);
    QStringList titles;
    QStringList files;
    for (int i = 0; i < 6; ++i) {
        titles.append(QStringLiteral("Handed over %1").arg(i));
        files.append(makeFile(titles.last()));
    }
    QVERIFY(older.start(files));
    QTRY_COMPARE_WITH_TIMEOUT(struckFaults(), 4, patience);
    stage_.drive.clearFaults();
    titles.append(QStringLiteral("Of the second start"));
    QVERIFY(stage_.startSignedIn({makeFile(titles.last())}));
    QCOMPARE(older.waitForEnd(), 0);
    for (const QString& title : titles)
        QTRY_COMPARE_WITH_TIMEOUT(stage_.countInDrive(title), 1, patience);
    QVERIFY(stage_.quenby.isRunning());
}

void AgentLifeTest::signOutAndInAgain() {
    QVERIFY(stage_.chooseFromWindowMenu({QStringLiteral("o")}));
    const WindowId dialog = stage_.waitForSignInPage();
    QVERIFY(dialog != 0);
    QCOMPARE(stage_.keptSignIn(), QByteArray());
    // The command does not end the program underneath the dialog.
    const QRect strip = stage_.input.geometry(stage_.input.waitForWindow(QStringLiteral("Quenby Status")));
    QVERIFY(stage_.chooseFromItemMenu(strip.center(), {QStringLiteral("q")}));
    QVERIFY(stage_.chooseFromItemMenu(strip.center(), {QStringLiteral("Escape")})); // it is still there, and answers
    QVERIFY(stage_.input.isVisible(dialog));
    QVERIFY(stage_.allowSignIn());
    QVERIFY(stage_.quenby.waitForTrace("account", 2));
    QTRY_VERIFY_WITH_TIMEOUT(!stage_.keptSignIn().isEmpty(), patience);
}

void AgentLifeTest::aKilledProgramLosesNoSetting() {
    QVERIFY(stage_.isSet("showUsegeText=false"));
    QVERIFY(stage_.chooseFromWindowMenu({QStringLiteral("i"), QStringLiteral("u")}));
    QTRY_VERIFY_WITH_TIMEOUT(stage_.isSet("showUsegeText=true"), patience);
    ::kill(static_cast<pid_t>(stage_.quenby.pid()), SIGKILL);
    QCOMPARE(stage_.quenby.waitForEnd(), 128 + SIGKILL);
    QVERIFY(stage_.startSignedIn());
    QCOMPARE(stage_.input.find(QStringLiteral("Sign In")), 0U);
    QVERIFY(stage_.isSet("showUsegeText=true"));
    QCOMPARE(stage_.quenby.terminate(), 0);
}

QTEST_MAIN(AgentLifeTest)
#include "tst_agent_life.moc"
