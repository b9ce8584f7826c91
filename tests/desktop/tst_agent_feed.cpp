// The popover of changes in the real program, under a real panel: the ways to open and close it, its rows by pointer
// and keyboard, a file dropped on it, its grip, and what another poll brings, with the notifications of it.
//
// A poll comes half a minute after the one before: one of them is waited for, with all that it has to show.

#include "tests/desktop/support/AgentStage.h"
#include "tests/desktop/support/DesktopLooks.h"
#include "tests/desktop/support/DragSource.h"
#include "tests/localdrive/LocalClient.h"
#include "tests/support/Settled.h"

#include <QApplication>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTest>

#include <algorithm>
#include <csignal>

using namespace quenby::testing;

namespace {

constexpr int patience = QuenbyProcess::patience;

// In the popover under a panel at the lower edge, from its upper edge: the grip, the header and the rows.
constexpr int middleOfGrip = 5;
constexpr int startOfRows = 87;
constexpr QPoint dropTarget(244, 35);
constexpr int rowHeight = 65;

// "TITLE: TEXT" of every notification so far, in alphabetical order. Takes those off the screen that are there.
QStringList notifications() {
    notificationService({QStringLiteral("close-all")});
    const QJsonDocument history = QJsonDocument::fromJson(notificationService({QStringLiteral("history")}));
    QStringList told;
    for (const QJsonValue entry : history[QStringLiteral("data")][0].toArray())
        told.append(entry[QStringLiteral("summary")][QStringLiteral("data")].toString() + QStringLiteral(": ") +
                    entry[QStringLiteral("body")][QStringLiteral("data")].toString().trimmed());
    told.sort();
    return told;
}

} // namespace

class AgentFeedTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init() { stage_.skipAfterFailure(); }
    void cleanup() { stage_.afterTest(); }

    void theItemsMiddleButtonOpensAndCloses();
    void theMenusFirstEntryOpens();
    void theWindowsMenuOpens();
    void aClickBesideItCloses_data();
    void aClickBesideItCloses();
    void theKeyboardOpensAPage();
    void aClickOpensAPage();
    void theKeyboardShares();
    void whatWasThereIsNotNotified() { QCOMPARE(notifications(), QStringList()); }
    void aFileIsDroppedOnIt();
    void theGripStopsAtTheLimits();
    void everyChangeIsToldOnce();
    void theNewestRowIsTheNewestChange();
    void theHeightStays();

private:
    void addFromElsewhere(const QString& title);
    // As the Drive is asked for it.
    QByteArray pageOf(const QString& title);
    QByteArray lastOpenedPage();

    WindowId popover() { return stage_.input.find(QStringLiteral("Quenby Changes"), stage_.quenby.pid()); }
    // Waits for it and for the row with the keys' focus; 0 when it does not come.
    WindowId openedPopover();
    WindowId openPopover() {
        stage_.input.click(trayItem(), DesktopInput::middle);
        return openedPopover();
    }
    bool isClosed(WindowId popover) { return popover != 0 && stage_.input.waitUntilGone(popover); }
    QPoint row(WindowId popover, int number);
    bool showsRow(WindowId popover, int number);
    void pressKeys(const QStringList& keys);
    // Pulls the grip so many pixels up; the height after that.
    int pullGrip(WindowId popover, int pixels, int expectedHeight);

    const QString older_ = QStringLiteral("Older.txt");
    const QString newer_ = QStringLiteral("Newer.txt");
    const QString own_ = QStringLiteral("By the program.txt");
    const QString foreign_ = QStringLiteral("From elsewhere.txt");
    AgentStage stage_;
    int keptHeight_ = 0;
};

// --- The stage ------------------------------------------------------------------------------------------------------

void AgentFeedTest::initTestCase() {
    QVERIFY2(stage_.drive.start(), stage_.drive.log().constData());
    for (const QString& title : {older_, newer_})
        addFromElsewhere(title);
    QVERIFY(stage_.startAndSignIn());
    QVERIFY(settles(isItemSeen, patience));
}

// As another computer of the same person would.
void AgentFeedTest::addFromElsewhere(const QString& title) {
    const LocalClient elsewhere(stage_.drive);
    const QByteArray content = "Not by this program.";
    const QByteArray target = elsewhere.announce(content.size(), title);
    QVERIFY(!target.isEmpty());
    QCOMPARE(elsewhere.put(target, content, 0, content.size()).status, 200);
}

QByteArray AgentFeedTest::pageOf(const QString& title) {
    return "GET /file/d/" + LocalClient(stage_.drive).filesNamed(title).value(0).toUtf8() + "/view 200";
}

