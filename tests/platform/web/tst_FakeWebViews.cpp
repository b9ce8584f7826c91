// The fakes against the contracts that the engine is held to as well.

#include "tests/platform/contracts/BrowserViewContract.h"
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
        addBrowserPages();
    }
    void init() {
        view_ = views_.create({}).value();
        browser_ = views_.createBrowser({}).value();
        browser_->widget()->show();
    }

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

    void browserHistory() { browserGoesBackAndForward(*browser_, browserSite_); }
    void browserFind() { browserFindsText(*browser_, browserSite_); }
    void browserIcon() { browserTellsThePagesIcon(*browser_, browserSite_); }
    void browserFiles() { browserReceivesFiles(*browser_, browserSite_); }
    void browserFilesDropped() { browserDropsFilesThatNobodyTakes(*browser_, browserSite_); }
    void browserFilesCut() { browserTellsWhyAFileDidNotArrive(*browser_, browserSite_); }
    void browserFilesCancelled() { browserCancelsFiles(*browser_, browserSite_); }
    void browserRest() { browserRestsOnlyUnseen(*browser_, browserSite_); }
    void browserProcess() { browserEndsItsProcess(*browser_, browserSite_); }

private:
    void addBrowserPages() {
        browserSite_ = {site_.url, QByteArray(1000, 'x')};
        QImage red(16, 16, QImage::Format_RGB32);
        red.fill(Qt::red);
        FakePage file{.file = FakeFile{.name = QStringLiteral("file.bin"), .bytes = browserSite_.bytes}};
        FakePage cut = file;
        cut.file->failure = Error(URLErrorCode::networkConnectionLost, {{errorKey::reason, QStringLiteral("Lost.")}});
        FakePage endless = file;
        endless.file->stalls = true;
        const auto add = [this](const char* path, const FakePage& page) {
            views_.pages().insert(site_.url(QString::fromLatin1(path)), page);
        };
        add("/text", {.title = QStringLiteral("Text"), .text = QStringLiteral("One two one three ONE"), .icon = red});
        add("/file", file);
        add("/cut", cut);
        add("/endless", endless);
    }

    WebSite site_;
    BrowserSite browserSite_;
    FakeWebViews views_;
    std::unique_ptr<WebView> view_;
    std::unique_ptr<BrowserView> browser_;
};

QTEST_MAIN(TestFakeWebViews)
#include "tst_FakeWebViews.moc"
