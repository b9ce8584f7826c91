// The workspace's tabs over pages that the test plays: which come back, what is kept of them and when, and how they
// end.
#include "tests/platform/fakes/FakeDefaults.h"
#include "tests/platform/fakes/FakeWebViews.h"
#include "tests/support/ManualTimeSource.h"
#include "workspace/tabbar/DemoModel.h"
#include "workspace/tabbar/TabBar.h"
#include "workspace/tabs/OldTabs.h"
#include "workspace/tabs/WorkspaceTabs.h"

#include <QSignalSpy>
#include <QTest>

using namespace quenby;
using namespace quenby::testing;
using namespace std::chrono_literals;

namespace {

const QString tabsKey = QStringLiteral("OldTabs");

QUrl at(const QString& path) { return QUrl(QStringLiteral("http://127.0.0.1:4711") + path); }
QUrl folder(int number) { return at(QStringLiteral("/drive/folders/%1").arg(number)); }

// One run of the program on settings that outlive it.
struct Run {
    explicit Run(FakeDefaults& defaults)
        : tabs({.webViews = webViews,
                .profile = {.account = QStringLiteral("a@example.com")},
                .endpoints = Endpoints::localDrive(at({})),
                .timeSource = time,
                .documentsFolder = {}},
               defaults) {
        tabs.resize(800, 600);
        tabs.show();
    }
    explicit Run(FakeDefaults& defaults, int folders)
        : Run(defaults) {
        for (int number = 0; number < folders; ++number)
            openFolder(number);
    }

    void openFolder(int number) {
        tabs.AddNewTabGoogleDriveWithData({QStringLiteral("Folder %1").arg(number), folder(number)});
    }
    QStringList titles() const {
        QStringList all;
        for (int i = 0; i < tabs.count(); ++i)
            all.append(tabs.tabAt(i)->demoModel().title());
        return all;
    }
    QList<QUrl> addresses() const {
        QList<QUrl> all;
        for (int i = 0; i < tabs.count(); ++i)
            all.append(tabs.tabAt(i)->mainFrameURL());
        return all;
    }

    std::shared_ptr<ManualTimeSource> time = std::make_shared<ManualTimeSource>();
    FakeWebViews webViews;
    WorkspaceTabs tabs;
};

QStringList keptTitles(const FakeDefaults& defaults) {
    QStringList titles;
    for (const PageOpenRecord& record : readOldTabs(defaults).value_or(QList<PageOpenRecord>()))
        titles.append(record.title);
    return titles;
}

QStringList logged;
void keepLog(QtMsgType, const QMessageLogContext&, const QString& text) { logged.append(text); }

} // namespace

class WorkspaceTabsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // --- The start
    // ----------------------------------------------------------------------------------------------------

    void withoutAnythingKeptTheDriveOpens_data() {
        QTest::addColumn<QVariant>("kept");
        QTest::newRow("first start") << QVariant();
        QTest::newRow("nothing that belongs into a tab")
            << QVariant(QStringLiteral("[{\"title\":\"x\",\"url\":\"file:///etc/passwd\"},{\"url\":\"javascript:1\"},7,"
                                       "{\"url\":\"https://u:p@a.example/\"}]"));
        QTest::newRow("no list") << QVariant(QStringLiteral("[[[{"));
    }
    void withoutAnythingKeptTheDriveOpens() {
        QFETCH(const QVariant, kept);
        FakeDefaults defaults;
        defaults.setValueForKey(tabsKey, kept);
        defaults.setValueForKey(QStringLiteral("OldTabsSelected"), 17);
        Run run(defaults);
        run.openFolder(0); // what stands there until the tabs are known
        run.tabs.setTabbarAccordingPreviousData();
        QCOMPARE(run.titles(), QStringList{QStringLiteral("Google - Drive")});
        QCOMPARE(run.addresses(), QList{at(QStringLiteral("/"))});
        QCOMPARE(run.webViews.lastBrowser().loads, QList{at(QStringLiteral("/"))});
    }

    void onlyASingleTabIsAPlaceholder() {
        FakeDefaults defaults;
        Run run(defaults, 2);
        run.tabs.setTabbarAccordingPreviousData();
        QCOMPARE(run.titles(), (QStringList{QStringLiteral("Folder 0"), QStringLiteral("Folder 1"),
                                            QStringLiteral("Google - Drive")}));
        QCOMPARE(run.tabs.selectedIndex(), 2);
    }

    void tabsComeBackInTheirOrderAndOneIsLoaded() {
        FakeDefaults defaults;
        QList<QUrl> before;
        {
            Run first(defaults, 20);
            before = first.addresses();
            first.tabs.tabBar().setCurrentIndex(13);
            first.time->advance(1s);
        }
        Run second(defaults);
        second.tabs.setTabbarAccordingPreviousData();
        QCoreApplication::processEvents();
        QCOMPARE(second.addresses(), before);
        QCOMPARE(second.tabs.selectedIndex(), 13);
        QCOMPARE(second.webViews.browsers.size(), 1U);
        QCOMPARE(second.webViews.lastBrowser().loads, QList{folder(13)});
        QCOMPARE(second.webViews.lastBrowser().profile.account, QStringLiteral("a@example.com"));

        second.tabs.tabBar().setCurrentIndex(5);
        QCOMPARE(second.webViews.browsers.size(), 2U);
        QCOMPARE(second.webViews.lastBrowser().loads, QList{folder(5)});
        // A tab that was never looked at is kept as it was.
        second.tabs.saveAllTabDetailsToDefaults();
        QCOMPARE(keptTitles(defaults).value(19), QStringLiteral("Folder 19"));
    }

    // Behind a window that is hidden no page is wanted, until it is shown.
    void aHiddenWindowLoadsWhenItIsShown() {
        FakeDefaults defaults;
        Run run(defaults);
        run.tabs.hide();
        run.tabs.setTabbarAccordingPreviousData();
        QVERIFY(run.webViews.browsers.empty());
        run.tabs.show();
        QCOMPARE(run.webViews.browsers.size(), 1U);
    }

    void theLocalDriveHasAnotherPortToday() {
        FakeDefaults defaults;
        writeOldTabs(defaults, {{QStringLiteral("Ours"), QUrl(QStringLiteral("http://127.0.0.1:1/drive/trash?a=b"))},
                                {QStringLiteral("Theirs"), QUrl(QStringLiteral("https://a.example:1/x"))}});
        Run run(defaults);
        run.tabs.setTabbarAccordingPreviousData();
        QCOMPARE(run.addresses(),
                 (QList{at(QStringLiteral("/drive/trash?a=b")), QUrl(QStringLiteral("https://a.example:1/x"))}));
    }

    // --- What is kept
    // -------------------------------------------------------------------------------------------------

    void everyChangeIsKeptSoon() {
        FakeDefaults defaults;
        Run run(defaults, 3);
        const auto keeps = [&](const QStringList& titles) {
            run.time->advance(5s);
            return keptTitles(defaults) == titles;
        };
        const QString zero = QStringLiteral("Folder 0");
        const QString one = QStringLiteral("Folder 1");
        const QString two = QStringLiteral("Folder 2");
        QVERIFY(keeps({zero, one, two}));
        run.tabs.tabBar().moveTab(0, 2);
        QVERIFY(keeps({one, two, zero}));
        run.tabs.closeTab(1);
        QVERIFY(keeps({one, zero}));
        QCoreApplication::processEvents();
        run.webViews.browsers[1]->finish(QStringLiteral("Reports - Google Drive"));
        QVERIFY(keeps({QStringLiteral("Reports"), zero}));
        run.tabs.tabBar().setCurrentIndex(0);
        run.webViews.browsers[1]->navigate(folder(7));
        QCoreApplication::processEvents();
        run.time->advance(1s);
        QCOMPARE(readOldTabs(defaults)->constFirst().url, folder(7));
        QCOMPARE(readSelectedTab(defaults, 2), 0);
    }

    void aPageWithoutTitleOrAddressIsKeptAsTheDrive() {
        FakeDefaults defaults;
        Run run(defaults);
        run.tabs.AddNewTabGoogleDriveWithData({{}, QUrl(QStringLiteral("about:blank"))});
        run.tabs.saveAllTabDetailsToDefaults();
        QCOMPARE(readOldTabs(defaults).value_or(QList<PageOpenRecord>()),
                 (QList<PageOpenRecord>{{QStringLiteral("Google Drive"), at(QStringLiteral("/"))}}));
        QVERIFY(run.webViews.lastBrowser().stops > 0);
    }

    void noTabsLeaveWhatIsKept() {
        FakeDefaults defaults;
        writeOldTabs(defaults, {{QStringLiteral("Kept"), folder(1)}});
        Run run(defaults);
        run.tabs.saveAllTabDetailsToDefaults();
        QCOMPARE(keptTitles(defaults), QStringList{QStringLiteral("Kept")});
        // Nor does it go when the tabs go without a sign-out.
        run.tabs.setTabbarAccordingPreviousData();
        run.tabs.removeAllTabs();
        run.time->advance(1h);
        QCOMPARE(keptTitles(defaults), QStringList{QStringLiteral("Kept")});
    }

    // Titles that never rest, such as one that counts or blinks, are not written all the time; where a tab is, soon.
    void titlesAreKeptInTheirTime() {
        FakeDefaults defaults;
        Run run(defaults, 2);
        QCoreApplication::processEvents();
        run.time->advance(1s);
        const QSignalSpy written(&defaults, &Defaults::changed);
        for (int second = 0; second < 60; ++second) {
            run.webViews.lastBrowser().changeTitle(QStringLiteral("(%1)").arg(second));
            run.time->advance(1s);
        }
        QVERIFY2(written.size() < 15, qPrintable(QString::number(written.size())));
        run.webViews.lastBrowser().changeTitle(QStringLiteral("last"));
        run.tabs.closeTab(0);
        run.time->advance(1s);
        QCOMPARE(keptTitles(defaults), QStringList{QStringLiteral("last")});
    }

    void aSignOutForgets() {
        FakeDefaults defaults;
        Run run(defaults, 3);
        run.time->advance(1s);
        QVERIFY(defaults.contains(tabsKey));
        run.openFolder(4); // to be kept soon
        run.tabs.closeAllTabs();
        run.time->advance(1h);
        QCOMPARE(run.tabs.count(), 0);
        QCOMPARE(defaults.keys(), QStringList());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        for (const auto& page : run.webViews.browsers)
            QVERIFY(!page);
    }

    // --- New tabs
    // -----------------------------------------------------------------------------------------------------

    void theAddButtonNeedsASignIn() {
        FakeDefaults defaults;
        Run run(defaults);
        const QSignalSpy signIn(&run.tabs, &WorkspaceTabs::loginAccess);
        Q_EMIT run.tabs.tabBar().addTabRequested();
        QCOMPARE(signIn.size(), 1);
        QCOMPARE(run.tabs.count(), 0);
        run.tabs.setUserLogin(true);
        Q_EMIT run.tabs.tabBar().addTabRequested();
        QCOMPARE(signIn.size(), 1);
        QCOMPARE(run.titles(), QStringList{QStringLiteral("Google Drive - New")});
        QCOMPARE(run.webViews.lastBrowser().loads, QList{at(QStringLiteral("/"))});
    }

    void newDocuments_data() {
        QTest::addColumn<int>("tag");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("path");
        QTest::newRow("1") << 1 << "Untitled document"
                           << "/docs/document/create";
        QTest::newRow("2") << 2 << "Untitled presentation"
                           << "/docs/presentation/create";
        QTest::newRow("3") << 3 << "Untitled spreadsheets"
                           << "/docs/spreadsheets/create";
        QTest::newRow("4") << 4 << "Untitled forms"
                           << "/docs/forms/create";
        QTest::newRow("5") << 5 << "Untitled drawings"
                           << "/docs/drawings/create";
    }
    void newDocuments() {
        QFETCH(const int, tag);
        FakeDefaults defaults;
        Run run(defaults);
        const QSignalSpy opened(&run.tabs, &WorkspaceTabs::documentOpened);
        run.tabs.setRootFolderId(QStringLiteral("0A-_b&c=d e"));
        run.tabs.OpenNewGoogle(tag);
        QTEST(run.titles().join(QLatin1Char('|')), "title");
        QFETCH(const QString, path);
        QCOMPARE(run.addresses().value(0).toString(QUrl::FullyEncoded),
                 at(path).toString() + QStringLiteral("?usp=drive_web&folder=0A-_b%26c%3Dd%20e"));
        QCOMPARE(run.tabs.selectedIndex(), 0);
        QCOMPARE(opened.size(), 1);
    }

    void otherTagsOnlyLog() {
        FakeDefaults defaults;
        Run run(defaults);
        const QSignalSpy opened(&run.tabs, &WorkspaceTabs::documentOpened);
        logged.clear();
        const QtMessageHandler before = qInstallMessageHandler(keepLog);
        for (const int tag : {6, 7, 0, -1})
            run.tabs.OpenNewGoogle(tag);
        qInstallMessageHandler(before);
        const QString error = QStringLiteral("Error");
        QCOMPARE(logged, (QStringList{QStringLiteral("My Maps"), error, error, error}));
        QCOMPARE(run.tabs.count(), 0);
        QVERIFY(opened.isEmpty());
    }

    // --- Closing
    // ------------------------------------------------------------------------------------------------------

    void theLastTabClosesTheWindowAndStays() {
        FakeDefaults defaults;
        Run run(defaults, 3);
        const QSignalSpy last(&run.tabs, &WorkspaceTabs::lastTabClosed);
        run.tabs.closeOtherTabs(1);
        QCOMPARE(run.titles(), QStringList{QStringLiteral("Folder 1")});
        QVERIFY(last.isEmpty());
        run.tabs.closeTab(0);
        QCOMPARE(last.size(), 1);
        QCOMPARE(run.tabs.count(), 1);
        for (const int none : {-1, 1, 99})
            run.tabs.closeTab(none);
        QCOMPARE(last.size(), 1);
    }

    // Tabs that were never looked at are not looked at on their way out.
    void closingLoadsNothing() {
        FakeDefaults defaults;
        {
            const Run first(defaults, 6);
            first.time->advance(1s);
        }
        Run second(defaults);
        second.tabs.setTabbarAccordingPreviousData();
        QCOMPARE(second.tabs.selectedIndex(), 5);
        QCOMPARE(second.webViews.browsers.size(), 1U);
        second.tabs.closeOtherTabs(3);
        QCOMPARE(second.webViews.browsers.size(), 2U); // the one that stays is seen now
        QCOMPARE(second.addresses(), QList{folder(3)});

        Run third(defaults);
        third.tabs.setTabbarAccordingPreviousData();
        third.tabs.removeAllTabs();
        QCOMPARE(third.webViews.browsers.size(), 1U);
        third.openFolder(1);
        QVERIFY(third.tabs.selectedTab()->isVisible());
    }

    void oneLabelKeepsATabOpen() {
        FakeDefaults defaults;
        Run run(defaults, 2);
        run.tabs.AddNewTabGoogleDriveWithData({QStringLiteral("Quirl"), folder(9)});
        run.tabs.closeTab(2);
        QCOMPARE(run.tabs.count(), 3);
        QVERIFY(run.webViews.lastBrowser().stops > 0);
    }

    // A page may close its tab, or ask for another one, in the middle of anything.
    void pagesOpenAndCloseTabs() {
        FakeDefaults defaults;
        Run run(defaults, 2);
        QCoreApplication::processEvents();
        run.webViews.browsers[0]->requestClose();
        QCOMPARE(run.titles(), QStringList{QStringLiteral("Folder 1")});
        TabWebView& tab = *run.tabs.selectedTab();
        Q_EMIT tab.newTabRequested({QStringLiteral("Behind"), folder(2)}, true);
        QCOMPARE(run.tabs.selectedTab(), &tab);
        Q_EMIT tab.newTabRequested({QStringLiteral("In front"), folder(3)}, false);
        QCOMPARE(run.tabs.selectedIndex(), 2);
        run.tabs.homeButtonToolbarAction();
        QCOMPARE(run.tabs.selectedTab(), &tab);
        run.tabs.selectNext(true);
        QCOMPARE(run.tabs.selectedIndex(), 2);
        run.tabs.selectNext(false);
        QCOMPARE(run.tabs.selectedIndex(), 0);
    }

    // --- The toolbar
    // ----------------------------------------------------------------------------------------------------

    void backAndForwardFollowTheSelectedTab() {
        FakeDefaults defaults;
        Run run(defaults, 2);
        QCoreApplication::processEvents();
        QSignalSpy told(&run.tabs, &WorkspaceTabs::setToolBarButton);
        FakeBrowserView& page = run.webViews.lastBrowser();
        page.finish(QStringLiteral("a"));
        page.navigate(folder(5));
        QCoreApplication::processEvents();
        page.finish(QStringLiteral("b"));
        const QVariantList back{true, false};
        const QVariantList forward{false, true};
        const QVariantList nothing{false, false};
        QCOMPARE(told.last(), back);
        run.tabs.tabBar().setCurrentIndex(0);
        QCOMPARE(told.last(), nothing);
        run.tabs.tabBar().setCurrentIndex(1);
        QCOMPARE(told.last(), back);
        run.tabs.backButton();
        QCoreApplication::processEvents();
        QCOMPARE(page.url(), folder(1));
        QCOMPARE(told.last(), forward);
        run.tabs.FwdButton();
        QCoreApplication::processEvents();
        QCOMPARE(told.last(), back);
        run.tabs.reloadButton();
        QCOMPARE(page.commands.last(), WebCommand::reloadFromOrigin);
    }
};

QTEST_MAIN(WorkspaceTabsTest)
#include "tst_workspacetabs.moc"
