// The program where there is no tray and no notification service: the strip, with files dropped onto it and onto the
// window's drop view by a real drag.

#include "tests/desktop/support/AgentStage.h"
#include "tests/desktop/support/DragSource.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTest>

using namespace quenby::testing;

namespace {

constexpr int patience = QuenbyProcess::patience;

} // namespace

class AgentStripTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init() { stage_.skipAfterFailure(); }
    void cleanup() { stage_.afterTest(); }

    void theStripShowsGaugeAndText();
    void aFileAndAFolderAreDropped();
    void aFolderAloneIsRefused();
    void filesAreDroppedOntoTheWindow();
    void leftClickRaisesTheWindow();
    void theMenuChangesWhatTheStripShows();
    void quitFromTheMenu();

private:
    QRect strip() { return stage_.input.geometry(stage_.input.find(QStringLiteral("Quenby Status"))); }
    QPoint dropView() {
        const QRect window = stage_.input.geometry(stage_.waitForWindow());
        return {window.right() - 160, window.top() + window.height() * 3 / 8}; // in the side panel
    }

    AgentStage stage_;
    QByteArray folder_;
};

void AgentStripTest::initTestCase() {
    stage_.home.makeFile(QStringLiteral("config/quenby/quenby-local.ini"),
                         "[General]\nshowMenubarIcon=true\nshowUsegeText=true\n");
    folder_ = QFile::encodeName(stage_.home.path(QStringLiteral("a folder")));
    QVERIFY(QDir().mkpath(QFile::decodeName(folder_)));
    QVERIFY2(stage_.drive.start(), stage_.drive.log().constData());
    QVERIFY(stage_.startAndSignIn());
}

void AgentStripTest::theStripShowsGaugeAndText() {
    QVERIFY(stage_.quenby.waitForTrace("gauge"));
    // The text is much wider than the gauge, which is about as wide as it is high.
    QTRY_VERIFY_WITH_TIMEOUT(strip().width() > 2 * strip().height(), patience);
}

void AgentStripTest::aFileAndAFolderAreDropped() {
    const QString title = QStringLiteral("Dropped on the strip.txt");
    const QByteArray file = QFile::encodeName(stage_.home.makeFile(title, "Dropped."));
    DragSource source({folder_, file});
    QVERIFY(source.dropAt(strip().center()));
    QTRY_COMPARE_WITH_TIMEOUT(stage_.countInDrive(title), 1, patience);
    // The folder can't be uploaded, which an alert says without stopping the file.
    QVERIFY(stage_.detailsOfAlert().contains(QStringLiteral("a folder: ")));
    QVERIFY(stage_.dismissAlert());
    QCOMPARE(stage_.countInDrive(QStringLiteral("a folder")), 0);
}

void AgentStripTest::aFolderAloneIsRefused() {
    for (const QPoint& target : {strip().center(), dropView()}) {
        DragSource source({folder_}, {20, 700});
        QVERIFY(source.begin());
        for (const QPoint& step : {QPoint(-3, 0), QPoint(3, 2), QPoint(0, 0)})
            source.moveTo(target + step);
        QCOMPARE(source.drop(), Qt::IgnoreAction);
    }
    QCOMPARE(stage_.alert(), 0U);
}

void AgentStripTest::filesAreDroppedOntoTheWindow() {
    const QString title = QStringLiteral("Dropped on the window");
    QList<QByteArray> files;
    for (int i = 0; i < 3; ++i)
        files.append(QFile::encodeName(stage_.home.makeFile(QStringLiteral("drop/%1/").arg(i) + title, "Dropped.")));
    DragSource source(files);
    QVERIFY(source.dropAt(dropView()));
    QTRY_COMPARE_WITH_TIMEOUT(stage_.countInDrive(title), 3, patience);
}

void AgentStripTest::leftClickRaisesTheWindow() {
    const WindowId window = stage_.waitForWindow();
    QVERIFY(stage_.input.activate(window));
    stage_.input.key(QStringLiteral("ctrl+w"));
    QVERIFY(stage_.input.waitUntilGone(window));
    stage_.input.click(strip().center());
    QVERIFY(stage_.waitForWindow() != 0);
}

void AgentStripTest::theMenuChangesWhatTheStripShows() {
    QVERIFY(stage_.chooseFromItemMenu(strip().center(), {QStringLiteral("i"), QStringLiteral("u")}));
    QTRY_VERIFY_WITH_TIMEOUT(strip().width() < 2 * strip().height(), patience);
    QTRY_VERIFY_WITH_TIMEOUT(stage_.isSet("showUsegeText=false"), patience);
    QVERIFY(stage_.isSet("showMenubarIcon=true"));
}

void AgentStripTest::quitFromTheMenu() {
    QVERIFY(stage_.chooseFromItemMenu(strip().center(), {QStringLiteral("q")}));
    QCOMPARE(stage_.quenby.waitForEnd(), 0);
}

QTEST_MAIN(AgentStripTest)
#include "tst_agent_strip.moc"
