// What a tab does when its page wants to go elsewhere, to open windows, or to send files.
#include "tests/workspace/tab/TabBench.h"

#include <QApplication>
#include <QMenu>
#include <QPushButton>

using namespace quenby;
using namespace quenby::testing;
using namespace std::chrono_literals;

namespace {

using Kind = WebNavigation::Kind;
using Place = WebWindowRequest::Place;

const QUrl film(QStringLiteral("https://www.youtube.com/watch?v=1"));
const QUrl csv = local("/docs/spreadsheets/d/1/export?format=csv&id=1");
const QUrl printView = local("/viewer/print?a=1");

enum class Fate { used, outside, download, loggedOut, newTab, background, nothing };

} // namespace

class TestTabNavigation final : public QObject {
    Q_OBJECT

private:
    static void clickBlocked(TabBench& bench) {
        auto* allow = visibleButton<QPushButton>(bench.tab, "Allow");
        QVERIFY(allow);
        allow->click();
        TabBench::settle();
    }

private Q_SLOTS:
    void verdicts_data() {
        QTest::addColumn<QUrl>("to");
        QTest::addColumn<Fate>("fate");
        QTest::newRow("an editor") << local("/docs/document/d/1/edit") << Fate::used;
        QTest::newRow("another site") << film << Fate::outside;
        QTest::newRow("an export link") << csv << Fate::download;
        QTest::newRow("a signed address of a file") << local("/usercontent/docs/securesc/x") << Fate::download;
        QTest::newRow("leaving the service") << local("/accounts/Logout?service=wise") << Fate::loggedOut;
        QTest::newRow("a letter") << QUrl(QStringLiteral("mailto:b@example.com")) << Fate::outside;
        QTest::newRow("a local file") << QUrl(QStringLiteral("file:///etc/hostname")) << Fate::nothing;
    }
    void verdicts() {
        QFETCH(QUrl, to);
        QFETCH(Fate, fate);
        TabBench bench;
        FakeBrowserView& page = bench.opened();
        const QSignalSpy loggedOut(&bench.tab, &TabWebView::logOutRequested);
        const QSignalSpy closed(&bench.tab, &TabWebView::closeRequested);
        const QUrl before = page.url();
        QCOMPARE(page.navigate(to), fate == Fate::used);
        // Inside of the engine's question nothing has happened yet.
        QVERIFY(bench.outside.isEmpty() && page.downloads.isEmpty() && loggedOut.isEmpty());
        TabBench::settle();
        QCOMPARE(page.url(), fate == Fate::used ? to : before);
        QCOMPARE(bench.outside, fate == Fate::outside ? QList{to} : QList<QUrl>());
        QCOMPARE(page.downloads, fate == Fate::download ? QList{to} : QList<QUrl>());
        QCOMPARE(loggedOut.size(), fate == Fate::loggedOut ? 1 : 0);
        QCOMPARE(bench.model.isProcessing(), fate == Fate::used);
        QVERIFY(bench.newTabs.isEmpty() && closed.isEmpty());
    }

    // What a redirect leads to is judged by the address that was asked for first, and exports by where it leads.
    void redirects() {
        TabBench bench;
        FakeBrowserView& page = bench.opened();
        QVERIFY(page.navigate(local("/open")));
        QVERIFY(page.redirect(film));
        page.finish();
        QVERIFY(!page.redirect(film)); // by the page itself, once it is there
        QVERIFY(page.navigate(local("/open2")));
        QVERIFY(!page.redirect(csv));
        QVERIFY(page.navigate(local("/frame"), Kind::other, false));
        QVERIFY(page.navigate(film, Kind::redirect, false));
        TabBench::settle();
        QCOMPARE(page.downloads, QList{csv});
        QCOMPARE(bench.outside, QList{film});
    }

