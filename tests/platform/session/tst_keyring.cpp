// The keyring as it is on a desktop: with its window that asks for the password, and with a service that dies.
#include "platform/linux/session/SecretServiceKeyring.h"
#include "tests/platform/contracts/KeyringContract.h"
#include "tests/platform/desktop/VirtualDesktop.h"
#include "tests/platform/fakes/FakeKeyring.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDir>
#include <QDirIterator>

using namespace quenby;
using namespace quenby::testing;

namespace {

const QString secrets = QStringLiteral("org.freedesktop.secrets");
const QString secretsPath = QStringLiteral("/org/freedesktop/secrets");

// On a connection of its own, so that the program's own event loop has no part in it.
QDBusMessage callService(const QString& service, const QString& path, const QString& interface, const QString& method,
                         const QVariantList& arguments) {
    QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(arguments);
    QDBusConnection bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("test"));
    return bus.call(message);
}

QList<QDBusObjectPath> loginCollection() {
    return {QDBusObjectPath(secretsPath + QStringLiteral("/collection/login"))};
}

void lock() {
    callService(secrets, secretsPath, QStringLiteral("org.freedesktop.Secret.Service"), QStringLiteral("Lock"),
                {QVariant::fromValue(loginCollection())});
}

// The window that asks for the password; empty when there is none.
QString questionWindow() {
    const QByteArray windows =
        outputOf(QStringLiteral("xdotool"), {QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                                             QStringLiteral("--name"), QStringLiteral("^Unlock")});
    return QString::fromLatin1(windows.split('\n').value(0));
}

// Waits for the window, and uses its keys until it has gone.
void answerQuestion(const QStringList& keys) {
    QVERIFY(QTest::qWaitFor([] { return !questionWindow().isEmpty(); }, keyringPatience));
    const auto hasGone = [&] {
        const QString window = questionWindow();
        if (window.isEmpty())
            return true;
        useInput(QStringLiteral("windowfocus ") + window);
        for (const QString& key : keys)
            useInput(key);
        // A second attempt only after the window had its time.
        return QTest::qWaitFor([] { return questionWindow().isEmpty(); }, 2000);
    };
    QVERIFY(QTest::qWaitFor(hasGone, keyringPatience));
}

QStringList typedPassword() {
    return {QStringLiteral("key ctrl+a"),
            QStringLiteral("type ") + qEnvironmentVariable("QUENBY_DESKTOP_KEYRING_PASSWORD"),
            QStringLiteral("key Return")};
}

void unlockElsewhere() {
    const QDBusMessage reply = callService(secrets, secretsPath, QStringLiteral("org.freedesktop.Secret.Service"),
                                           QStringLiteral("Unlock"), {QVariant::fromValue(loginCollection())});
    const auto prompt = reply.arguments().value(1).value<QDBusObjectPath>();
    callService(secrets, prompt.path(), QStringLiteral("org.freedesktop.Secret.Prompt"), QStringLiteral("Prompt"),
                {QString()});
    answerQuestion(typedPassword());
}

} // namespace

class KeyringTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        // The window is started by the bus, which must know the screen.
        QDBusArgument environment;
        environment.beginMap(QMetaType(QMetaType::QString), QMetaType(QMetaType::QString));
        environment.beginMapEntry();
        environment << QStringLiteral("DISPLAY") << qEnvironmentVariable("DISPLAY");
        environment.endMapEntry();
        environment.endMap();
        callService(QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
                    QStringLiteral("org.freedesktop.DBus"), QStringLiteral("UpdateActivationEnvironment"),
                    {QVariant::fromValue(environment)});
    }

    void theFakeKeepsTheContract() {
        FakeKeyring fake;
        keyringKeepsItsContract(fake);
        const auto unlocks = [&] { fake.setState(FakeKeyring::State::available); };
        lockedKeyringKeepsItsContract(fake, {[&] { fake.setState(FakeKeyring::State::locked); },
                                             [&] { fake.dismissUnlock(); }, unlocks, unlocks});
    }

    void theKeyringKeepsTheContract() {
        SecretServiceKeyring keyring;
        keyringKeepsItsContract(keyring);
    }

    void theLockedKeyringKeepsTheContract() {
        SecretServiceKeyring keyring;
        lockedKeyringKeepsItsContract(keyring, {lock, [] { answerQuestion({QStringLiteral("key Escape")}); },
                                                [] { answerQuestion(typedPassword()); }, unlockElsewhere});
    }

    // Nothing that was stored can be read from any file below the home folder.
    void nothingIsStoredInPlainText() {
        SecretServiceKeyring keyring;
        KeyringClient client(keyring, QStringLiteral("OAuth"));
        client.write("extraordinary secret");
        QUENBY_ANSWERS(client, "done");
        int files = 0;
        QDirIterator entries(QDir::homePath(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (entries.hasNext()) {
            QFile file(entries.next());
            QVERIFY(file.open(QIODevice::ReadOnly));
            const QByteArray bytes = file.readAll();
            QVERIFY2(!bytes.contains("extraordinary secret"), qPrintable(file.fileName()));
            QVERIFY2(!bytes.contains(QByteArray("extraordinary secret").toBase64()), qPrintable(file.fileName()));
            ++files;
        }
        QVERIFY(files > 0);
        client.remove();
        QUENBY_ANSWERS(client, "done");
    }

    // The service dies while an operation waits for it: at once, in the middle of the question for the password, or
    // without an answer. What comes after it works again.
    void aServiceThatDies_data() {
        QTest::addColumn<bool>("isAsking");
        QTest::newRow("while it asks for the password") << true;
        QTest::newRow("while it hangs") << false;
    }
    void aServiceThatDies() {
        QFETCH(bool, isAsking);
        SecretServiceKeyring keyring;
        KeyringClient client(keyring, QStringLiteral("OAuth"));
        QSignalSpy available(&keyring, &Keyring::becameAvailable);
        client.write("survives");
        QUENBY_ANSWERS(client, "done");
        if (isAsking)
            lock();
        else
            ::kill(process_, SIGSTOP);
        client.read();
        client.remove();
        if (isAsking)
            QTRY_VERIFY_WITH_TIMEOUT(!questionWindow().isEmpty(), keyringPatience);
        QCOMPARE(client.answers, QByteArrayList());
        ::kill(process_, SIGKILL);
        QUENBY_ANSWERS(client, isUnavailable, isUnavailable);
        QVERIFY(!keyring.unavailableBecause().isEmpty());

        available.clear();
        process_ = outputOf(QStringLiteral(QUENBY_DESKTOP_SCRIPTS "/start.sh"),
                            {QStringLiteral("keyring"), QStringLiteral("unlocked")})
                       .toInt();
        QVERIFY(process_ > 0);
        QTRY_VERIFY_WITH_TIMEOUT(!available.isEmpty(), keyringPatience);
        QCOMPARE(keyring.unavailableBecause(), QString());
        client.read();
        client.remove();
        QUENBY_ANSWERS(client, "survives", "done");
    }

private:
    pid_t process_ = qEnvironmentVariableIntValue("QUENBY_DESKTOP_KEYRING_PID");
};

QTEST_GUILESS_MAIN(KeyringTest)
#include "tst_keyring.moc"
