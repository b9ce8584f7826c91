// What a tab shows of its page, and what it does when there is none.
#include "tests/workspace/tab/TabBench.h"
#include "widgets/ProblemPane.h"
#include "workspace/tab/FindBar.h"
#include "workspace/tab/PageMenu.h"
#include "workspace/tab/PageScripts.h"
#include "workspace/tab/ZoomReadOut.h"

#include <QClipboard>
#include <QDir>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QThreadPool>

using namespace quenby;
using namespace quenby::testing;
using namespace std::chrono_literals;

namespace {

QStringList logged;
void keepLog(QtMsgType, const QMessageLogContext&, const QString& text) { logged.append(text); }

} // namespace

class TestTabWebView final : public QObject {
    Q_OBJECT

private:
    static ProblemPane* problem(TabBench& bench) {
        auto* pane = bench.tab.findChild<ProblemPane*>();
        return pane && pane->isVisible() ? pane : nullptr;
    }
    static QString problemText(TabBench& bench) {
        QStringList texts;
        for (const QLabel* label : bench.tab.findChild<ProblemPane*>()->findChildren<QLabel*>())
            texts.append(label->text());
        return texts.join(QLatin1Char('|'));
    }
    static bool isSaid(TabBench& bench, const char* text) {
        for (const QLabel* label : bench.tab.findChildren<QLabel*>()) {
            if (label->isVisible() && label->text() == QLatin1String(text))
                return true;
        }
        return false;
    }

private Q_SLOTS:
    void init() { logged.clear(); }

    void engineComesWithTheFirstLook() {
        TabBench bench;
        bench.tab.loadWhenShown();
        bench.time->advance(1h);
        QVERIFY(bench.webViews.browsers.empty() && !bench.tab.myWebview());
        QCOMPARE(bench.tab.mainFrameURL(), local("/"));
        bench.tab.show();
        QCOMPARE(bench.page().loads, QList{local("/")});
        QCOMPARE(bench.page().profile.account, QStringLiteral("a@example.com"));
        QCOMPARE(bench.page().profile.userAgent, TabWebView::userAgent());
        bench.tab.hide();
        bench.tab.show();
        QCOMPARE(bench.page().loads.size(), 1);
    }

    void noEngine() {
        TabBench bench;
        bench.webViews.unavailable = QStringLiteral("The web engine is not installed.");
        bench.tab.show();
        bench.tab.loadNow();
        QVERIFY(problem(bench));
        QVERIFY(problemText(bench).contains(bench.webViews.unavailable));
        bench.webViews.unavailable.clear();
        visibleButton<QPushButton>(bench.tab, "Try Again")->click();
        QCOMPARE(bench.page().loads, QList{local("/")});
        QVERIFY(!problem(bench));
    }

    void pageEvents() {
        TabBench bench;
        bench.tab.loadNow();
        TabBench::settle();
        FakeBrowserView& page = bench.page();
        QVERIFY(bench.model.isProcessing());
        const auto hidings = [&page] { return page.scripts.count(hideDownloadDriveButtonScript()); };
        QCOMPARE(hidings(), 2); // the decision and the load
        page.changeTitle(QStringLiteral("My Drive - Google Drive"));
        QCOMPARE(bench.model.title(), QStringLiteral("My Drive"));
        QCOMPARE(hidings(), 3);
        page.changeTitle(QStringLiteral(" - Google Docs"));
        QCOMPARE(bench.model.title(), QStringLiteral("My Drive"));
        page.finish();
        QVERIFY(!bench.model.isProcessing());

        const QtMessageHandler before = qInstallMessageHandler(keepLog);
        Q_EMIT page.consoleMessage(QStringLiteral("found access_token=S3CRET here\n\x1b[2Janother line"));
        qInstallMessageHandler(before);
        QCOMPARE(logged.size(), 1);
        QVERIFY(logged.first().contains(QLatin1String("JSLog: found")));
        QVERIFY2(!logged.first().contains(QLatin1String("S3CRET")), qPrintable(logged.first()));
        QVERIFY(!logged.first().contains(QLatin1Char('\n')) && !logged.first().contains(QChar(0x1b)));
    }