    void printViewOpensOneTab() {
        TabBench bench;
        FakeBrowserView& page = bench.opened();
        const QUrl print = local("/viewer/a?print=true");
        QVERIFY(page.navigate(print, Kind::other));
        QVERIFY(page.redirect(local("/viewer/b?print=true")));
        TabBench::settle();
        page.finish(QStringLiteral("letter.pdf"));
        page.navigate(page.url(), Kind::reload);
        page.navigate(page.url(), Kind::other); // as when the page comes back from its rest
        TabBench::settle();
        QCOMPARE(bench.newTabs, QList{(PageOpenRecord{.title = QStringLiteral("Google Drive Print"), .url = print})});

        // The tab that it opened, and the one that the next run makes of it.
        for (const QString& title : {QStringLiteral("Google Drive Print"), QStringLiteral("letter.pdf")}) {
            TabBench opened(print, title);
            opened.opened(QStringLiteral("letter.pdf"));
            opened.page().navigate(print, Kind::reload);
            TabBench::settle();
            QVERIFY2(opened.newTabs.isEmpty(), qPrintable(title));
        }
        TabBench own(print, QStringLiteral("Google Drive Print"));
        own.opened(QStringLiteral("letter.pdf")).navigate(local("/viewer/c?print=true"), Kind::other);
        TabBench::settle();
        QVERIFY(own.newTabs.isEmpty());
    }

    void windows_data() {
        QTest::addColumn<Place>("place");
        QTest::addColumn<QUrl>("url");
        QTest::addColumn<Fate>("fate");
        QTest::addColumn<QString>("title");
        const QUrl docs = local("/docs/document/d/1/edit");
        const QUrl storage = local("/www/settings/storage");
        const QString none;
        QTest::newRow("link, editor") << Place::tab << docs << Fate::newTab << QStringLiteral("Google Docs");
        QTest::newRow("link, elsewhere") << Place::tab << local("/drive/x") << Fate::used << none;
        QTest::newRow("link, storage") << Place::tab << storage << Fate::outside << none;
        QTest::newRow("script") << Place::window << printView << Fate::newTab << QStringLiteral("Google Drive Print");
        QTest::newRow("script, empty") << Place::window << QUrl() << Fate::nothing << none;
        QTest::newRow("script, blank") << Place::window << QUrl(QStringLiteral("about:blank")) << Fate::nothing << none;
        QTest::newRow("middle, editor") << Place::backgroundTab << docs << Fate::background
                                        << QStringLiteral("Google Docs");
        QTest::newRow("middle, Drive") << Place::backgroundTab << local("/drive/x") << Fate::background
                                       << QStringLiteral("127.0.0.1");
        QTest::newRow("middle, export") << Place::backgroundTab << csv << Fate::download << none;
    }
    void windows() {
        QFETCH(Place, place);
        QFETCH(QUrl, url);
        QFETCH(Fate, fate);
        QFETCH(QString, title);
        TabBench bench;
        FakeBrowserView& page = bench.opened();
        const int stops = page.stops;
        Q_EMIT page.windowRequested({url, place, true});
        TabBench::settle();
        const bool opens = fate == Fate::newTab || fate == Fate::background;
        const PageOpenRecord record{.title = title, .url = url};
        QCOMPARE(bench.newTabs, opens ? QList{record} : QList<PageOpenRecord>());
        QCOMPARE(bench.backgrounds, opens ? QList{fate == Fate::background} : QList<bool>());
        QCOMPARE(bench.outside, fate == Fate::outside ? QList{url} : QList<QUrl>());
        QCOMPARE(page.downloads, fate == Fate::download ? QList{url} : QList<QUrl>());
        QCOMPARE(page.url(), fate == Fate::used ? url : local("/"));
        QCOMPARE(page.stops - stops, fate == Fate::newTab && place == Place::window ? 1 : 0);
    }

    void endlessWindows() {
        TabBench bench;
        FakeBrowserView& page = bench.opened();
        bench.tab.show();
        const auto openMany = [&](bool isUserInitiated) {
            for (int i = 0; i < 10; ++i) {
                Q_EMIT page.windowRequested({printView, Place::window, isUserInitiated});
                bench.time->advance(1s);
            }
            TabBench::settle();
        };
        openMany(true);
        QCOMPARE(bench.newTabs.size(), 10);
        openMany(false);
        QCOMPARE(bench.newTabs.size(), 13);
        clickBlocked(bench);
        QCOMPARE(bench.newTabs.size(), 16);
        QVERIFY(!visibleButton<QPushButton>(bench.tab, "Allow"));
        Q_EMIT page.windowRequested({local("/drive/x"), Place::tab, false}); // too late for this row
        openMany(false);
        QCOMPARE(bench.newTabs.size(), 19);
    }