QByteArray AgentFeedTest::lastOpenedPage() {
    const QList<QByteArray> lines = stage_.drive.log().split('\n');
    const auto last = std::find_if(lines.rbegin(), lines.rend(),
                                   [](const QByteArray& line) { return line.contains("GET /file/d/"); });
    return last == lines.rend() ? QByteArray() : last->mid(last->indexOf("GET"));
}

WindowId AgentFeedTest::openedPopover() {
    const WindowId opened = stage_.input.waitForWindow(QStringLiteral("Quenby Changes"), stage_.quenby.pid());
    if (opened == 0 || !settles([&] { return showsRow(opened, 0) && showsRow(opened, 1); }, patience))
        return 0;
    return opened;
}

QPoint AgentFeedTest::row(WindowId popover, int number) {
    const QRect place = stage_.input.geometry(popover);
    return {place.center().x(), place.top() + startOfRows + number * rowHeight + rowHeight / 2};
}

// Its name is there, dark on the light ground.
bool AgentFeedTest::showsRow(WindowId popover, int number) {
    const QPoint middle = row(popover, number);
    const QImage picture = QGuiApplication::primaryScreen()
                               ->grabWindow(0, middle.x() - 70, middle.y() - 20, 40, 20)
                               .toImage()
                               .convertToFormat(QImage::Format_Grayscale8);
    const auto isDark = [&](int y) {
        const uchar* const line = picture.constScanLine(y);
        return std::any_of(line, line + picture.width(), [](uchar grey) { return grey < 100; });
    };
    return isDark(picture.height() / 2) && qGray(picture.pixel(0, 0)) > 200;
}

void AgentFeedTest::pressKeys(const QStringList& keys) {
    for (const QString& key : keys)
        stage_.input.key(key);
}

// --- Opening and closing --------------------------------------------------------------------------------------------

void AgentFeedTest::theItemsMiddleButtonOpensAndCloses() {
    const WindowId byMiddle = openPopover();
    QVERIFY(byMiddle != 0);
    stage_.input.click(trayItem(), DesktopInput::middle);
    QVERIFY(isClosed(byMiddle));
}

void AgentFeedTest::theMenusFirstEntryOpens() {
    QVERIFY(stage_.chooseFromItemMenu(trayItem(), {QStringLiteral("Down"), QStringLiteral("Return")}));
    const WindowId byMenu = openedPopover();
    QVERIFY(byMenu != 0);
    stage_.input.key(QStringLiteral("Escape"));
    QVERIFY(isClosed(byMenu));
}

void AgentFeedTest::theWindowsMenuOpens() {
    QVERIFY(stage_.chooseFromWindowMenu({QStringLiteral("c")}));
    const WindowId byMenu = openedPopover();
    QVERIFY(byMenu != 0);
    const WindowId window = stage_.waitForWindow();
    // Outside of it, where the window behind it has nothing to click on.
    const QRect behind = stage_.input.geometry(window);
    stage_.input.click({behind.center().x(), behind.top() + 10});
    QVERIFY(isClosed(byMenu));
    QVERIFY(stage_.input.isVisible(window));
}

// These have no windows that would be activated.
void AgentFeedTest::aClickBesideItCloses_data() {
    QTest::addColumn<bool>("isOnPanel");
    QTest::newRow("on the desktop") << false;
    QTest::newRow("on the panel") << true;
}
void AgentFeedTest::aClickBesideItCloses() {
    QFETCH(bool, isOnPanel);
    const QRect window = stage_.input.geometry(stage_.waitForWindow());
    const int bare = (window.right() + QGuiApplication::primaryScreen()->geometry().right()) / 2;
    QVERIFY(bare > window.right() + 20); // the desktop, beside the window and above the popover
    const QPoint place = isOnPanel ? QPoint(trayItem().x() / 2, trayItem().y()) : QPoint(bare, window.top() + 40);
    const WindowId opened = openPopover();
    QVERIFY(opened != 0);
    stage_.input.click(place);
    QVERIFY(isClosed(opened));
}

// --- Rows -----------------------------------------------------------------------------------------------------------

// The first key only shows where the keyboard is.
void AgentFeedTest::theKeyboardOpensAPage() {
    const WindowId opened = openPopover();
    QVERIFY(opened != 0);
    pressKeys({QStringLiteral("Home"), QStringLiteral("Home"), QStringLiteral("Down"), QStringLiteral("Return")});
    QTRY_COMPARE_WITH_TIMEOUT(lastOpenedPage(), pageOf(older_), patience);
    QVERIFY(isClosed(opened));
}

void AgentFeedTest::aClickOpensAPage() {
    const WindowId opened = openPopover();
    QVERIFY(opened != 0);
    stage_.input.click(row(opened, 0));
    QTRY_COMPARE_WITH_TIMEOUT(lastOpenedPage(), pageOf(newer_), patience);
    QVERIFY(isClosed(opened));
}