    void icons() {
        TabBench bench;
        FakeBrowserView& page = bench.opened();
        const auto kept = [&bench] {
            QThreadPool::globalInstance()->waitForDone();
            return QDir(bench.documents.path()).entryList(QDir::Files).size();
        };
        QImage icon(16, 16, QImage::Format_ARGB32);
        icon.fill(Qt::blue);
        page.changeIcon(icon);
        QCOMPARE(bench.model.icon().pixmap(16).toImage().pixelColor(5, 5), QColor(Qt::blue));
        page.changeIcon({});
        QVERIFY(bench.model.icon().isNull());
        page.changeIcon(icon.copy());
        QCOMPARE(kept(), 1);
        icon.fill(Qt::red);
        page.changeIcon(icon);
        icon.fill(Qt::blue); // an icon that blinks
        page.changeIcon(icon);
        QCOMPARE(kept(), 2);
        for (int shade = 0; shade < 100; ++shade) {
            icon.fill(QColor(shade, 255, shade));
            page.changeIcon(icon);
        }
        QCOMPARE(kept(), 16);
    }

    void failureAndRetry() {
        TabBench bench;
        FakeBrowserView& page = bench.opened();
        bench.tab.show();
        page.navigate(local("/docs/document/d/1/edit"));
        TabBench::settle();
        page.fail(Error(URLErrorCode::timedOut, {{errorKey::reason, QStringLiteral("It did not answer.")}}));
        QVERIFY(problem(bench) && !page.widget()->isVisible());
        QVERIFY(problemText(bench).contains(QLatin1String("It did not answer.\n127.0.0.1")));
        QVERIFY(!visibleButton<QPushButton>(bench.tab, "Close"));
        QVERIFY(!bench.model.isProcessing());
        visibleButton<QPushButton>(bench.tab, "Try Again")->click();
        QCOMPARE(page.loads.last(), local("/docs/document/d/1/edit"));
        TabBench::settle();
        QVERIFY(!problem(bench) && page.widget()->isVisible());
        page.fail();
        bench.tab.reloadFromOrigin();
        QCOMPARE(page.loads.size(), 3);

        // The engine keeps the page that it could not leave.
        page.fail(Error(URLErrorCode::timedOut, {{errorKey::failingURL, local("/elsewhere")}}));
        QVERIFY(problem(bench) && bench.tab.canGoBack());
        bench.tab.goBack();
        QVERIFY(!problem(bench) && page.widget()->isVisible());
        QCOMPARE(page.backs, 0);

        TabBench odd(QUrl(QStringLiteral("file:///etc/hostname")));
        odd.tab.show();
        odd.tab.loadNow();
        QVERIFY(problem(odd) && odd.webViews.browsers.empty());
    }

    void refusal() {
        TabBench bench;
        FakeBrowserView& page = bench.opened();
        bench.tab.show();
        page.navigate(local("/docs/document/d/1/edit"));
        page.redirect(local("/docs/unsupportedbrowser"));
        page.finish();
        QVERIFY(isSaid(bench, "This page does not support this window."));
        visibleButton<QPushButton>(bench.tab, "Open in Browser")->click();
        QCOMPARE(bench.outside, QList{local("/docs/document/d/1/edit")});
    }

    void rest() {
        TabBench bench;
        bench.tab.show();
        FakeBrowserView& page = bench.opened();
        std::shared_ptr<WebDownload> file;
        connect(&bench.tab, &TabWebView::downloadBegun, this, [&](const std::shared_ptr<WebDownload>& download) {
            file = download;
            download->begin(bench.documents.filePath(QStringLiteral("file")));
        });
        const auto download = page.offer(csvFile(), {});
        bench.tab.hide();
        bench.time->advance(10min);
        QCOMPARE(page.lifecycle(), WebLifecycle::active);
        download->finish();
        TabBench::settle();
        bench.time->advance(4min);
        QCOMPARE(page.lifecycles, (QList{WebLifecycle::frozen, WebLifecycle::discarded}));
        QCOMPARE(bench.time->pendingTimers(), size_t{0});
        bench.tab.show();
        QCOMPARE(page.lifecycle(), WebLifecycle::active);
        TabBench::settle();
        QVERIFY(bench.model.isProcessing()); // it is loaded again

        TabBench unseen; // opened behind another tab
        unseen.opened();
        unseen.time->advance(4min);
        QCOMPARE(unseen.page().lifecycle(), WebLifecycle::discarded);
    }

    void notAnswering() {
        const char* text = "This page is not answering.";
        TabBench bench;
        FakeBrowserView& page = bench.opened();
        bench.tab.show();
        page.holdsScripts = true;
        page.releaseLeftButton();
        page.releaseLeftButton();
        bench.time->advance(9s);
        QVERIFY(!isSaid(bench, text));
        bench.time->advance(1s);
        QVERIFY(isSaid(bench, text));
        visibleButton<QPushButton>(bench.tab, "Wait")->click();
        QVERIFY(!isSaid(bench, text));
        bench.time->advance(10s);
        QVERIFY(isSaid(bench, text));
        page.releaseScripts(); // after all
        TabBench::settle();
        QVERIFY(!isSaid(bench, text));

        page.holdsScripts = true;
        page.releaseLeftButton();
        bench.time->advance(10s);
        visibleButton<QPushButton>(bench.tab, "End Page")->click();
        QCOMPARE(page.endings, 1);
        TabBench::settle();
        bench.time->advance(1min);
        QVERIFY(!isSaid(bench, text) && !bench.model.isProcessing());

        // Nobody waits for a page that nobody sees.
        page.releaseLeftButton();
        bench.tab.hide();
        bench.time->advance(30s);
        bench.tab.show();
        QVERIFY(!isSaid(bench, text));
    }

