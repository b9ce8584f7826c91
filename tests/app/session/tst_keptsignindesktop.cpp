// A command's session on the settings file and the keyring that the program really uses. The local Drive plays the
// provider's.

#include "app/cli/Console.h"
#include "app/cli/KeptSignIn.h"
#include "app/cli/Session.h"
#include "platform/linux/LinuxPlatform.h"
#include "tests/app/session/KeptGrant.h"

#include <QTest>

using namespace quenby;
using namespace quenby::testing;
using namespace Qt::StringLiterals;

namespace {

constexpr int patiently = 60000; // ms; only a hang takes so long

} // namespace

class KeptSignInDesktopTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // What one program keeps, the next one finds, a changed token included.
    void keptByOneFoundByTheNext() {
        QVERIFY2(local_.start(), local_.log().constData());
        const Endpoints endpoints = Endpoints::localDrive(local_.url());
        const QByteArray kept = keptGrant(local_, u"ann@example.com"_s);
        {
            const AccountStorage storage = makeLinuxAccountStorage(profile_);
            storage.defaults->setValueForKey(u"clientID"_s, grantedClient().clientID);
            storage.defaults->setValueForKey(u"clientSecret"_s, grantedClient().clientSecret);
            storage.defaults->setValueForKey(KeychainPersistence::prefsKeyForName(endpoints.keychainItemName), true);
            std::optional<MaybeError> written;
            storage.keyring->write(itemOf(endpoints), kept, this, [&](const MaybeError& error) { written = error; });
            QTRY_VERIFY_WITH_TIMEOUT(written, patiently);
            QVERIFY2(!*written, qPrintable((*written)->description()));
        }
        for (const QString& token : {u"second"_s, u"third"_s}) {
            Session session(console_, {}, {endpoints, [this] { return makeLinuxAccountStorage(profile_); }},
                            makeSystemTimeSource());
            std::optional<MaybeError> opened;
            session.open(this, [&](const MaybeError& error) { opened = error; });
            QTRY_VERIFY_WITH_TIMEOUT(opened, patiently);
            if (token == u"third"_s) { // the one that was found is the second, which the Drive does not know
                QVERIFY(*opened && (*opened)->description().contains(u"no longer accepts"_s));
                return;
            }
            QVERIFY2(!*opened, qPrintable((*opened)->description()));
            QCOMPARE(session.authentication()->userEmail(), u"ann@example.com"_s);
            session.authentication()->setAccessToken({}); // so that the next one has to ask for one
            session.authentication()->setKeysForResponseDictionary({{u"refresh_token"_s, token}});
            bool isClosed = false;
            session.close(this, [&] { isClosed = true; });
            QTRY_VERIFY_WITH_TIMEOUT(isClosed, patiently);
        }
    }

private:
    const QString profile_ = u"quenby-test"_s;
    LocalDriveProcess local_;
    Console console_{Console::Settings{}};
};

QTEST_GUILESS_MAIN(KeptSignInDesktopTest)
#include "tst_keptsignindesktop.moc"