void AgentFeedTest::theKeyboardShares() {
    const WindowId opened = openPopover();
    QVERIFY(opened != 0);
    pressKeys({QStringLiteral("Home"), QStringLiteral("Home"), QStringLiteral("Down"), QStringLiteral("shift+Return")});
    const WindowId share = stage_.input.waitForWindow(older_, stage_.quenby.pid());
    QVERIFY(share != 0);
    QVERIFY(isClosed(opened));
    QTRY_VERIFY_WITH_TIMEOUT(stage_.showsPageButton(share), patience);
    QVERIFY(stage_.input.activate(share));
    stage_.input.key(QStringLiteral("Escape"));
    QVERIFY(stage_.input.waitUntilGone(share));
}

// --- The header -----------------------------------------------------------------------------------------------------

// What it comes from is activated by the press, and the popover waits: also when the program hears of all that only
// after the pointer has arrived.
void AgentFeedTest::aFileIsDroppedOnIt() {
    const WindowId opened = openPopover();
    QVERIFY(opened != 0);
    DragSource source({QFile::encodeName(stage_.home.makeFile(own_, "By this program."))});
    const auto program = static_cast<pid_t>(stage_.quenby.pid());
    QCOMPARE(::kill(program, SIGSTOP), 0);
    const bool hasBegun = source.begin();
    source.moveTo(stage_.input.geometry(opened).topLeft() + dropTarget);
    QCOMPARE(::kill(program, SIGCONT), 0);
    QVERIFY(hasBegun);
    QVERIFY(source.waitForAcceptance());
    QTest::qWait(1000); // longer than the toolkit hesitates to believe that the keys are elsewhere
    QVERIFY(stage_.input.isVisible(opened));
    QCOMPARE(source.drop(), Qt::CopyAction);
    QTRY_COMPARE_WITH_TIMEOUT(notifications().size(), 1, patience);
    QVERIFY(stage_.input.isVisible(opened));
    stage_.input.key(QStringLiteral("Escape"));
    QVERIFY(isClosed(opened));
}

// --- The grip -------------------------------------------------------------------------------------------------------

int AgentFeedTest::pullGrip(WindowId popover, int pixels, int expectedHeight) {
    const QRect before = stage_.input.geometry(popover);
    const QPoint grip(before.center().x(), before.top() + middleOfGrip);
    stage_.input.moveTo(grip);
    stage_.input.press();
    for (int step = 1; step <= 4; ++step)
        stage_.input.moveTo(grip - QPoint(0, pixels * step / 4));
    QRect after;
    (void)QTest::qWaitFor([&] { return (after = stage_.input.geometry(popover)).height() == expectedHeight; },
                          patience);
    stage_.input.release();
    return after.bottom() == before.bottom() ? after.height() : -1;
}

// What another poll will bring goes on its way before: nobody has to wait for all of it.
void AgentFeedTest::theGripStopsAtTheLimits() {
    addFromElsewhere(foreign_);
    const WindowId opened = openPopover();
    QVERIFY(opened != 0);
    QCOMPARE(pullGrip(opened, 300, 550), 550);
    QCOMPARE(pullGrip(opened, -400, 250), 250);
    keptHeight_ = 310;
    QCOMPARE(pullGrip(opened, 60, keptHeight_), keptHeight_);
    stage_.input.key(QStringLiteral("Escape"));
    QVERIFY(isClosed(opened));
}

// --- Another poll ---------------------------------------------------------------------------------------------------

void AgentFeedTest::everyChangeIsToldOnce() {
    const QString update = QStringLiteral("Quenby New Update!: %1 added");
    QTRY_VERIFY_WITH_TIMEOUT(notifications().contains(update.arg(foreign_)), patience);
    // All of a poll is told at once: a second one of the own file would be there with the other's.
    const auto areAllTold = [&] { return notifications() == (QStringList{update.arg(own_), update.arg(foreign_)}); };
    QVERIFY2(settles(areAllTold), qPrintable(notifications().join(QLatin1Char('\n'))));
}

void AgentFeedTest::theNewestRowIsTheNewestChange() {
    const WindowId opened = openPopover();
    QVERIFY(opened != 0);
    stage_.input.click(row(opened, 0));
    QTRY_COMPARE_WITH_TIMEOUT(lastOpenedPage(), pageOf(foreign_), patience);
}

void AgentFeedTest::theHeightStays() {
    QCOMPARE(stage_.quenby.terminate(), 0);
    QVERIFY(settles([] { return !isItemSeen(); }, patience));
    QVERIFY(stage_.startSignedIn());
    QVERIFY(settles(isItemSeen, patience));
    const WindowId opened = openPopover();
    QVERIFY(opened != 0);
    QCOMPARE(stage_.input.geometry(opened).height(), keptHeight_);
}

QTEST_MAIN(AgentFeedTest)
#include "tst_agent_feed.moc"
