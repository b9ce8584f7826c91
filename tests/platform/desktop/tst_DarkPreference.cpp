// The palette follows what the desktop's portal tells; the portal is played here, on the real bus.
#include "platform/linux/desktop/DarkPreference.h"
#include "platform/linux/desktop/Surrounding.h"

#include <QApplication>
#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QTest>

using namespace quenby;

namespace {

const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString appearance = QStringLiteral("org.freedesktop.appearance");
const QString colourScheme = QStringLiteral("color-scheme");
constexpr uint noPreference = 0;
constexpr uint preferDark = 1;

bool isAppDark() { return isDark(QApplication::palette()); }

} // namespace

class Portal : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

public:
    bool answersAtOnce = true;
    uint scheme = preferDark;
    int questions = 0;

    void tell(const QString& group, const QString& key, uint value) {
        Q_EMIT SettingChanged(group, key, wrapped(value));
    }
    // The answer to the question that was left waiting.
    void answer(uint value) { bus_.send(question_.createReply(QVariant::fromValue(twiceWrapped(value)))); }

Q_SIGNALS:
    Q_SCRIPTABLE void SettingChanged(const QString& group, const QString& key, const QDBusVariant& value);

public Q_SLOTS:
    Q_SCRIPTABLE QDBusVariant Read(const QString& group, const QString& key) {
        ++questions;
        question_ = message();
        setDelayedReply(!answersAtOnce);
        return group == appearance && key == colourScheme ? twiceWrapped(scheme) : QDBusVariant(QString());
    }

public:
    Portal()
        : bus_(QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("portal"))) {
        bus_.registerObject(portalPath, this, QDBusConnection::ExportScriptableContents);
        bus_.registerService(QStringLiteral("org.freedesktop.portal.Desktop"));
    }
    ~Portal() override { QDBusConnection::disconnectFromBus(QStringLiteral("portal")); }

private:
    static QDBusVariant wrapped(uint value) { return QDBusVariant(value); }
    static QDBusVariant twiceWrapped(uint value) { return QDBusVariant(QVariant::fromValue(wrapped(value))); }

    QDBusConnection bus_;
    QDBusMessage question_;
};

class tst_DarkPreference : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { QApplication::setPalette(QPalette()); }

    void followsTheDesktopThereAndBack() {
        Portal portal;
        const DarkPreference preference;
        QVERIFY(!isAppDark()); // nobody waited for the answer
        QTRY_VERIFY_WITH_TIMEOUT(isAppDark(), 20'000);
        QCOMPARE(portal.questions, 1);
        portal.tell(appearance, QStringLiteral("accent-color"), noPreference);
        portal.tell(QStringLiteral("org.gnome.desktop.interface"), colourScheme, noPreference);
        QVERIFY(arrivedSoFar());
        QVERIFY(isAppDark());
        portal.tell(appearance, colourScheme, noPreference);
        QTRY_VERIFY_WITH_TIMEOUT(!isAppDark(), 20'000);
        portal.tell(appearance, colourScheme, preferDark);
        QTRY_VERIFY_WITH_TIMEOUT(isAppDark(), 20'000);
    }

    void aChangeIsNewerThanALateAnswer() {
        Portal portal;
        portal.answersAtOnce = false;
        const DarkPreference preference;
        QTRY_COMPARE_WITH_TIMEOUT(portal.questions, 1, 20'000);
        portal.tell(appearance, colourScheme, preferDark);
        QTRY_VERIFY_WITH_TIMEOUT(isAppDark(), 20'000);
        portal.answer(noPreference);
        portal.answersAtOnce = true;
        QVERIFY(arrivedSoFar());
        QVERIFY(isAppDark());
    }

    void aDarkPaletteOfTheDesktopsOwnIsLeftAlone() {
        const QColor own(20, 30, 40);
        const auto brightness = [](QPalette::ColorRole role) {
            return qGray(QApplication::palette().color(role).rgb());
        };
        QApplication::setPalette(QPalette(Qt::white, own, own, own, own, Qt::white, own));
        Portal portal;
        const DarkPreference preference;
        for (const uint scheme : {preferDark, noPreference}) {
            QVERIFY(arrivedSoFar());
            QCOMPARE(QApplication::palette().color(QPalette::Window), own);
            QVERIFY(brightness(QPalette::Link) > brightness(QPalette::Window) + 60); // is dark blue by itself
            portal.tell(appearance, colourScheme, scheme);
        }
        QVERIFY(arrivedSoFar());
        QCOMPARE(QApplication::palette().color(QPalette::Window), own);
    }

private:
    // The portal's words arrive in the order in which it said them: with the answer to this, all before it are here.
    static bool arrivedSoFar() {
        QDBusMessage question =
            QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.portal.Desktop"), portalPath,
                                           QStringLiteral("org.freedesktop.portal.Settings"), QStringLiteral("Read"));
        question << QString() << QString();
        const QDBusPendingCall call = QDBusConnection::sessionBus().asyncCall(question);
        return QTest::qWaitFor([&call] { return call.isFinished(); }, 20'000) && !call.isError();
    }
};

QTEST_MAIN(tst_DarkPreference)
#include "tst_DarkPreference.moc"
