// The whole report of a signed-in program, on a desktop with a tray, a keyring and a notification service. The local
// Drive plays the provider's.

#include "app/diagnostics/Diagnostics.h"
#include "app/session/AccountDetails.h"
#include "app/session/AccountSession.h"
#include "driveapi/GTLServiceDrive.h"
#include "platform/linux/LinuxPlatform.h"
#include "tests/app/session/KeptGrant.h"

#include <QApplication>
#include <QSignalSpy>
#include <QTest>

using namespace quenby;
using namespace quenby::testing;
using namespace Qt::StringLiterals;

namespace {

constexpr int patiently = 60000; // ms; only a hang takes so long
const QString owner = u"robin.hale@example.com"_s;

} // namespace

class DiagnosticsDesktopTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        QVERIFY2(local_.start(), local_.log().constData());
        platform_ = makeLinuxPlatform(
            {.profile = u"quenby-test"_s, .statusItemPlace = {}, .loginArguments = {}, .startsWithSession = true},
            time_);
        drive_ =
            std::make_unique<DriveConnection>(Endpoints::localDrive(local_.url()), grantedClient(), time_, nullptr);
        session_ = std::make_unique<AccountSession>(AccountSession::Surroundings{
            *drive_, *platform_.keyring, *platform_.defaults, *platform_.webViews, *platform_.opener, nullptr});
        details_ = std::make_unique<AccountDetails>(drive_->driveService(), time_);
    }
    void cleanupTestCase() {
        details_.reset();
        session_.reset();
        platform_ = {};
    }

    void reportOfASignedInProgram() {
        platform_.statusItemHosts->start();
        QTRY_VERIFY_WITH_TIMEOUT(platform_.statusItemHosts->host(), patiently);
        const QByteArray grant = keptGrant(local_, owner);
        signIn(grant);
        if (QTest::currentTestFailed())
            return;

        Diagnostics diagnostics({platform_, *drive_, *session_, *details_, u"0 (test)"_s});
        QString text;
        diagnostics.collect(this, [&text](const QString& collected) { text = collected; });
        QTRY_VERIFY_WITH_TIMEOUT(!text.isEmpty(), patiently);
        for (const char* line :
             {"Place: tray", "Protocol: StatusNotifierItem", "A panel shows items: yes", "Keyring: works",
              "Notifications: works", "Default keyring: open", "Program: dunst", "Drive: of this computer",
              "Signed in: yes", "Can be renewed: yes", "Access: expires in", "Total: "})
            QVERIFY2(text.contains(QStringLiteral("  ") + QString::fromLatin1(line)), qPrintable(text));
        QVERIFY2(!text.contains(u"no answer"_s), qPrintable(text));

        QStringList secrets{owner, owner.section(u'@', 0, 0), local_.url().authority(), QDir::homePath(), u"127.0.0"_s};
        for (const QByteArray& pair : grant.split('&')) {
            if (pair.startsWith("refresh_token=") || pair.startsWith("access_token="))
                secrets.append(QString::fromUtf8(QByteArray::fromPercentEncoding(pair.mid(pair.indexOf('=') + 1))));
        }
        secrets.append(session_->strSHARE());
        for (const QString& secret : secrets)
            QVERIFY2(!secret.isEmpty() && !text.contains(secret), qPrintable(text));
        if (qEnvironmentVariableIsSet("QUENBY_SHOW_REPORT")) // for whoever wants to read one
            qInfo("%s", qPrintable(text));
    }

private:
    void signIn(const QByteArray& grant) {
        const KeyringItem item = itemOf(drive_->endpoints());
        platform_.defaults->setValueForKey(KeychainPersistence::prefsKeyForName(item.serviceName), true);
        std::optional<MaybeError> written;
        platform_.keyring->write(item, grant, this, [&](const MaybeError& error) { written = error; });
        QTRY_VERIFY_WITH_TIMEOUT(written, patiently);
        QVERIFY2(!*written, qPrintable((*written)->description()));
        bool isChecked = false;
        session_->loginCheck(this, [&](const MaybeError&) { isChecked = true; });
        QTRY_VERIFY_WITH_TIMEOUT(isChecked, patiently);
        QVERIFY(session_->isSignedIn());
        QSignalSpy changed(details_.get(), &AccountDetails::changed);
        details_->GetDetailOfUserDrive();
        QTRY_COMPARE_WITH_TIMEOUT(changed.size(), 1, patiently);
    }

    const std::shared_ptr<TimeSource> time_ = makeSystemTimeSource();
    LocalDriveProcess local_;
    PlatformServices platform_;
    std::unique_ptr<DriveConnection> drive_;
    std::unique_ptr<AccountSession> session_;
    std::unique_ptr<AccountDetails> details_;
};

QTEST_MAIN(DiagnosticsDesktopTest)
#include "tst_diagnosticsdesktop.moc"
