// The real engine against the contract and a small server, and what only the engine can get wrong.

#include "platform/linux/web/PluginWebViews.h"
#include "tests/platform/contracts/WebViewContract.h"
#include "tests/support/ScriptedServer.h"

#include <QApplication>
#include <QLibrary>
#include <QPushButton>

using namespace quenby;
using namespace quenby::testing;
using namespace Qt::StringLiterals;

class TestPluginWebViews : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init() { view_ = makeView({}); }
    void cleanup();

    void missingModuleSaysWhy();
    void load() { webViewTellsHowALoadGoes(*view_, site_); }
    void policy() { webViewAsksBeforeItGoesAnywhere(*view_, site_); }
    void html() { webViewShowsWhatTheProgramGivesIt(*view_); }
    void failure() { webViewTellsWhatFailed(*view_, site_); }
    void stop() { webViewStopsSilently(*view_, site_); }
    void scripts() { webViewAnswersEachScriptOnce(*view_); }
    void end() { webViewMayGoInsideOfItsQuestion(std::move(view_), site_); }

    void anAddressIsNoTitle();
    void aPageWithAnErrorStatusIsAPage();
    void anErrorStatusWithoutAPageIsAFailure();
    void windowsAreAskedForAndNotOpened();
    void clicksAreTold();
    void deadProcessOffersAReload();
    void cookiesBelongToTheirProfile();
    void aForgottenAccountIsUnknown();

private:
    Answer answer(const ReceivedRequest& request) const;
    std::unique_ptr<WebView> makeView(const QString& account);
    void load(WebView& view, const QString& path);
    QByteArray cookiesAt(WebView& view);

    ScriptedServer server_;
    WebSite site_;
    std::unique_ptr<PluginWebViews> views_;
    std::unique_ptr<WebView> view_;
};

void TestPluginWebViews::initTestCase() {
    server_.setHandler([this](const ReceivedRequest& request) { return answer(request); });
    site_.url = [this](const QString& path) { return server_.url(path); };
    // Below the session's own home, which goes with it: the engine writes to its folders until the very end.
    views_ = std::make_unique<PluginWebViews>(PluginWebViewsPlaces::standard(u"test"_s));
}

void TestPluginWebViews::cleanup() {
    view_.reset();
    server_.closeAllConnections();
}

Answer TestPluginWebViews::answer(const ReceivedRequest& request) const {
    const auto page = [](const QByteArray& html, int status = 200, const QByteArray& cookie = {}) {
        std::vector<HeaderFields::Field> headers{{"Content-Type", "text/html"}, {"Cache-Control", "no-store"}};
        if (!cookie.isEmpty())
            headers.push_back({"Set-Cookie", cookie});
        return Answer::with(status, "<!DOCTYPE html>" + html, headers);
    };
    const QByteArray& path = request.target;
    if (path == "/a")
        return page("<title>Page a</title>", 200, "a=1; path=/; max-age=3600");
    if (path == "/b")
        return page("<title>Page b</title>");
    if (path == "/redirect")
        return Answer::with(302, {}, {{"Location", server_.url(u"/b"_s).toEncoded()}});
    if (path == "/broken")
        return Answer::nothing(Answer::Then::reset);
    if (path == "/never")
        return Answer::nothing(Answer::Then::stall);
    if (path == "/untitled")
        return page("<p>No title</p>");
    if (path == "/refused")
        return page("<title>Refused</title><p>Not you.", 403);
    if (path == "/window")
        return page("<title>Window</title><body style='margin:0'><a id=a href='/b' target='_blank' "
                    "style='position:absolute;width:100%;height:100%'>open</a>");
    return Answer::with(404);
}

std::unique_ptr<WebView> TestPluginWebViews::makeView(const QString& account) {
    auto view = views_->create({account});
    if (!view)
        qFatal("%s", qPrintable(view.error().description()));
    view.value()->widget()->resize(400, 300);
    view.value()->widget()->show();
    return std::move(view).value();
}

void TestPluginWebViews::load(WebView& view, const QString& path) {
    QSignalSpy finished(&view, &WebView::loadFinished);
    view.load(site_.url(path));
    QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, 30000);
}

QByteArray TestPluginWebViews::cookiesAt(WebView& view) {
    load(view, u"/b"_s);
    // Any view may still ask for its page's icon.
    const auto& requests = server_.requests();
    const auto last = std::find_if(requests.rbegin(), requests.rend(),
                                   [](const ReceivedRequest& request) { return request.target == "/b"; });
    return last->header("Cookie");
}

void TestPluginWebViews::missingModuleSaysWhy() {
    PluginWebViews none({u"/nowhere"_s, u"/nowhere"_s, {u"/nowhere"_s}});
    const auto view = none.create({});
    QVERIFY(!view);
    QVERIFY(none.unavailableBecause().contains(u"/nowhere"_s));
    QCOMPARE(view.error().detail(errorKey::reason).toString(), none.unavailableBecause());
}

