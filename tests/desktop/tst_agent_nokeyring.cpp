// A desktop without a keyring, and one without even a session bus: the program says so where the sign-in would be kept,
// works until it ends, and never writes the sign-in into a file instead.

#include "tests/desktop/support/AgentStage.h"

#include <QApplication>
#include <QDirIterator>
#include <QFile>
#include <QTest>

using namespace quenby::testing;

namespace {

constexpr int patience = QuenbyProcess::patience;

} // namespace

class AgentWithoutKeyringTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY2(stage_.drive.start(), stage_.drive.log().constData()); }
    void init() { stage_.skipAfterFailure(); }
    void cleanup() { stage_.afterTest(); }

    void aSignInThatWasKeptCannotBeRead();
    void aSignInHoldsUntilTheEnd();
    void nothingSecretIsInAnyFile();

private:
    AgentStage stage_;
};

void AgentWithoutKeyringTest::aSignInThatWasKeptCannotBeRead() {
    stage_.home.makeFile(QStringLiteral("config/quenby/quenby-local.ini"),
                         "[General]\nOAuth2%3A%20Drive%3A%20Local%20Drive=true\n");
    QVERIFY(stage_.quenby.start());
    QVERIFY(stage_.waitForWindow() != 0);
    QTRY_VERIFY_WITH_TIMEOUT(stage_.quenby.errors().contains("try again"), patience);
    QCOMPARE(stage_.input.find(QStringLiteral("Sign In")), 0U);
}

void AgentWithoutKeyringTest::aSignInHoldsUntilTheEnd() {
    QVERIFY(stage_.input.activate(stage_.waitForWindow()));
    stage_.input.key(QStringLiteral("alt+s"));
    QVERIFY(stage_.allowSignIn());
    QVERIFY(stage_.dismissAlert()); // that it could not be kept
    QVERIFY(stage_.quenby.waitForTrace("account"));
    QVERIFY(stage_.quenby.waitForTrace("gauge"));
    const QString title = QStringLiteral("Without a keyring");
    const QString path = stage_.home.makeFile(title, "It works.");
    QVERIFY(stage_.chooseFromWindowMenu({QStringLiteral("u")}));
    QVERIFY(stage_.fillPanel(QStringLiteral("Upload File"), path));
    QTRY_COMPARE_WITH_TIMEOUT(stage_.countInDrive(title), 1, patience);
}

void AgentWithoutKeyringTest::nothingSecretIsInAnyFile() {
    const auto search = [this] {
        const QStringList secrets = stage_.drive.secrets();
        QVERIFY(secrets.size() > 1);
        int files = 0;
        QDirIterator entries(stage_.home.path({}), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (entries.hasNext()) {
            QFile file(entries.next());
            if (!file.open(QIODevice::ReadOnly))
                continue;
            const QByteArray bytes = file.readAll();
            for (const QString& secret : secrets)
                QVERIFY2(!bytes.contains(secret.toUtf8()), qPrintable(file.fileName()));
            ++files;
        }
        QVERIFY(files > 1);
    };
    search();
    QCOMPARE(stage_.quenby.terminate(), 0);
    search();
    for (const QString& secret : stage_.drive.secrets())
        QVERIFY(!stage_.quenby.errors().contains(secret.toUtf8()));
    // The next start asks again.
    QVERIFY(stage_.quenby.start());
    QVERIFY(stage_.waitForSignInPage() != 0);
    QCOMPARE(stage_.quenby.terminate(), 0);
}

QTEST_MAIN(AgentWithoutKeyringTest)
#include "tst_agent_nokeyring.moc"