    void findInPage() {
        TabBench bench;
        bench.tab.resize(600, 400);
        bench.tab.show();
        FakeBrowserView& page = bench.opened();
        bench.tab.showFind();
        auto* bar = bench.tab.findChild<FindBar*>();
        auto* line = bar->findChild<QLineEdit*>();
        QVERIFY(bar->isVisible());
        QTest::keyClicks(line, QStringLiteral("ab"));
        QTest::keyClick(line, Qt::Key_Return);
        QTest::keyClick(line, Qt::Key_Return, Qt::ShiftModifier);
        const QString ab = QStringLiteral("ab");
        QCOMPARE(page.searches, (QList<FakeBrowserView::Search>{{QStringLiteral("a")}, {ab}, {ab}, {ab, true}}));
        page.tellFound(3, 12);
        QVERIFY(isSaid(bench, "3 of 12"));
        page.tellFound(0, 0);
        QVERIFY(isSaid(bench, "Not found"));
        QTest::keyClick(line, Qt::Key_Escape);
        QVERIFY(!bar->isVisible());
        QCOMPARE(page.searches.last(), FakeBrowserView::Search{});
        bench.tab.showFind(); // the text is there again, and sought
        QCOMPARE(page.searches.last(), FakeBrowserView::Search{ab});
        QCOMPARE(line->selectedText(), ab);
    }

    void zoom() {
        TabBench bench;
        bench.opened();
        bench.tab.show();
        bench.tab.zoomIn();
        QVERIFY(isSaid(bench, "110 %"));
        bench.time->advance(2s);
        QVERIFY(!isSaid(bench, "110 %"));
        bench.tab.zoomReset();
        QCOMPARE(bench.page().zoomFactor(), 1.0);
    }

    // Behind the dialog for printing nothing else can be reached: a page must not open it again and again.
    void endlessPrinting() {
        TabBench bench;
        FakeBrowserView& page = bench.opened();
        bench.tab.show();
        for (int i = 0; i < 10; ++i)
            Q_EMIT page.printRequested();
        QCOMPARE(page.prints, 2);
        bench.tab.print(); // the user's own wish
        page.releaseLeftButton();
        Q_EMIT page.printRequested();
        QCOMPARE(page.prints, 4);
    }

    void contextMenu() {
        FakeBrowserView page({});
        page.impossible = {WebCommand::paste};
        const QUrl url = local("/x?a=%20");
        QList<QUrl> opened;
        QList<WebCommand> downloads;
        for (const WebContext& context : {WebContext{{}, url, url, QStringLiteral("marked"), false},
                                          WebContext{{}, {}, {}, {}, true}, WebContext{}}) {
            const auto menu = makePageMenu(context, page,
                                           {.openInNewTab = [&](const QUrl& to) { opened.append(to); },
                                            .download = [&](WebCommand command) { downloads.append(command); }});
            QString mnemonics;
            for (QAction* action : menu->actions()) {
                const qsizetype mark = action->text().indexOf(QLatin1Char('&'));
                const QChar letter = action->isSeparator() ? QChar() : action->text().at(mark + 1).toLower();
                QVERIFY2(letter.isNull() || !mnemonics.contains(letter), qPrintable(action->text()));
                mnemonics.append(letter);
                action->trigger();
            }
            QVERIFY2(!mnemonics.endsWith(QChar()), "no separator at the end");
        }
        QCOMPARE(opened, (QList{url, url}));
        QCOMPARE(downloads, (QList{WebCommand::downloadLink, WebCommand::downloadImage}));
        QCOMPARE(QGuiApplication::clipboard()->text(), url.toString(QUrl::FullyEncoded));
        QVERIFY(page.commands.contains(WebCommand::pasteAsText) && !page.commands.contains(WebCommand::paste));
        QCOMPARE(page.prints, 1);
        QCOMPARE(page.backs, 0); // there is nothing before it
    }

private:
    static QUrl csvFile() { return local("/docs/spreadsheets/d/1/export?format=csv&id=1"); }
};

QTEST_MAIN(TestTabWebView)
#include "tst_tabwebview.moc"
