// A desktop without a keyring, and none at all: said at once, and nothing hangs.
#include "platform/linux/session/SecretServiceKeyring.h"
#include "tests/platform/contracts/KeyringContract.h"
#include "tests/platform/fakes/FakeKeyring.h"

using namespace quenby;
using namespace quenby::testing;

namespace {

void missingKeyringKeepsItsContract(Keyring& keyring) {
    QVERIFY(!keyring.unavailableBecause().isEmpty());
    KeyringClient client(keyring, QStringLiteral("OAuth"));
    client.read();
    client.write("secret");
    client.remove();
    QVERIFY(client.answers.isEmpty());
    QUENBY_ANSWERS(client, isUnavailable, isUnavailable, isUnavailable);
}

} // namespace

class NoKeyringTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theFakeKeepsTheContract() {
        FakeKeyring fake;
        fake.setState(FakeKeyring::State::missing);
        missingKeyringKeepsItsContract(fake);
    }
    void theKeyringKeepsTheContract() {
        SecretServiceKeyring keyring;
        missingKeyringKeepsItsContract(keyring);
    }
};

QTEST_GUILESS_MAIN(NoKeyringTest)
#include "tst_nokeyring.moc"
