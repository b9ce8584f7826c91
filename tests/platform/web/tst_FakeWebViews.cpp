// The fake against the contract that the engine is held to as well.

#include "tests/platform/contracts/WebViewContract.h"
#include "tests/platform/fakes/FakeWebViews.h"

using namespace quenby;
using namespace quenby::testing;

class TestFakeWebViews : public QObject {
    Q_OBJECT

public:
    static void initMain() { qputenv("QT_QPA_PLATFORM", "offscreen"); }

private Q_SLOTS:
    void initTestCase() {
        site_.url = [](const QString& path) { return QUrl(QString(QStringLiteral("http://site.test") + path)); };
        views_.pages() = {
            {site_.url(QStringLiteral("/a")),
             {.title = QStringLiteral("Page a"), .cookies = {QByteArrayLiteral("a=1; path=/")}}},
            {site_.url(QStringLiteral("/b")), {.title = QStringLiteral("Page b")}},
            {site_.url(QStringLiteral("/redirect")), {.redirect = site_.url(QStringLiteral("/b"))}},
            {site_.url(QStringLiteral("/broken")), {.failure = Error(URLErrorCode::networkConnectionLost)}},
        };
    }
    void init() { view_ = views_.create({}).value(); }

    void load() { webViewTellsHowALoadGoes(*view_, site_); }
    void policy() { webViewAsksBeforeItGoesAnywhere(*view_, site_); }
    void html() { webViewShowsWhatTheProgramGivesIt(*view_); }
    void failure() { webViewTellsWhatFailed(*view_, site_); }
    void stop() { webViewStopsSilently(*view_, site_); }
    void scripts() {
        views_.last().scriptResult = [](const QString& script) {
            return script == QStringLiteral("6 * 7") ? QVariant(42) : QVariant();
        };
        webViewAnswersEachScriptOnce(*view_);
    }
    void end() { webViewMayGoInsideOfItsQuestion(std::move(view_), site_); }

private:
    WebSite site_;
    FakeWebViews views_;
    std::unique_ptr<WebView> view_;
};

QTEST_MAIN(TestFakeWebViews)
#include "tst_FakeWebViews.moc"