// The engine's own idea of a title while there is none would let an address answer for the page.
void TestPluginWebViews::anAddressIsNoTitle() {
    WebViewRecord record(*view_);
    load(*view_, u"/untitled"_s);
    load(*view_, u"/b"_s);
    QTRY_VERIFY(record.titles.contains(u"Page b"_s));
    for (const QString& title : record.titles)
        QCOMPARE(title, u"Page b"_s);
}

void TestPluginWebViews::aPageWithAnErrorStatusIsAPage() {
    WebViewRecord record(*view_);
    load(*view_, u"/refused"_s);
    QTRY_COMPARE(record.titles.value(0), u"Refused"_s);
    QVERIFY(!record.hasTold("failed"));
}

void TestPluginWebViews::anErrorStatusWithoutAPageIsAFailure() {
    WebViewRecord record(*view_);
    view_->load(site_.url(u"/empty"_s));
    QTRY_COMPARE_WITH_TIMEOUT(record.failingURLs, QList<QUrl>{site_.url(u"/empty"_s)}, 30000);
    QVERIFY(!record.hasTold("finished"));
}

void TestPluginWebViews::windowsAreAskedForAndNotOpened() {
    QSignalSpy windows(view_.get(), &WebView::newWindowRequested);
    load(*view_, u"/window"_s);
    const auto before = QApplication::topLevelWidgets().size();
    view_->evaluate(u"document.getElementById('a').click()"_s, this, [](const QVariant&) {});
    QTRY_COMPARE(windows.size(), 1);
    QCOMPARE(windows.front().front().toUrl(), site_.url(u"/b"_s));
    QCOMPARE(QApplication::topLevelWidgets().size(), before);
    QCOMPARE(view_->url(), site_.url(u"/window"_s));
}

void TestPluginWebViews::clicksAreTold() {
    load(*view_, u"/window"_s);
    QVERIFY(QTest::qWaitForWindowExposed(view_->widget()));
    QSignalSpy clicks(view_.get(), &WebView::leftButtonReleased);
    QWidget* page = view_->widget()->childAt(200, 150);
    QVERIFY(page);
    QTest::mouseClick(page, Qt::RightButton);
    QTest::mouseClick(page, Qt::LeftButton);
    QTRY_COMPARE(clicks.size(), 1);
}

void TestPluginWebViews::deadProcessOffersAReload() {
    load(*view_, u"/a"_s);
    QSignalSpy gone(view_.get(), &WebView::processGone);
    QSignalSpy finished(view_.get(), &WebView::loadFinished);
    QList<QVariant> results;
    view_->load(QUrl(u"chrome://crash"_s));
    QTRY_COMPARE_WITH_TIMEOUT(gone.size(), 1, 30000);
    QVERIFY(!view_->isLoading());
    const auto buttons = view_->widget()->findChildren<QPushButton*>();
    QCOMPARE(buttons.size(), 1);
    QVERIFY(buttons.front()->isVisible());
    load(*view_, u"/b"_s);
    QVERIFY(!buttons.front()->isVisible());
}

void TestPluginWebViews::cookiesBelongToTheirProfile() {
    const auto first = makeView(u"me"_s);
    load(*first, u"/a"_s);
    load(*view_, u"/b"_s);
    QCOMPARE(cookiesAt(*first), QByteArray("a=1"));
    QCOMPARE(cookiesAt(*makeView(u"me"_s)), QByteArray("a=1"));
    QCOMPARE(cookiesAt(*makeView(u"you"_s)), QByteArray());
    QCOMPARE(cookiesAt(*view_), QByteArray());
    load(*view_, u"/a"_s);
    QCOMPARE(cookiesAt(*makeView({})), QByteArray()); // one private session knows nothing of the other
}

void TestPluginWebViews::aForgottenAccountIsUnknown() {
    const auto shown = makeView(u"me"_s);
    load(*shown, u"/a"_s);
    QCOMPARE(cookiesAt(*shown), QByteArray("a=1"));
    views_->forget(u"me"_s);
    // Asked of the page that is there: a load may wait for the cache, which is being emptied.
    const auto cookie = std::make_shared<QString>(u"not known"_s);
    const auto isForgotten = [this, &shown, cookie] {
        shown->evaluate(u"document.cookie"_s, this, [cookie](const QVariant& value) { *cookie = value.toString(); });
        return cookie->isEmpty();
    };
    QTRY_VERIFY_WITH_TIMEOUT(isForgotten(), 30000);
    QCOMPARE(cookiesAt(*makeView(u"me"_s)), QByteArray());
}

QTEST_MAIN(TestPluginWebViews)
#include "tst_PluginWebViews.moc"
