// The program with its status item in a real panel: sign-in, menu, uploads, notifications and the share window, all by
// pointer and keyboard. Runs under a panel with StatusNotifierItem and under one with XEmbed.

#include "tests/desktop/support/AgentStage.h"
#include "tests/desktop/support/DesktopLooks.h"
#include "tests/support/Settled.h"

#include <QApplication>
#include <QClipboard>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTest>

using namespace quenby::testing;

namespace {

constexpr int patience = QuenbyProcess::patience;

// Title and text of the notification that was closed last.
QStringList lastInHistory() {
    const QJsonDocument history = QJsonDocument::fromJson(notificationService({QStringLiteral("history")}));
    const QJsonObject last = history[QStringLiteral("data")][0][0].toObject();
    return {last[QStringLiteral("summary")][QStringLiteral("data")].toString(),
            last[QStringLiteral("body")][QStringLiteral("data")].toString()};
}

} // namespace

class AgentTrayTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init() { stage_.skipAfterFailure(); }
    void cleanup() { stage_.afterTest(); }

    void signInByThePage();
    void uploadFromTheMenu();
    void theNotificationsButtonOpensThePage();
    void theNotificationsButtonCopiesTheLink();
    void leftClickRaisesTheWindow();
    void uploadAndShare();
    void quitFromTheMenu();

private:
    QString openedPages() const {
        QFile file(openedPages_);
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }
    QRect noticeOnScreen();
    // How the addresses of the local Drive's files begin.
    QString filePages() const { return stage_.drive.url().toString() + QStringLiteral("/file/d/"); }

    const bool hasDunst_ = QByteArray(QUENBY_TEST_NOTIFICATIONS) == "dunst";
    AgentStage stage_;
    QString openedPages_; // what stands for the browser notes here
};

void AgentTrayTest::initTestCase() {
    openedPages_ = stage_.home.path(QStringLiteral("opened-pages"));
    const QString browser = stage_.home.makeFile(QStringLiteral("bin/xdg-open"),
                                                 "#!/bin/sh\necho \"$1\" >>'" + openedPages_.toUtf8() + "'\n");
    QVERIFY(QFile::setPermissions(browser, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    QProcessEnvironment& environment = stage_.home.environment();
    environment.insert(QStringLiteral("PATH"),
                       stage_.home.path(QStringLiteral("bin:")) + environment.value(QStringLiteral("PATH")));
    QVERIFY2(stage_.drive.start(), stage_.drive.log().constData());
    QVERIFY(stage_.startAndSignIn());
}

void AgentTrayTest::signInByThePage() {
    QVERIFY(stage_.quenby.waitForTrace("gauge"));
    QVERIFY(settles(isItemSeen, patience));
    QTRY_VERIFY_WITH_TIMEOUT(!stage_.keptSignIn().isEmpty(), patience);
    QCOMPARE(stage_.alert(), 0U);
}

void AgentTrayTest::uploadFromTheMenu() {
    const QString title = QStringLiteral("From the menu.txt");
    const QString path = stage_.home.makeFile(title, "Chosen in the panel.");
    QVERIFY(stage_.chooseFromItemMenu(trayItem(), {QStringLiteral("u")}));
    QVERIFY(stage_.fillPanel(QStringLiteral("Upload File"), path));
    QTRY_COMPARE_WITH_TIMEOUT(stage_.countInDrive(title), 1, patience);
}

void AgentTrayTest::theNotificationsButtonOpensThePage() {
    if (!hasDunst_)
        QSKIP("This notification service has no command for its buttons.");
    QTRY_COMPARE_WITH_TIMEOUT(notificationService({QStringLiteral("count"), QStringLiteral("displayed")}), "1",
                              patience);
    notificationService({QStringLiteral("action")});
    QTRY_VERIFY_WITH_TIMEOUT(openedPages().startsWith(filePages()), patience);
    notificationService({QStringLiteral("close-all")});
    QTRY_COMPARE_WITH_TIMEOUT(
        lastInHistory(), (QStringList{QStringLiteral("Quenby New Update!"), QStringLiteral("From the menu.txt added")}),
        patience);
}

void AgentTrayTest::theNotificationsButtonCopiesTheLink() {
    if (hasDunst_)
        QSKIP("This notification service shows no buttons.");
    QRect notice;
    QTRY_VERIFY_WITH_TIMEOUT(!(notice = noticeOnScreen()).isEmpty(), patience);
    // The last button, in the lower right corner.
    stage_.input.click(notice.bottomRight() - QPoint(40, 30));
    QTRY_VERIFY_WITH_TIMEOUT(QGuiApplication::clipboard()->text().startsWith(filePages()), patience);
}

// Notifications come up in the screen's upper right corner, where nothing else is.
QRect AgentTrayTest::noticeOnScreen() {
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    for (const WindowId window : stage_.input.topWindows()) {
        const QRect place = stage_.input.geometry(window);
        if (place.left() > screen.center().x() && place.bottom() < screen.center().y())
            return place;
    }
    return {};
}

void AgentTrayTest::leftClickRaisesTheWindow() {
    const WindowId window = stage_.waitForWindow();
    QVERIFY(stage_.input.activate(window));
    stage_.input.key(QStringLiteral("ctrl+w"));
    QVERIFY(stage_.input.waitUntilGone(window));
    QVERIFY(stage_.quenby.isRunning());
    stage_.input.click(trayItem());
    QVERIFY(stage_.waitForWindow() != 0);
}

void AgentTrayTest::uploadAndShare() {
    const QString title = QStringLiteral("For others.txt");
    const QString path = stage_.home.makeFile(title, "For others, too.");
    QVERIFY(stage_.chooseFromItemMenu(trayItem(), {QStringLiteral("l")}));
    QVERIFY(stage_.fillPanel(QStringLiteral("Upload & Share File"), path));
    const WindowId share = stage_.input.waitForWindow(title, stage_.quenby.pid());
    QVERIFY(share != 0);
    QTRY_VERIFY_WITH_TIMEOUT(stage_.showsPageButton(share), patience);
    QVERIFY(stage_.input.activate(share));
    stage_.input.key(QStringLiteral("Escape"));
    QVERIFY(stage_.input.waitUntilGone(share));
    QCOMPARE(stage_.countInDrive(title), 1);
}

void AgentTrayTest::quitFromTheMenu() {
    QVERIFY(stage_.chooseFromItemMenu(trayItem(), {QStringLiteral("q")}));
    QCOMPARE(stage_.quenby.waitForEnd(), 0);
}

QTEST_MAIN(AgentTrayTest)
#include "tst_agent_tray.moc"
