// What the report tells of the session bus: a real keyring and a real notification service, a portal that the test
// plays, and a tray that never answers.

#include "app/diagnostics/BusFacts.h"
#include "tests/platform/portal/FakePortal.h"
#include "tests/support/ManualTimeSource.h"

#include <QDBusReply>
#include <QTest>

using namespace quenby;
using namespace quenby::testing;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

// Takes every call, and never says anything.
class SilentService : public QDBusVirtualObject {
public:
    explicit SilentService(const QString& name)
        : bus_(QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"silent"_s)) {
        bus_.registerVirtualObject(u"/"_s, this, QDBusConnection::SubPath);
        bus_.registerService(name);
    }
    ~SilentService() override { QDBusConnection::disconnectFromBus(u"silent"_s); }

    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage&, const QDBusConnection&) override { return true; }

private:
    QDBusConnection bus_;
};

void lockKeyring() {
    QDBusMessage lock = QDBusMessage::createMethodCall(u"org.freedesktop.secrets"_s, u"/org/freedesktop/secrets"_s,
                                                       u"org.freedesktop.Secret.Service"_s, u"Lock"_s);
    lock << QVariant::fromValue(
        QList<QDBusObjectPath>{QDBusObjectPath(u"/org/freedesktop/secrets/collection/login"_s)});
    QCOMPARE(QDBusConnection::sessionBus().call(lock).type(), QDBusMessage::ReplyMessage);
}

} // namespace

class BusFactsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        time_ = std::make_shared<ManualTimeSource>();
        facts_ = std::make_unique<BusFacts>(QDBusConnection::sessionBus(), time_);
        isDone_ = false;
    }
    void cleanup() { facts_.reset(); }

    void servicesThatRun() {
        FakePortal portal;
        facts_->ask([this] { isDone_ = true; });
        QVERIFY(!isDone_);
        QTRY_VERIFY(isDone_);
        QCOMPARE(time_->pendingTimers(), 0U);
        QCOMPARE(line("Portals", "Service"), u"running"_s);
        QCOMPARE(line("Portals", "ScreenCast"), u"version 4"_s);
        QCOMPARE(line("Portals", "Screenshot"), u"version 2"_s);
        QCOMPARE(line("Portals", "FileChooser"), u"not offered"_s);
        QCOMPARE(line("Secret Service", "Default keyring"), u"open"_s);
        const QString program = line("Notification service", "Program");
        QVERIFY2(program.startsWith(u"dunst "_s) && program.size() > 6, qPrintable(program));
        QCOMPARE(line("Trays", "Service"), u"not there"_s);
    }

    void oneThatNeverAnswersHoldsUpNothing() {
        const SilentService tray(u"org.kde.StatusNotifierWatcher"_s);
        facts_->ask([this] { isDone_ = true; });
        QTRY_COMPARE(line("Secret Service", "Default keyring"), u"open"_s);
        QTRY_VERIFY(line("Notification service", "Program").startsWith(u"dunst"_s));
        time_->advance(2999ms);
        QCoreApplication::processEvents();
        QVERIFY(!isDone_);
        time_->advance(1ms);
        QTRY_VERIFY(isDone_);
        QCOMPARE(line("Trays", "Service"), u"running"_s);
        QCOMPARE(line("Trays", "A panel shows items"), u"no answer"_s);
        QCOMPARE(line("Portals", "Service"), u"not there"_s);
    }

    void lockedKeyringIsNotUnlocked() {
        lockKeyring();
        facts_->ask([this] { isDone_ = true; });
        QTRY_VERIFY(isDone_);
        QCOMPARE(line("Secret Service", "Default keyring"), u"locked"_s);
    }

private:
    QString line(const char* title, const char* what) const {
        for (const DiagnosticsSection& section : facts_->sections()) {
            if (section.title != QString::fromLatin1(title))
                continue;
            for (const auto& [name, how] : section.lines) {
                if (name == QString::fromLatin1(what))
                    return how;
            }
        }
        return u"no such line"_s;
    }

    std::shared_ptr<ManualTimeSource> time_;
    std::unique_ptr<BusFacts> facts_;
    bool isDone_ = false;
};

QTEST_MAIN(BusFactsTest)
#include "tst_busfacts.moc"