    // A script that goes elsewhere again and again must not fill the desktop with browser windows.
    void endlessPagesOutside() {
        TabBench bench;
        FakeBrowserView& page = bench.opened();
        bench.tab.show();
        for (int i = 0; i < 10; ++i)
            page.navigate(film, Kind::linkClicked); // as an engine has it, too
        TabBench::settle();
        QCOMPARE(bench.outside.size(), 3);
        QVERIFY(visibleButton<QPushButton>(bench.tab, "Allow"));
        page.releaseLeftButton();
        page.navigate(film, Kind::linkClicked);
        TabBench::settle();
        QCOMPARE(bench.outside.size(), 4);
    }

    void files() {
        TabBench bench;
        FakeBrowserView& page = bench.opened();
        bench.tab.show();
        int begun = 0;
        connect(&bench.tab, &TabWebView::downloadBegun, this, [&](const std::shared_ptr<WebDownload>& download) {
            download->begin(bench.documents.filePath(QStringLiteral("file%1").arg(++begun)));
        });
        const FakeFile file{.name = QStringLiteral("a.csv"), .bytes = "a,b"};
        QVERIFY(!page.offer(csv, file)->isDropped());
        // A second one that nobody has clicked for waits for leave.
        const QUrl second = local("/second");
        QVERIFY(page.offer(second, file)->isDropped());
        TabBench::settle();
        bench.webViews.pages().insert(second, {.file = file});
        clickBlocked(bench);
        QCOMPARE(page.downloads, QList{second});
        QTRY_COMPARE(begun, 2);
        page.releaseLeftButton();
        QVERIFY(!page.offer(csv, file)->isDropped());
        QVERIFY(page.offer(csv, file)->isDropped());

        // The user's own wish is none of the page's.
        Q_EMIT page.contextMenuRequested({{}, csv, {}, {}, false});
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        QVERIFY(menu);
        menu->actions().at(2)->trigger();
        menu->close();
        QCOMPARE(page.commands.last(), WebCommand::downloadLink);
        QVERIFY(!page.offer(csv, file)->isDropped());
        QCOMPARE(begun, 4);
    }

    // A sign-out closes all tabs, the one that asked for it among them.
    void tabGoesWithItsSignal() {
        TabBench bench;
        QPointer<TabWebView> tab(new TabWebView(bench.surroundings, bench.model));
        connect(tab, &TabWebView::logOutRequested, this, [tab] { delete tab; });
        tab->loadNow();
        const QPointer<FakeBrowserView> page(&bench.page());
        page->navigate(local("/accounts/Logout?service=wise"));
        QVERIFY(tab);
        TabBench::settle();
        QVERIFY(!tab && !page);
    }

    // It would stay empty for ever.
    void tabOfAnAddressThatLeavesIt_data() {
        QTest::addColumn<QUrl>("url");
        QTest::addColumn<bool>("isFile");
        QTest::newRow("another site") << film << false;
        QTest::newRow("an export") << csv << true;
    }
    void tabOfAnAddressThatLeavesIt() {
        QFETCH(QUrl, url);
        QFETCH(bool, isFile);
        TabBench bench(url);
        const QSignalSpy closed(&bench.tab, &TabWebView::closeRequested);
        bench.tab.loadNow();
        TabBench::settle();
        QCOMPARE(bench.outside.size(), isFile ? 0 : 1);
        QCOMPARE(closed.size(), isFile ? 0 : 1);
        if (isFile)
            bench.page().offer(url, {});
        TabBench::settle();
        QCOMPARE(closed.size(), 1);
    }
};

QTEST_MAIN(TestTabNavigation)
#include "tst_tabnavigation.moc"
